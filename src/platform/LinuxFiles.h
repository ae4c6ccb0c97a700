// Files, folders and text streams on the Linux file calls. Only regular files are ever read or
// written (what kind of file a log is isn't asked), and no call waits for a FIFO or a device.
// Tests above the seam put files in memory in its place.
#pragma once

#include "platform/Files.h"
#include "platform/Paths.h"

#include <string>
#include <vector>

namespace brennik {

class LinuxFiles : public Files {
  public:
    /// With the drives there are and the program's own folder, a native path.
    LinuxFiles(DriveTable drives, std::string strProgramFolder);

    std::unique_ptr<TextStream> OpenText(const std::string& strPath, OpenMode mode) override;
    void AppendLine(const std::string& strPath, std::string_view strLine) override;
    std::vector<FoundFile> Find(const std::string& strPattern) override;
    std::optional<FileTimes> GetTimes(const std::string& strPath) override;
    bool FolderExists(const std::string& strPath) override;
    void CreateFolder(const std::string& strPath) override;
    void DeleteFolder(const std::string& strPath) override;
    int64_t GetFileSize(const std::string& strPath) override;
    int64_t GetFolderSize(const std::string& strPath) override;
    void DeleteFile(const std::string& strPath) override;
    void CopyFile(const std::string& strSource, const std::string& strTarget) override;
    void MoveFile(const std::string& strSource, const std::string& strTarget) override;
    void CopyFolder(const std::string& strSource, const std::string& strTarget,
                    bool bOverwrite) override;
    void SetAttributes(const std::string& strPath, int32_t lAttributes) override;
    const DriveTable& Drives() const override { return drives_; }
    bool StaysInside(const std::string& strBaseFolder, const std::string& strPath) override;

  private:
    /// Throws PathNotFound for a text that stands for no path.
    std::string Native(const std::string& strText) const;
    std::vector<std::string> ProtectedFolders() const;

    DriveTable drives_;
    std::string strProgramFolder_;
};

} // namespace brennik
