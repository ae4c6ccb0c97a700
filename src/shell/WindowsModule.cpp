#include "shell/WindowsModule.h"

#include "platform/SharedObject.h"
#include "shell/WindowsEntry.h"

#include <cstdio>

namespace brennik {

bool WindowsModule::TakeOver(const std::vector<std::string>& strModules, int argc, char** argv) {
    const SharedFunction found = FindSharedFunction(strModules, kWindowsFunctionName);
    if (found.function == nullptr) {
        strReason_ = found.strFailure.empty()
                         ? "there is no " + std::string(kWindowsModuleName) + " here"
                         : found.strFailure;
        return false;
    }
    auto* const openWindows = reinterpret_cast<OpenWindowsFunction*>(found.function);
    if (openWindows(kWindowsVersion, argc, argv) == kWindowsClosed)
        return true;
    strReason_ = found.strPath + " belongs to another version";
    return false;
}

void WindowsModule::ShowMainWindow() {
    TellReason();
}

void WindowsModule::ShowUsageBox(const std::string& strText) {
    TellReason();
    std::string strLines;
    for (char c : strText) {
        if (c != '\r')
            strLines += c;
    }
    std::fputs((strLines + "\n").c_str(), stdout);
}

void WindowsModule::TellReason() const {
    std::fputs(("brennikclient: no window can be opened: " + strReason_ +
                "; run a profile with -configfiledir and -profileid\n")
                   .c_str(),
               stderr);
}

} // namespace brennik
