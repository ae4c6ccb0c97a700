#include "shell/WindowsModule.h"

#include "shell/BrennikClnt.h"
#include "shell/WindowsEntry.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

struct Output {
    std::string strOut;
    std::string strErr;
};

template <class Action>
Output OutputOf(Action action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    std::string strOut = testing::internal::GetCapturedStdout();
    return {std::move(strOut), testing::internal::GetCapturedStderr()};
}

const std::string kReasonLine = "brennikclient: no window can be opened: the reason; run a profile "
                                "with -configfiledir and -profileid\n";

TEST(WindowsModule, SaysInOneLineWhyTheMainWindowDoesNotOpen) {
    WindowsModule windows("the reason");
    const Output output = OutputOf([&] { windows.ShowMainWindow(); });
    EXPECT_EQ(output.strOut, "");
    EXPECT_EQ(output.strErr, kReasonLine);
}

TEST(WindowsModule, PrintsTheUsageWithPlainLineEndsBesideThatLine) {
    WindowsModule windows("the reason");
    const Output output = OutputOf([&] { windows.ShowUsageBox("One\r\n\r\nTwo"); });
    EXPECT_EQ(output.strOut, "One\n\nTwo\n");
    EXPECT_EQ(output.strErr, kReasonLine);
}

TEST(WindowsModule, TellsThatThereIsNoModule) {
    WindowsModule windows;
    EXPECT_FALSE(windows.TakeOver({}, 0, nullptr));
    EXPECT_FALSE(windows.TakeOver({"/nowhere/libbrennikwindows.so", "/nor/here.so"}, 0, nullptr));
    const Output output = OutputOf([&] { windows.ShowMainWindow(); });
    EXPECT_EQ(output.strErr,
              "brennikclient: no window can be opened: there is no libbrennikwindows.so here; run "
              "a profile with -configfiledir and -profileid\n");
}

TEST(WindowsModule, HasAVersionNumberThatFollowsTheProgram) {
    EXPECT_EQ(kWindowsVersion, 10302);
}

} // namespace
} // namespace brennik
