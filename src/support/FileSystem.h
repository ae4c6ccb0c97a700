// The file work of the system: what exists, folders, single files, lists by wildcard, and text
// files reached through small handles. Behind it stand the files of the current host, which alone
// know native paths; tests put files in memory in their place. An object is made for one task.
// Statuses are 0 for success and 1 for failure; strErrorMessage then holds the operation's text
// and the description.
#pragma once

#include "platform/DateTime.h"
#include "platform/Files.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

class FileSystem {
  public:
    FileSystem() = default;
    /// Closes every stream that is still open.
    ~FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

    /// The text of the last failure, and what FileExists found. A success leaves it as it is.
    const std::string& strErrorMessage() const { return strErrorMessage_; }

    // Names.

    /// The text before the first "." if that stands at position 2 or later; else the whole name.
    static std::string GetFileNameNoExt(std::string_view strName);

    /// The text behind the last "\" if that stands at position 2 or later; else empty.
    static std::string GetFileNameFromPath(std::string_view strPath);

    /// The text behind the leftmost "." at position 2 or later; empty when there is none.
    static std::string GetFileExtension(std::string_view strName);

    // What is there.

    /// True for a file or folder of that path, and for a path with wildcards that finds anything.
    /// strErrorMessage tells which: the path and " already exists" or " does not exist".
    bool FileExists(const std::string& strPath);

    bool FolderExists(const std::string& strPath);

    /// The times of a file, in local or in universal time. False when the file can't be opened or
    /// a time has no date; the three then stay as they were.
    [[nodiscard]] bool GetFileTimes(const std::string& strPath, DateTime& dateCreated,
                                    DateTime& dateAccessed, DateTime& dateModified,
                                    bool bLocalTime);

    /// Bytes of a file, or of all files below a folder; -1 on failure, which a size of more than
    /// 31 bits is too.
    [[nodiscard]] int32_t GetFileSize(const std::string& strPath);
    [[nodiscard]] int32_t GetFolderSize(const std::string& strPath);

    // Folders and single files.

    /// Creates one level.
    [[nodiscard]] int16_t CreateFolder(const std::string& strPath);

    /// Deletes a folder with all that is in it, unless something in it is read-only. One "\" at the
    /// end is dropped.
    [[nodiscard]] int16_t DeleteFolder(const std::string& strPath);

    /// Copies what is in the folder; an existing file is a failure unless bOverwrite is set.
    [[nodiscard]] bool CopyFolder(const std::string& strSource, const std::string& strTarget,
                                  bool bOverwrite);

    /// Copies every folder in strSource, whole, into strTarget, but no file that stands in
    /// strSource itself. 0 done, 2 no folder found, 1 failure.
    [[nodiscard]] int16_t CopySubFolders(const std::string& strSource, const std::string& strTarget,
                                         bool bOverwrite);

    /// Deletes a file, a read-only one too.
    [[nodiscard]] int16_t DeleteFile(const std::string& strPath);

    /// Copies over what is there.
    [[nodiscard]] int16_t CopyFile(const std::string& strSource, const std::string& strTarget);

    /// An existing target is a failure.
    [[nodiscard]] int16_t MoveFile(const std::string& strSource, const std::string& strTarget);

    /// Sets the attribute bits (1 is read-only). On failure False, and the text ends with the path.
    [[nodiscard]] bool SetFileAttributes(const std::string& strPath, int32_t lAttributes);

    // The files of a folder. An empty pattern is "*.*"; no folder, not even ".", is listed.

    /// Puts the names found into strFiles from index 0, with one empty entry behind them, in the
    /// order of the host. 0 found, 2 none found (no failure), 1 failure.
    [[nodiscard]] int16_t GetFilesInFolder(std::vector<std::string>& strFiles,
                                           const std::string& strFolder,
                                           const std::string& strPattern = {});

    /// 0 on failure too.
    int32_t NoOfFilesInFolder(const std::string& strFolder, const std::string& strPattern = {});

    /// Ends with False at the first file that can't be deleted; True when nothing matched.
    [[nodiscard]] bool DeleteFilesInFolder(const std::string& strFolder,
                                           const std::string& strPattern = {});

    /// The same for files created at least iDays calendar days before today. The day of creation is
    /// that of universal time, today that of local time.
    [[nodiscard]] bool DeleteFilesInFolderByDay(const std::string& strFolder,
                                                const std::string& strPattern, int16_t iDays);

    // Text files. Handles count from 1. One that was closed is not given out again until all are
    // closed; then they begin at 1 again.

    /// iMode 0 reads an existing file, 1 writes a new or emptied one, any other value appends,
    /// creating the file if needed. The handle, or 0 on failure.
    [[nodiscard]] int32_t OpenFile(const std::string& strPath, int16_t iMode);

    /// Writes the text as it is, with bNewLine CR LF behind it.
    [[nodiscard]] int16_t WriteData(int32_t lHandle, std::string_view strData, bool bNewLine);

    /// With bReadLine one line without its end; else lCount bytes, fewer at the end of the file;
    /// with lCount 0 the rest of the file. On failure strData stays as it was; a line behind the
    /// end of the file is one.
    [[nodiscard]] int16_t ReadData(int32_t lHandle, std::string& strData, bool bReadLine,
                                   int32_t lCount);

    /// Reads to the end of the file and counts the lines, pumping events after each. 0 on failure
    /// too.
    int32_t CountLines(int32_t lHandle);

    /// True at the end of the file, and for a handle that isn't known or can't be asked. Not "EOF",
    /// since the C library makes that name a macro.
    bool Eof(int32_t lHandle);

    /// Closes the file; does nothing for a handle that isn't open. A failure of the close itself is
    /// thrown; the handle is closed all the same.
    void CloseFile(int32_t lHandle);

  private:
    struct Slot {
        std::unique_ptr<TextStream> stream;
        bool bOpen = false;
    };

    template <class Result, class Body>
    Result Try(std::string_view strPrefix, Result onFailure, Body&& body);
    template <class Body>
    int16_t TryStatus(std::string_view strPrefix, Body&& body);

    std::vector<FoundFile> FilesIn(const std::string& strFolder, const std::string& strPattern);
    int32_t GetFileHandle();
    TextStream& StreamOf(int32_t lHandle);

    std::vector<Slot> streams_; ///< handle n stands at n - 1
    std::string strErrorMessage_;
    int32_t lOpenCount_ = 0;
};

} // namespace brennik
