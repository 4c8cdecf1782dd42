// Runs the tests of one executable with an application object, because widgets need one.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
