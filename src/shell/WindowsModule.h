// The door from the program to the module of its windows, which is loaded only when one must open,
// so that an unattended run needs no toolkit. Where there is no module it stands in for the
// windows: one line on stderr says why, and the usage text goes to stdout. Tests capture both.
#pragma once

#include "shell/Windows.h"

#include <string>
#include <vector>

namespace brennik {

class WindowsModule : public Windows {
  public:
    WindowsModule() = default;

    /// A door that is known to be shut, with the words that tell why.
    explicit WindowsModule(std::string strReason) : strReason_(std::move(strReason)) {}

    /// Loads the first of the modules that is there and hands the program over to it. True when it
    /// has run and closed its windows; false, with nothing done, when there is none that fits.
    /// The arguments are those of main. Call it before anything else exists.
    [[nodiscard]] bool TakeOver(const std::vector<std::string>& strModules, int argc, char** argv);

    /// Says in one line on stderr why no window opens.
    void ShowMainWindow() override;

    /// Says so too, then prints the text on stdout, its lines ending in LF.
    void ShowUsageBox(const std::string& strText) override;

  private:
    void TellReason() const;

    std::string strReason_;
};

} // namespace brennik
