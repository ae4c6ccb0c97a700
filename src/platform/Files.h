// Files, folders and text streams, by the texts that the system keeps ("\" and drive forms).
// For real they stand on the Linux file calls (LinuxFiles), which map each text to a native path
// (platform/Paths.h); tests put files in memory in their place (tests/world). Every failure is
// thrown as a RuntimeFailure unless the operation says otherwise.
#pragma once

#include "platform/Paths.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

/// Whole seconds since the epoch, universal time. Creation is the birth time of the file, or its
/// modification time where the file system keeps none.
struct FileTimes {
    int64_t lCreated = 0;
    int64_t lAccessed = 0;
    int64_t lModified = 0;
};

struct FoundFile {
    std::string strName; ///< the name alone, without its folder
    bool bFolder = false;
    FileTimes times;
};

enum class OpenMode {
    Read,   ///< an existing file only
    Write,  ///< creates the file or empties it
    Append, ///< creates the file if needed; every write goes to its end
};

/// A stream of bytes over one open file. Bytes pass as they are; destroying it closes the file.
class TextStream {
  public:
    virtual ~TextStream() = default;

    /// At most nCount bytes; fewer, down to none, at the end of the file.
    virtual std::string Read(size_t nCount) = 0;

    /// One line without its end (CR LF or LF). At the end of the file: InputPastEndOfFile.
    virtual std::string ReadLine() = 0;

    /// The rest of the file, possibly empty.
    virtual std::string ReadAll() = 0;

    virtual bool AtEndOfStream() = 0;

    /// Writes all bytes with one call where the file takes them. What a full disk took stays.
    virtual void Write(std::string_view strData) = 0;

    /// Writes the bytes and CR LF behind them, together.
    virtual void WriteLine(std::string_view strData) = 0;

    /// Closes the file; a second call does nothing.
    virtual void Close() = 0;
};

class Files {
  public:
    virtual ~Files() = default;

    virtual std::unique_ptr<TextStream> OpenText(const std::string& strPath, OpenMode mode) = 0;

    /// Appends the line, whose own CR LF stands at its end, with a single write to a file opened
    /// for it and closed again, so that lines of several processes never mix. Creates the file if
    /// needed. On a full disk the whole line is lost, never a part of it.
    virtual void AppendLine(const std::string& strPath, std::string_view strLine) = 0;

    /// The entries that match the last part of the path, which may hold "*" and "?", in the order
    /// of their upper-cased names; wildcards ignore case, "*.*" matches every name, and a pattern
    /// with a wildcard finds "." and ".." too. Nothing found, or no such folder: empty, no throw.
    virtual std::vector<FoundFile> Find(const std::string& strPattern) = 0;

    /// The times of a file that can be opened for reading; empty when it can't. No throw.
    virtual std::optional<FileTimes> GetTimes(const std::string& strPath) = 0;

    /// No throw.
    virtual bool FolderExists(const std::string& strPath) = 0;

    /// One level only; an existing folder or file of that name is FileAlreadyExists.
    virtual void CreateFolder(const std::string& strPath) = 0;

    /// Deletes a folder with all that is in it, never following a link. Refused before anything is
    /// gone: an empty path, the root, a drive's root, a mount point, the user's home, the
    /// program's folder, any folder that contains one of these, a link, and a tree in which some
    /// entry has no write bit.
    virtual void DeleteFolder(const std::string& strPath) = 0;

    /// Bytes of a file, or of all files in a folder and below it.
    virtual int64_t GetFileSize(const std::string& strPath) = 0;
    virtual int64_t GetFolderSize(const std::string& strPath) = 0;

    /// Deletes one file (no wildcards, no folder), read-only files too.
    virtual void DeleteFile(const std::string& strPath) = 0;

    /// Copies one file over what is there.
    virtual void CopyFile(const std::string& strSource, const std::string& strTarget) = 0;

    /// Moves one file; an existing target is FileAlreadyExists.
    virtual void MoveFile(const std::string& strSource, const std::string& strTarget) = 0;

    /// Copies a folder with all that is in it. Without bOverwrite an existing file in the target
    /// is FileAlreadyExists.
    virtual void CopyFolder(const std::string& strSource, const std::string& strTarget,
                            bool bOverwrite) = 0;

    /// Sets the attribute bits of a file: 1, read-only, takes its write bits away or gives the
    /// owner's back; the other bits have no counterpart and are accepted.
    virtual void SetAttributes(const std::string& strPath, int32_t lAttributes) = 0;

    /// The drives there are, by which texts in drive form are read. Lives as long as the files.
    virtual const DriveTable& Drives() const = 0;

    /// True when strPath, taken as it stands, lies below strBaseFolder: no ".." in what follows
    /// the base, and no existing part of it a symbolic link. No throw.
    virtual bool StaysInside(const std::string& strBaseFolder, const std::string& strPath) = 0;
};

} // namespace brennik
