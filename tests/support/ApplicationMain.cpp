#include "platform/tasks/MainLoop.h"

#include <QApplication>

#include <gtest/gtest.h>

/// For tests of widgets: they run without a display.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    platform::MainLoop loop;
    return RUN_ALL_TESTS();
}
