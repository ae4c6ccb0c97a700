// The program in windows: what Main opens its windows with, and the life of the toolkit around it.
// For real OpenWindows is called through the module's one function; tests call it as it is.
#pragma once

#include "shell/Windows.h"
#include "shell/frmBrennikClient.h"

#include <memory>

namespace brennik {

class frmWindows : public Windows {
  public:
    void ShowMainWindow() override;
    void ShowUsageBox(const std::string& strText) override;

    /// Whether the program must go on living for a window.
    bool bMainWindowOpen() const { return oMainWindow_ != nullptr && oMainWindow_->isVisible(); }

  private:
    std::unique_ptr<frmBrennikClient> oMainWindow_;
};

/// Runs the program for the arguments of main, as OpenWindowsFunction tells. The real host's events
/// are the toolkit's while it runs.
int32_t OpenWindows(int32_t lVersion, int argc, char** argv);

/// Lets PumpEvents of the real host handle the toolkit's events.
void PumpWindowEvents();

} // namespace brennik
