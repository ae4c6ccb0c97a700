#include "shell/WindowsModule.h"

#include <cstdio>

namespace brennik {

void ShowMainWindow() {
    std::fputs("brennikclient: this build has no windows; "
               "run a profile with -configfiledir and -profileid\n",
               stderr);
}

void ShowUsageBox(const std::string& strText) {
    std::string strLines;
    for (char c : strText) {
        if (c != '\r')
            strLines += c;
    }
    std::fputs((strLines + "\n").c_str(), stdout);
}

} // namespace brennik
