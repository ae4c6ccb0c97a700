#include "passthru/TTmsAppDownload.h"

#include "config/TBrennikClientConfig.h"
#include "link/CommsErrors.h"
#include "link/TIsoProtocol.h"
#include "platform/PumpEvents.h"
#include "platform/RuntimeFailure.h"
#include "session/TBrennikPacket.h"
#include "support/AsciiText.h"
#include "support/FileSystem.h"
#include "support/TFLClientLog.h"

#include <algorithm>
#include <array>

namespace brennik {

namespace {

constexpr const char* kListFile = "download.txt";

// Two of them: it is meant so, and no path minds.
constexpr std::string_view kFolderEnd = "\\\\";

// A line that begins so, with at least one character more, changes group or drive.
constexpr std::array<std::string_view, 2> kFolderCommands{"SETGROUP", "SETDRIVE"};
constexpr size_t kFolderCommandLength = 8;

// A file is code when its name has one of these anywhere in it.
constexpr std::array<std::string_view, 8> kCodeEndings{".OUT", ".LIB", ".P7S", ".OS",
                                                       ".SCM", ".VSO", ".CRT", ".ZIP"};

bool IsVariableLine(const std::string& strLine) {
    return strLine.front() == '*' || strLine.front() == '#';
}

bool IsFolderLine(const std::string& strLine) {
    const std::string strCommand = UpperCase(strLine.substr(0, kFolderCommandLength));
    return strLine.size() > kFolderCommandLength &&
           std::find(kFolderCommands.begin(), kFolderCommands.end(), strCommand) !=
               kFolderCommands.end();
}

bool IsCode(const std::string& strLine) {
    const std::string strUpper = UpperCase(strLine);
    return std::any_of(kCodeEndings.begin(), kCodeEndings.end(), [&](std::string_view strEnding) {
        return strUpper.find(strEnding) != std::string::npos;
    });
}

} // namespace

int32_t TTmsAppDownload::Download(TIsoProtocol& oDeviceLink, TBrennikClientConfig& oConfig,
                                  int32_t lBlockSize, TFLClientLog& oLog) {
    return GuardedWithCode(error_, "TTmsAppDownload.Download() Failed - ", 1, [&]() -> int32_t {
        if (!oConfig.strTmsAppFolder().empty() &&
            !oConfig.strTmsAppFolder().ends_with(kFolderEnd)) {
            oConfig.strTmsAppFolder(oConfig.strTmsAppFolder() + std::string(kFolderEnd));
        }
        if (ReadListFile(oConfig.strTmsAppFolder()) != 0) {
            oLog.Logit("Failed reading tms client list file", false);
            return 1;
        }
        TBrennikPacket oPacket;
        const Road road{oDeviceLink, oLog, oPacket, oConfig.strTmsAppFolder(), lBlockSize};
        oDeviceLink.bAckPackets(true);
        bool bGood = true;
        for (size_t nFile = 0; bGood && nFile < files_.size(); ++nFile) {
            bGood = SendEntry(road, files_[nFile]);
        }
        ShowProgress({}, 0);
        // A failure leaves the device without an end of its session: it is meant so.
        return bGood && SendEndOfSession(road) ? 0 : 1;
    });
}

int32_t TTmsAppDownload::ReadListFile(const std::string& strFolder) {
    return GuardedWithCode(error_, "TTmsAppDownload.ReadListFile() Failed - ", 1, [&]() -> int32_t {
        FileSystem oFileSystem;
        const int32_t lHandle = oFileSystem.OpenFile(strFolder + kListFile, 0);
        if (lHandle <= 0) {
            SetError(error_, CommsErrors::kTmsListOpen);
            return 1;
        }
        std::string strLine;
        // A line that can't be read ends the list: it could not be read the next time either.
        while (!oFileSystem.Eof(lHandle) && oFileSystem.ReadData(lHandle, strLine, true, 0) == 0) {
            strLine = Trim(strLine);
            if (strLine.empty()) {
                continue;
            }
            const bool bControl = IsVariableLine(strLine) || IsFolderLine(strLine);
            files_.push_back(bControl ? TmsListEntry{strLine, 0, false}
                                      : TmsListEntry{strLine,
                                                     oFileSystem.GetFileSize(strFolder + strLine),
                                                     IsCode(strLine)});
            ++lNumFiles_;
        }
        if (lNumFiles_ == 0) {
            SetError(error_, CommsErrors::kTmsListEmpty);
            return 1;
        }
        return 0;
    });
}

bool TTmsAppDownload::SendEntry(const Road& road, const TmsListEntry& entry) {
    PumpEvents();
    road.oLog.Logit("Filename=" + entry.strFilename + ", FileSize=" + ToDecimal(entry.lFileSize),
                    false);
    ShowProgress(entry.strFilename, entry.lFileSize);
    // Meant to look at the whole name, where the list looked at its first character.
    return entry.strFilename.find_first_of("*#") != std::string::npos
               ? SendConfigLine(road, entry.strFilename)
               : SendFile(road, entry);
}

bool TTmsAppDownload::SendConfigLine(const Road& road, const std::string& strLine) {
    std::string strPacket;
    return Built(road, road.oPacket.BuildConfigSysPacket(strPacket, strLine)) &&
           Send(road, strPacket);
}

/// Groups and drives are files without content: the device takes their names as commands.
bool TTmsAppDownload::SendFile(const Road& road, const TmsListEntry& entry) {
    std::string strOpen;
    std::string strClose;
    if (!Built(road, road.oPacket.BuildOpenFilePacket(strOpen, entry.strFilename, entry.bCode,
                                                      entry.lFileSize, false)) ||
        !Built(road, road.oPacket.BuildCloseFilePacket(strClose)) || !Send(road, strOpen)) {
        return false;
    }
    return entry.lFileSize == 0 ? Send(road, strClose) : SendContents(road, entry, strClose);
}

bool TTmsAppDownload::SendContents(const Road& road, const TmsListEntry& entry,
                                   const std::string& strClose) {
    FileSystem oFileSystem; // closes the file when it goes
    const std::string strPath = road.strFolder + entry.strFilename;
    const int32_t lHandle = oFileSystem.OpenFile(strPath, 0);
    if (lHandle <= 0) {
        SetError(error_, CommsErrors::kTmsFileOpen, " [" + strPath + "]");
        return false;
    }
    int32_t lPosition = 0;
    // Meant to have no other end: a file that has shrunk is sent as empty blocks, each waiting for
    // its answer, for as long as the device takes them.
    for (;;) {
        const int32_t lBytes = BytesToRead(road.lBlockSize, lPosition, entry.lFileSize);
        road.oLog.Logit(
            "FilePosition=" + ToDecimal(lPosition) + ", lCharstoRead=" + ToDecimal(lBytes), false);
        if (lBytes < 0) {
            throw RuntimeFailure(FailureKind::InvalidProcedureCall); // it would never come to 0
        }
        const bool bClose = lBytes == 0;
        const bool bSent = bClose ? Send(road, strClose)
                                  : SendBlock(road, oFileSystem, lHandle, lBytes, lPosition);
        lFileBytesDownloaded_ = lPosition;
        if (bClose || !bSent) {
            return bSent;
        }
    }
}

/// The position moves on by what the file really had.
bool TTmsAppDownload::SendBlock(const Road& road, FileSystem& oFileSystem, int32_t lHandle,
                                int32_t lBytes, int32_t& lPosition) {
    std::string strData;
    // A read that fails delivers nothing, which is sent as it is.
    static_cast<void>(oFileSystem.ReadData(lHandle, strData, false, lBytes));
    std::string strPacket;
    if (!Built(road, road.oPacket.BuildWriteDataToFilePacket(strPacket, strData, lPosition)) ||
        !Send(road, strPacket)) {
        return false;
    }
    lPosition += Narrow<int32_t>(strData.size());
    return true;
}

bool TTmsAppDownload::SendEndOfSession(const Road& road) {
    std::string strPacket;
    return Built(road, road.oPacket.BuildSessionSuccessfulPacket(strPacket)) &&
           Send(road, strPacket);
}

bool TTmsAppDownload::Built(const Road& road, int32_t lStatus) {
    if (lStatus != 0) {
        error_.CopyFrom(road.oPacket);
    }
    return lStatus == 0;
}

bool TTmsAppDownload::Send(const Road& road, std::string_view strPacket) {
    if (road.oDeviceLink.SendPacket(strPacket) == 0) {
        return true;
    }
    error_.CopyFrom(road.oDeviceLink);
    return false;
}

int32_t TTmsAppDownload::BytesToRead(int32_t lBlockSize, int32_t lPosition, int32_t lFileSize) {
    return std::min(lBlockSize, lFileSize - lPosition);
}

void TTmsAppDownload::ShowProgress(const std::string& strName, int32_t lFileSize) {
    strDownloadFileName_ = strName;
    lDownloadFileSize_ = lFileSize;
    lFileBytesDownloaded_ = 0;
}

} // namespace brennik
