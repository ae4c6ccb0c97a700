// The file system of the simulated host: files, folders and symbolic links in memory, keyed by
// native path, behind the same texts and drives as the real ones.
// It stands in the place of LinuxFiles; tests lay out and read its tree with plain calls, which
// take the system's texts or native paths alike and cost nothing.
#pragma once

#include "platform/Files.h"
#include "platform/Paths.h"
#include "tests/world/CallLedger.h"
#include "tests/world/SimClock.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::world {

/// The user's home and the program's folder, which exist from the start.
inline constexpr const char* kHomeFolder = "/home/user";
inline constexpr const char* kProgramFolder = "/opt/brennik";

class SimFiles : public Files {
  public:
    /// One entry; its make-up is the business of SimFiles alone.
    struct Node;
    using NodePtr = std::shared_ptr<Node>;
    using NodeMap = std::map<std::string, NodePtr, std::less<>>;

    SimFiles(CallLedger& ledger, const SimClock& clock);
    ~SimFiles() override;

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
    bool StaysInside(const std::string& strBaseFolder, const std::string& strPath) override;
    const DriveTable& Drives() const override { return drives_; }

    // What follows is for tests; it costs nothing, counts nowhere and meets no fault.

    /// Makes or replaces a file, with all folders above it.
    void Put(const std::string& strPath, std::string_view strContent);
    /// The content of a file; nothing when there is none. Links are followed.
    std::optional<std::string> Get(const std::string& strPath) const;
    /// The lines of a file without their ends (CR LF or LF); empty when there is no file.
    std::vector<std::string> Lines(const std::string& strPath) const;
    bool Exists(const std::string& strPath) const;
    /// Makes a folder with all folders above it.
    void MakeFolder(const std::string& strPath);
    /// Makes a symbolic link at strPath; its target is a native path.
    void MakeLink(const std::string& strPath, const std::string& strTarget);
    /// Removes a file, a link or a whole folder, whatever protects it.
    void Remove(const std::string& strPath);
    /// All native paths, sorted: folders end in "/", links in "@". With a folder given, those
    /// below it alone, told from there.
    std::vector<std::string> Tree(const std::string& strFolder = "/") const;

    void SetReadOnly(const std::string& strPath, bool bReadOnly);
    bool IsReadOnly(const std::string& strPath) const;
    void SetTimes(const std::string& strPath, const FileTimes& times);
    /// The path can neither be opened, made, nor deleted: PermissionDenied.
    void Deny(const std::string& strPath);
    /// It can be read but not written, made, nor deleted.
    void DenyWrites(const std::string& strPath);
    /// Drops both.
    void Allow(const std::string& strPath);
    /// Bytes that all files together may hold; without one there is no end. A write that would
    /// go beyond it writes what fits, then fails with DiskFull; an AppendLine writes nothing then.
    void SetQuota(std::optional<int64_t> lBytes) { lQuota_ = lBytes; }
    int64_t TotalBytes() const;

    void SetDrives(DriveTable drives) { drives_ = std::move(drives); }
    /// Where relative native paths begin; the home folder at first. Throws PathNotFound.
    void SetCurrentFolder(const std::string& strFolder);
    const std::string& CurrentFolder() const { return strCurrent_; }
    /// One more folder that DeleteFolder protects, as a mount point is.
    void AddMountPoint(const std::string& strPath);
    /// The program's own folder, which is protected too; SimProcesses sets it.
    void SetProgramFolder(const std::string& strFolder) { strProgramFolder_ = strFolder; }
    /// Streams that are open now.
    int32_t nOpenStreams() const { return nOpenStreams_; }
    /// Writes made by streams, AppendLine and the profile strings.
    int64_t nWrites() const { return nWrites_; }

  private:
    friend class SimProfileStrings;
    friend class SimProcesses;
    class Stream;

    /// Enters a call of the seam and throws when it is the one that must fail.
    void EnterOrThrow(Op op, const std::string& strPath);
    void Note(Op op, const std::string& strPath);

    // The same operations without entering a call.
    NodePtr OpenNode(const std::string& strPath, OpenMode mode);
    std::optional<std::string> ReadWhole(const std::string& strPath) const;
    void ReplaceWhole(const std::string& strPath, std::string_view strContent);
    void Write(Node& node, size_t& nPosition, std::string_view strData);

    std::string Native(const std::string& strPath) const;
    std::optional<std::string> Resolve(const std::string& strNative, bool bFollowLast,
                                       int32_t nDepth = 0) const;
    std::string Place(const std::string& strPath, bool bFollowLast = true) const;
    NodePtr Lookup(std::string_view strPlace) const;
    NodePtr PeekNode(const std::string& strPath, bool bFollowLast = true) const;
    NodePtr RequireFile(const std::string& strPlace) const;
    NodePtr RequireFolder(const std::string& strPlace) const;
    NodePtr CreateFile(const std::string& strPlace);
    void MakeFolders(const std::string& strPlace);
    void RequireAllowed(const std::string& strPlace, bool bWriting) const;
    void RequireWritableParent(const std::string& strPlace) const;
    std::string PlannedPlace(const std::string& strPath) const;
    bool IsProtected(const std::string& strPlace) const;
    int64_t Room() const;

    CallLedger& ledger_;
    const SimClock& clock_;
    NodeMap nodes_;
    DriveTable drives_ = DefaultDrives();
    std::string strCurrent_ = kHomeFolder;
    std::string strProgramFolder_ = kProgramFolder;
    std::set<std::string, std::less<>> mountPoints_;
    std::set<std::string, std::less<>> denied_;
    std::set<std::string, std::less<>> writeDenied_;
    std::optional<int64_t> lQuota_;
    int32_t nOpenStreams_ = 0;
    int64_t nWrites_ = 0;
};

} // namespace brennik::world
