#include "support/FileSystem.h"

#include "platform/Host.h"
#include "platform/PumpEvents.h"
#include "support/AsciiText.h"
#include "support/Failure.h"

#include <optional>
#include <utility>

namespace brennik {

namespace {

constexpr char kSeparator = '\\';
constexpr const char* kEveryName = "*.*";

constexpr int16_t kDone = 0;
constexpr int16_t kFailed = 1;
constexpr int16_t kNothingFound = 2;

// The span of a file time, from the year 1601 until its 64 bits of 100 ns end in 30828. Outside it
// there is no date.
constexpr int64_t kFirstFileSecond = -11644473600;
constexpr int64_t kLastFileSecond = 910692730085;

Files& HostFiles() {
    return CurrentHost().files;
}

// An empty path is no folder; a separator alone would make the root of it.
std::string WithSeparator(const std::string& strFolder) {
    if (strFolder.empty()) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
    return strFolder.ends_with(kSeparator) ? strFolder : strFolder + kSeparator;
}

std::vector<FoundFile> Entries(const std::string& strFolder, const std::string& strPattern) {
    if (strFolder.empty()) {
        return {}; // as any other folder that isn't there
    }
    return HostFiles().Find(WithSeparator(strFolder) +
                            (strPattern.empty() ? kEveryName : strPattern));
}

std::optional<DateTime> DateOf(int64_t lSeconds) {
    if (lSeconds < kFirstFileSecond || lSeconds > kLastFileSecond) {
        return std::nullopt;
    }
    return DateTimeFromSeconds(lSeconds);
}

} // namespace

template <class Result, class Body>
Result FileSystem::Try(std::string_view strPrefix, Result onFailure, Body&& body) {
    return GuardedWithText(strErrorMessage_, strPrefix, onFailure, std::forward<Body>(body));
}

template <class Body>
int16_t FileSystem::TryStatus(std::string_view strPrefix, Body&& body) {
    return Try(strPrefix, kFailed, [&]() -> int16_t {
        body();
        return kDone;
    });
}

// Names.

std::string FileSystem::GetFileNameNoExt(std::string_view strName) {
    const size_t nDot = strName.find('.');
    return std::string(nDot == 0 ? strName : strName.substr(0, nDot));
}

std::string FileSystem::GetFileNameFromPath(std::string_view strPath) {
    const size_t nLast = strPath.rfind(kSeparator);
    return nLast == std::string_view::npos || nLast == 0 ? std::string()
                                                         : std::string(strPath.substr(nLast + 1));
}

std::string FileSystem::GetFileExtension(std::string_view strName) {
    const size_t nDot = strName.find('.', 1);
    return nDot == std::string_view::npos ? std::string() : std::string(strName.substr(nDot + 1));
}

// What is there.

bool FileSystem::FileExists(const std::string& strPath) {
    return Try("Error in FileExists - ", false, [&] {
        const bool bFound = !HostFiles().Find(strPath).empty();
        strErrorMessage_ = strPath + (bFound ? " already exists" : " does not exist");
        return bFound;
    });
}

bool FileSystem::FolderExists(const std::string& strPath) {
    return HostFiles().FolderExists(strPath);
}

bool FileSystem::GetFileTimes(const std::string& strPath, DateTime& dateCreated,
                              DateTime& dateAccessed, DateTime& dateModified, bool bLocalTime) {
    const auto times = HostFiles().GetTimes(strPath);
    if (!times) {
        return false;
    }
    // One offset for all, that of now: summer or winter, a time of a file never moves by an hour
    // against its neighbours.
    const int64_t lOffset = bLocalTime ? CurrentHost().clock.LocalOffsetSeconds() : 0;
    const auto created = DateOf(times->lCreated + lOffset);
    const auto accessed = DateOf(times->lAccessed + lOffset);
    const auto modified = DateOf(times->lModified + lOffset);
    if (!created || !accessed || !modified) {
        return false;
    }
    dateCreated = *created;
    dateAccessed = *accessed;
    dateModified = *modified;
    return true;
}

int32_t FileSystem::GetFileSize(const std::string& strPath) {
    return Try("GetFileSize() Failed - ", int32_t{-1},
               [&] { return Narrow<int32_t>(HostFiles().GetFileSize(strPath)); });
}

int32_t FileSystem::GetFolderSize(const std::string& strPath) {
    return Try("GetFolderSize() Failed - ", int32_t{-1},
               [&] { return Narrow<int32_t>(HostFiles().GetFolderSize(strPath)); });
}

// Folders and single files.

int16_t FileSystem::CreateFolder(const std::string& strPath) {
    return TryStatus("CreateFolder() Failed - ", [&] { HostFiles().CreateFolder(strPath); });
}

int16_t FileSystem::DeleteFolder(const std::string& strPath) {
    return TryStatus("DeleteFolder() Failed - ", [&] {
        const size_t nEnd = strPath.size() - (strPath.ends_with(kSeparator) ? 1 : 0);
        HostFiles().DeleteFolder(strPath.substr(0, nEnd));
    });
}

bool FileSystem::CopyFolder(const std::string& strSource, const std::string& strTarget,
                            bool bOverwrite) {
    return Try("Error in FileSystem::CopyFolder - ", false, [&] {
        HostFiles().CopyFolder(strSource, strTarget, bOverwrite);
        return true;
    });
}

int16_t FileSystem::CopySubFolders(const std::string& strSource, const std::string& strTarget,
                                   bool bOverwrite) {
    return Try("Error in FileSystem::CopySubFolders - ", kFailed, [&]() -> int16_t {
        int16_t iResult = kNothingFound;
        for (const FoundFile& entry : Entries(strSource, kEveryName)) {
            if (entry.bFolder && entry.strName != "." && entry.strName != "..") {
                HostFiles().CopyFolder(WithSeparator(strSource) + entry.strName,
                                       WithSeparator(strTarget) + entry.strName, bOverwrite);
                iResult = kDone;
            }
        }
        return iResult;
    });
}

int16_t FileSystem::DeleteFile(const std::string& strPath) {
    return TryStatus("DeleteFile() Failed - ", [&] { HostFiles().DeleteFile(strPath); });
}

int16_t FileSystem::CopyFile(const std::string& strSource, const std::string& strTarget) {
    return TryStatus("CopyFile() Failed - ", [&] { HostFiles().CopyFile(strSource, strTarget); });
}

int16_t FileSystem::MoveFile(const std::string& strSource, const std::string& strTarget) {
    return TryStatus("MoveFile() Failed - ", [&] { HostFiles().MoveFile(strSource, strTarget); });
}

bool FileSystem::SetFileAttributes(const std::string& strPath, int32_t lAttributes) {
    return Guarded(
        [&] {
            HostFiles().SetAttributes(strPath, lAttributes);
            return true;
        },
        [&](const std::string&) { // the path stands in the place of the description
            strErrorMessage_ = "Failed setting attributes for file - " + strPath;
            return false;
        });
}

// The files of a folder.

std::vector<FoundFile> FileSystem::FilesIn(const std::string& strFolder,
                                           const std::string& strPattern) {
    std::vector<FoundFile> entries = Entries(strFolder, strPattern);
    std::erase_if(entries, [](const FoundFile& entry) { return entry.bFolder; });
    return entries;
}

int16_t FileSystem::GetFilesInFolder(std::vector<std::string>& strFiles,
                                     const std::string& strFolder, const std::string& strPattern) {
    // The name in the text is an older one of this operation: it is meant so.
    return Try("Error in FileSystem::GetFilesByPattern - ", kFailed, [&]() -> int16_t {
        strFiles.assign(1, {});
        for (FoundFile& file : FilesIn(strFolder, strPattern)) {
            strFiles.back() = std::move(file.strName);
            strFiles.emplace_back();
        }
        return strFiles.size() > 1 ? kDone : kNothingFound;
    });
}

int32_t FileSystem::NoOfFilesInFolder(const std::string& strFolder, const std::string& strPattern) {
    return Try("Error in FileSystem::NoOfFilesInFolder - ", int32_t{0},
               [&] { return Narrow<int32_t>(FilesIn(strFolder, strPattern).size()); });
}

bool FileSystem::DeleteFilesInFolder(const std::string& strFolder, const std::string& strPattern) {
    // The text is borrowed from NoOfFilesInFolder: it is meant so.
    return Try("Error in FileSystem::NoOfFilesInFolder - ", false, [&] {
        for (const FoundFile& file : FilesIn(strFolder, strPattern)) {
            if (DeleteFile(WithSeparator(strFolder) + file.strName) != 0) {
                return false;
            }
        }
        return true;
    });
}

bool FileSystem::DeleteFilesInFolderByDay(const std::string& strFolder,
                                          const std::string& strPattern, int16_t iDays) {
    return Try("Error in FileSystem::DeleteFilesInFolderByDay - ", false, [&] {
        for (const FoundFile& file : FilesIn(strFolder, strPattern)) {
            const auto created = DateOf(file.times.lCreated);
            if (!created) {
                strErrorMessage_ = "FileTimeToSystemTime Failed for :" + file.strName;
                return false;
            }
            const bool bOldEnough = DayNumber(LocalNow()) - DayNumber(*created) >= iDays;
            if (bOldEnough && DeleteFile(WithSeparator(strFolder) + file.strName) != 0) {
                return false;
            }
        }
        return true;
    });
}

// Text files.

int32_t FileSystem::GetFileHandle() {
    // Only the last slot can lack a stream: that of an open that failed.
    if (streams_.empty() || streams_.back().stream != nullptr) {
        streams_.emplace_back();
    }
    return Narrow<int32_t>(streams_.size());
}

TextStream& FileSystem::StreamOf(int32_t lHandle) {
    if (lHandle < 1 || static_cast<size_t>(lHandle) > streams_.size()) {
        throw RuntimeFailure(FailureKind::SubscriptOutOfRange);
    }
    const Slot& slot = streams_[static_cast<size_t>(lHandle) - 1];
    if (slot.stream == nullptr) {
        throw RuntimeFailure(FailureKind::ObjectNotSet);
    }
    return *slot.stream;
}

int32_t FileSystem::OpenFile(const std::string& strPath, int16_t iMode) {
    return Try("Error Open File : " + strPath + " - ", int32_t{0}, [&] {
        const int32_t lHandle = GetFileHandle();
        const OpenMode mode = iMode == 0   ? OpenMode::Read
                              : iMode == 1 ? OpenMode::Write
                                           : OpenMode::Append;
        auto stream = HostFiles().OpenText(strPath, mode);
        lOpenCount_ = Narrow<int32_t>(int64_t{lOpenCount_} + 1);
        streams_[static_cast<size_t>(lHandle) - 1] = Slot{std::move(stream), true};
        return lHandle;
    });
}

int16_t FileSystem::WriteData(int32_t lHandle, std::string_view strData, bool bNewLine) {
    return TryStatus("WriteData() Failed - ", [&] {
        TextStream& stream = StreamOf(lHandle);
        if (bNewLine) {
            stream.WriteLine(strData);
        } else {
            stream.Write(strData);
        }
    });
}

int16_t FileSystem::ReadData(int32_t lHandle, std::string& strData, bool bReadLine,
                             int32_t lCount) {
    return TryStatus("ReadData() Failed - ", [&] {
        TextStream& stream = StreamOf(lHandle);
        if (bReadLine) {
            strData = stream.ReadLine();
        } else if (lCount > 0) {
            strData = stream.Read(static_cast<size_t>(lCount));
        } else {
            strData = stream.ReadAll();
        }
    });
}

int32_t FileSystem::CountLines(int32_t lHandle) {
    return Try("CountLines() Failed - ", int32_t{0}, [&] {
        int32_t lLines = 0;
        // The stream is looked up at each turn, since an event may close it.
        while (!StreamOf(lHandle).AtEndOfStream()) {
            static_cast<void>(StreamOf(lHandle).ReadLine()); // only that it is there
            lLines = Narrow<int32_t>(int64_t{lLines} + 1);
            PumpEvents();
        }
        return lLines;
    });
}

bool FileSystem::Eof(int32_t lHandle) {
    return Guarded([&] { return StreamOf(lHandle).AtEndOfStream(); },
                   [](const std::string&) { return true; });
}

void FileSystem::CloseFile(int32_t lHandle) {
    if (lHandle < 1 || static_cast<size_t>(lHandle) > streams_.size()) {
        return;
    }
    const size_t nSlot = static_cast<size_t>(lHandle) - 1;
    if (!streams_[nSlot].bOpen) {
        return;
    }
    streams_[nSlot].bOpen = false;
    if (--lOpenCount_ > 0) {
        streams_[nSlot].stream->Close();
        return;
    }
    const std::vector<Slot> closing = std::exchange(streams_, {});
    closing[nSlot].stream->Close();
}

} // namespace brennik
