// This process and the ones it starts, on the Linux process calls. A started process gets
// /dev/null as its three standard descriptors, none of ours, and fresh signal dispositions.
// Tests above the seam put a recorder of starts in its place.
#pragma once

#include "platform/Paths.h"
#include "platform/Processes.h"
#include "platform/ProgramFolder.h"

#include <string>

namespace brennik {

class LinuxProcesses : public Processes {
  public:
    LinuxProcesses(DriveTable drives, ProgramFolderChoice programFolder);

    uint32_t GetCurrentProcessId() override;
    uint32_t GetCurrentThreadId() override;
    int32_t StartHidden(const std::string& strCommandLine) override;
    void WaitForExit(int32_t lProcessId) override;
    void ChangeDrive(const std::string& strDrive) override;
    std::string CurrentDirectory() override;
    void ChangeDirectory(const std::string& strFolder) override;
    std::string ProgramFolder() override;

  private:
    DriveTable drives_;
    ProgramFolderChoice programFolder_;
};

} // namespace brennik
