#include "config/OperatingMode.h"
#include "config/TBrennikClientConfig.h"
#include "link/CommsErrors.h"
#include "platform/Host.h"
#include "session/TBrennikPacket.h"
#include "session/TBrennikProtocol.h"
#include "support/AsciiText.h"
#include "support/FileSystem.h"
#include "support/PadExtract.h"

namespace brennik {

namespace {

constexpr int16_t kOpenToWrite = 1;
constexpr int16_t kOpenToAppend = 2;
constexpr int32_t kZerosOnTheLeft = 2;

// The folder name of a pseudo-file stands behind its 8 letters and a dot.
constexpr size_t kPseudoFilePrefix = 9;

bool ContainsIgnoringCase(const std::string& strName, const char* strUpperCase) {
    return UpperCase(strName).find(strUpperCase) != std::string::npos;
}

// The folder level that a pseudo-file names. Nothing behind the prefix gives an empty level, "\",
// which is kept as it comes.
std::string FolderLevelOf(const std::string& strFilename) {
    if (strFilename.size() <= kPseudoFilePrefix)
        return "\\";
    return strFilename.substr(kPseudoFilePrefix) + "\\";
}

// Names come from the far end: an absolute one means a place that isn't ours.
bool IsAbsoluteForm(const std::string& strName) {
    if (strName.empty())
        return false;
    if (strName.front() == '/' || strName.front() == '\\')
        return true;
    const char cDrive = UpperCase(strName.front());
    return strName.size() >= 2 && strName[1] == ':' && cDrive >= 'A' && cDrive <= 'Z';
}

// "YYYYMMDD-HHMMSS\", the folder of one attempt.
std::string AttemptFolderLevel() {
    const DateTime now = LocalNow();
    PadExtract padding;
    const auto digits = [&](int32_t lValue, int32_t lWidth) {
        return padding.PadString(ToDecimal(lValue), kZerosOnTheLeft, lWidth);
    };
    return digits(now.iYear, 4) + digits(now.iMonth, 2) + digits(now.iDay, 2) + "-" +
           digits(now.iHour, 2) + digits(now.iMinute, 2) + digits(now.iSecond, 2) + "\\";
}

} // namespace

int32_t TBrennikProtocol::InitialiseFolders() {
    return GuardedWithCode(
        error_, "TBrennikProtocol.InitialiseFolders() Failed - ", 1, [&]() -> int32_t {
            strCurrentFolder_.clear();
            strBaseFolder_.clear();
            std::string strFolder = WithTrailingBackslash(oConfig_->strWorkingFolder());
            const bool bPerAttempt = oConfig_->bFolderperDownloadAttempt();
            if (bPerAttempt && oConfig_->bDeleteFolderPerDownloadAttempt()) {
                if (!DeleteFolderIfThere(strFolder))
                    return 1;
                // A folder that can't be made here shows when the attempt's own is made in it.
                static_cast<void>(oFileSystem_->CreateFolder(strFolder));
            }
            if (bPerAttempt)
                strFolder += AttemptFolderLevel();
            // Without a folder per attempt this wipes the whole working folder: it is meant so.
            if (!DeleteFolderIfThere(strFolder) || !CreateFolderOrFail(strFolder))
                return 1;
            strDriveFolder_.clear();
            strGroupFolder_.clear();
            if (oConfig_->lOperatingMode() != kModeTcpClient) {
                if (!CreateFolderOrFail(strFolder + "I\\") ||
                    !CreateFolderOrFail(strFolder + "I\\" + "1\\"))
                    return 1;
                strDriveFolder_ = "I\\";
                strGroupFolder_ = "1\\";
            }
            strBaseFolder_ = strFolder;
            strCurrentFolder_ = strBaseFolder_ + strDriveFolder_ + strGroupFolder_;
            return 0;
        });
}

bool TBrennikProtocol::DeleteFolderIfThere(const std::string& strFolder) {
    if (!oFileSystem_->FolderExists(strFolder) || oFileSystem_->DeleteFolder(strFolder) == 0)
        return true;
    SetError(error_, CommsErrors::kDeleteFolder, " : " + strFolder);
    return false;
}

bool TBrennikProtocol::CreateFolderOrFail(const std::string& strFolder) {
    if (oFileSystem_->CreateFolder(strFolder) == 0)
        return true;
    SetError(error_, CommsErrors::kCreateFolder, " : " + strFolder);
    return false;
}

bool TBrennikProtocol::OpenDownloadFile(TBrennikPacket& oPacket, bool bResume) {
    return GuardedWithCode(
        error_, "TBrennikProtocol.OpenDownloadFile() Failed - ", false, [&]() -> bool {
            // Any name that contains one of the two words is a change of folder, in any case and
            // with or without a dot; a real file of such a name never gets opened.
            if (ContainsIgnoringCase(oPacket.strFilename(), "SETGROUP"))
                return ChangeGroupFolder(oPacket);
            if (ContainsIgnoringCase(oPacket.strFilename(), "SETDRIVE"))
                return ChangeDriveFolder(oPacket);
            if (UpperCase(oPacket.strFilename()) == "<DEFAULT>")
                oPacket.strFilename("default.txt");

            const std::string strPath = strCurrentFolder_ + oPacket.strFilename();
            int32_t lHandle = 0;
            if (!IsAbsoluteForm(oPacket.strFilename()) &&
                CurrentHost().files.StaysInside(strBaseFolder_, strPath))
                lHandle = oFileSystem_->OpenFile(strPath, bResume ? kOpenToAppend : kOpenToWrite);
            if (lHandle <= 0) {
                SetError(error_, CommsErrors::kOpenFile, " : " + strCurrentFolder_);
                return false;
            }
            // A file that the far end never closed would keep its descriptor to the end of the run.
            oFileSystem_->CloseFile(lFileHandle_);
            lFileHandle_ = lHandle;
            BeginFile(oPacket);
            return true;
        });
}

bool TBrennikProtocol::ChangeGroupFolder(const TBrennikPacket& oPacket) {
    strGroupFolder_ = FolderLevelOf(oPacket.strFilename());
    strCurrentFolder_ = strBaseFolder_ + strDriveFolder_ + strGroupFolder_;
    if (!EnterCurrentFolder(strGroupFolder_))
        return false;
    BeginFile(oPacket);
    return true;
}

bool TBrennikProtocol::ChangeDriveFolder(const TBrennikPacket& oPacket) {
    strDriveFolder_ = FolderLevelOf(oPacket.strFilename());
    strCurrentFolder_ = strBaseFolder_ + strDriveFolder_;
    if (!EnterCurrentFolder(strDriveFolder_))
        return false;
    // Without a group so far this names the folder that stands already, and nothing is made.
    strCurrentFolder_ += strGroupFolder_;
    if (!EnterCurrentFolder(strGroupFolder_))
        return false;
    BeginFile(oPacket);
    return true;
}

bool TBrennikProtocol::EnterCurrentFolder(const std::string& strLevel) {
    // A lone "\" is an empty level; with anything behind it, it would be a place of its own.
    const bool bAbsolute = strLevel != "\\" && IsAbsoluteForm(strLevel);
    if (bAbsolute || !CurrentHost().files.StaysInside(strBaseFolder_, strCurrentFolder_)) {
        SetError(error_, CommsErrors::kCreateFolder, " : " + strCurrentFolder_);
        return false;
    }
    return oFileSystem_->FolderExists(strCurrentFolder_) || CreateFolderOrFail(strCurrentFolder_);
}

// A pseudo-file counts as a file here, so that its close records and shows its name.
void TBrennikProtocol::BeginFile(const TBrennikPacket& oPacket) {
    strDownloadFileName_ = oPacket.strFilename();
    lDownloadFileSize_ = oPacket.lFileSize();
    lFileBytesDownloaded_ = 0;
}

bool TBrennikProtocol::WriteToDownloadFile(TBrennikPacket& oPacket) {
    return GuardedWithCode(
        error_, "TBrennikProtocol.WriteToDownloadFile() Failed - ", false, [&]() -> bool {
            if (oFileSystem_->WriteData(lFileHandle_, oPacket.strData(), false) != 0) {
                SetError(error_, CommsErrors::kWriteFile, " : data=" + oPacket.strData());
                return false;
            }
            // The length that the packet states counts, not that of what it carries.
            lFileBytesDownloaded_ =
                Narrow<int32_t>(int64_t{lFileBytesDownloaded_} + oPacket.lDataSize());
            return true;
        });
}

bool TBrennikProtocol::CloseDownloadFile() {
    return GuardedWithCode(error_, "TBrennikProtocol.CloseDownloadFile() Failed - ", false, [&] {
        oFileSystem_->CloseFile(lFileHandle_);
        lFileHandle_ = kNoFile;
        return true;
    });
}

bool TBrennikProtocol::WriteToConfigSysFile(TBrennikPacket& oPacket) {
    return GuardedWithCode(
        error_, "TBrennikProtocol.WriteToConfigSysFile() Failed - ", false, [&]() -> bool {
            const std::string strPath = strCurrentFolder_ + "config.sys";
            int32_t lHandle = 0;
            if (CurrentHost().files.StaysInside(strBaseFolder_, strPath))
                lHandle = oFileSystem_->OpenFile(strPath, kOpenToAppend);
            if (lHandle <= 0) {
                SetError(error_, CommsErrors::kConfigSystemOpen, " : " + strPath);
                return false;
            }
            const bool bWritten = oFileSystem_->WriteData(lHandle, oPacket.strData(), true) == 0;
            if (!bWritten)
                SetError(error_, CommsErrors::kConfigSystemWrite, " : data=" + oPacket.strData());
            oFileSystem_->CloseFile(lHandle);
            return bWritten;
        });
}

void TBrennikProtocol::AddToDownloadArray(const std::string& strFolder,
                                          const std::string& strFilename) {
    // A pseudo-file takes a slot that the next real file reuses.
    downloads_.resize(static_cast<size_t>(lNumFilesDownloaded_) + 1);
    // This test is exact in case and dot where the one that opens isn't: a pseudo-file named in
    // lower case changes the folder and is listed all the same. It is meant so.
    if (strFilename.find("SETDRIVE.") != std::string::npos ||
        strFilename.find("SETGROUP.") != std::string::npos)
        return;
    downloads_[static_cast<size_t>(lNumFilesDownloaded_)] = {strFolder, strFilename};
    ++lNumFilesDownloaded_;
}

std::string TBrennikProtocol::GetFolderFromDownloadArray(int32_t lArrayIndex) const {
    if (lArrayIndex < 0 || lArrayIndex >= lNumFilesDownloaded_)
        return "";
    return downloads_[static_cast<size_t>(lArrayIndex)].strFolder;
}

std::string TBrennikProtocol::GetFileNameFromDownloadArray(int32_t lArrayIndex) const {
    if (lArrayIndex < 0 || lArrayIndex >= lNumFilesDownloaded_)
        return "";
    return downloads_[static_cast<size_t>(lArrayIndex)].strFilename;
}

} // namespace brennik
