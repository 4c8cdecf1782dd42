// Runs all tests of an executable. First creates a QApplication, because widgets need an application object.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
