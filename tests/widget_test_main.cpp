// Runs the tests of one executable within an application, as widgets need it.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
