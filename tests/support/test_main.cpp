#include <gtest/gtest.h>

#include <QCoreApplication>

// Every test program gets a Qt application object, so that signals, settings and timers behave
// as they do in Kivo.
int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
