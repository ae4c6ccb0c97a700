// This process and the ones it starts.
// For real it stands on the Linux process calls (LinuxProcesses); tests put a recorder of starts
// in its place.
#pragma once

#include <cstdint>
#include <string>

namespace brennik {

class Processes {
  public:
    virtual ~Processes() = default;

    virtual uint32_t GetCurrentProcessId() = 0;
    virtual uint32_t GetCurrentThreadId() = 0;

    /// Starts a command line, split at blanks without any quoting, with nothing to see: no input,
    /// no output. The first word is a path in the system's own form. A file without an executable
    /// bit is run by its "#!" line, or by /bin/sh without one. Gives the process id; throws when
    /// nothing could be started.
    virtual int32_t StartHidden(const std::string& strCommandLine) = 0;

    /// Waits without limit until the process has ended; returns at once when there is none.
    virtual void WaitForExit(int32_t lProcessId) = 0;

    /// Makes the drive of that letter the current one: a check that it is known, here where paths
    /// are whole. Throws PathNotFound for an unknown drive; an empty text changes nothing.
    virtual void ChangeDrive(const std::string& strDrive) = 0;

    /// The current folder, as a native path without a separator at its end. Throws PathNotFound
    /// when it is gone, or has a "\" in its name and so no text that leads back to it.
    virtual std::string CurrentDirectory() = 0;

    /// Makes the folder the current one; throws PathNotFound.
    virtual void ChangeDirectory(const std::string& strFolder) = 0;

    /// The program's own folder, as a native path without a separator at its end.
    virtual std::string ProgramFolder() = 0;
};

} // namespace brennik
