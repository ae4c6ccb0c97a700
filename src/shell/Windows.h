// What Main opens windows with. Free of any toolkit.
// For real it is frmWindows, in the module that knows the toolkit, or WindowsModule, the door to
// that module, which says so when a window can't be had; tests put a recorder in its place.
#pragma once

#include <string>

namespace brennik {

class Windows {
  public:
    virtual ~Windows() = default;

    /// Opens the main window and returns at once; the program then lives until it is closed.
    virtual void ShowMainWindow() = 0;

    /// Shows the usage text (lines ending in CR LF) and returns when it has been seen.
    virtual void ShowUsageBox(const std::string& strText) = 0;
};

} // namespace brennik
