#include "bench/WindowUser.h"

#include "bench/Processes.h"

#include <cstdlib>

namespace brennik::bench {

namespace {

constexpr const char* kMainWindow = "Ostrand Brennik Client v[0-9.]*";
constexpr const char* kPicker = "Select Brennik Profile";
constexpr const char* kBox = "Ostrand Brennik Client";

} // namespace

WindowUser::WindowUser(const std::string& strProgramFolder) {
    std::string strNumber;
    display_ = StartAnnouncing(
        {"/usr/bin/Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24", "-nolisten", "tcp"},
        strNumber);
    if (strNumber.empty())
        Fail("Xvfb did not start");
    ::setenv("DISPLAY", (":" + strNumber).c_str(), 1);
    ::unsetenv("WAYLAND_DISPLAY");
    ::unsetenv("QT_QPA_PLATFORM");
    ::setenv("BRENNIK_HOME", strProgramFolder.c_str(), 1);
}

WindowUser::~WindowUser() {
    StopChild(display_);
}

void WindowUser::RunFirstProfile() {
    Focus(kMainWindow);
    Press("ctrl+d");
    Focus(kPicker);
    Press("Return");
}

void WindowUser::CloseBoxAndQuit() {
    Focus(kBox);
    Press("Return");
    Focus(kMainWindow);
    Press("ctrl+q");
}

void WindowUser::Focus(const std::string& strTitle) {
    XDoTool({"search", "--sync", "--onlyvisible", "--name", "^" + strTitle + "$", "windowfocus"});
}

void WindowUser::Press(const std::string& strKey) {
    XDoTool({"key", strKey});
}

void WindowUser::XDoTool(std::vector<std::string> words) {
    words.insert(words.begin(), "/usr/bin/xdotool");
    if (!WaitFor(StartProgram(words)).bGood)
        Fail("xdotool " + words[1] + " failed");
}

} // namespace brennik::bench
