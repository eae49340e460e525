#include "codec/process/DecoderProcess.h"
#include "platform/tasks/BoundedCalls.h"
#include "platform/tasks/MainLoop.h"

#include <QApplication>

#include <gtest/gtest.h>

/// For tests that run the program in their own process, which starts itself again to decode.
int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = codec::process::runIfDecoderProcess(arguments)) return *code;
    platform::BoundedCalls::setPatience(50);
    ::testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    platform::MainLoop loop;
    return RUN_ALL_TESTS();
}
