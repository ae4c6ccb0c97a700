// Who runs the program in windows for a measurement: a display in memory, and the keys that a user
// presses, by xdotool. The program is the unchanged one and finds both in the environment.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace brennik::bench {

class WindowUser {
  public:
    /// Starts a display and names it, and the program's own folder, to all children to come.
    explicit WindowUser(const std::string& strProgramFolder);
    ~WindowUser();
    WindowUser(const WindowUser&) = delete;
    WindowUser& operator=(const WindowUser&) = delete;

    /// From the main window through the picker, with the profile that stands first.
    void RunFirstProfile();

    /// When the run is over.
    void CloseBoxAndQuit();

  private:
    /// Waits for the window and gives it the keyboard, which a window manager would have done.
    void Focus(const std::string& strTitle);
    void Press(const std::string& strKey);
    static void XDoTool(std::vector<std::string> words);

    pid_t display_ = -1;
};

} // namespace brennik::bench
