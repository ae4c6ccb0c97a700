// The engine: DoBrennikProtocol is the one entry point of every run, whatever the operating mode.
// One engine serves one run; what it counted and received stays readable afterwards. It works over
// the link, the channels and the files of the current host; tests let it run on the simulated one.
// The client session stands in ClientSession.cpp, folders and files in DownloadStore.cpp, and what
// concerns devices and the pass-through in the sources of passthru/.
#pragma once

#include "session/DownloadProgress.h"
#include "support/Failure.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

class FileSystem;
class TBrennikClientConfig;
class TBrennikPacket;
class TCommsChannel;
class TConnectionInfo;
class TFLClientLog;
class TIsoProtocol;

/// What lCurrentState tells the status window; the numbers are its table's.
enum class BrennikState : int32_t {
    Idle = 0,
    ProcessingSetTime = 1,
    ProcessingConfigSysVariable = 2,
    ProcessingMessage = 3,
    DownloadingFile = 4,
    ProcessingSetPassword = 5,
    ConnectingToServer = 6, ///< can be shown, but no code sets it
    DisconnectingFromServer = 7,
    UploadingFile = 8,
    DownloadingTmsApplication = 9,
    WaitingForDeviceReboot = 10, ///< can be shown, but no code sets it
};

class TBrennikProtocol {
  public:
    TBrennikProtocol();
    ~TBrennikProtocol();
    TBrennikProtocol(const TBrennikProtocol&) = delete;
    TBrennikProtocol& operator=(const TBrennikProtocol&) = delete;

    /// Does one whole run of the profile in oConfig, which is borrowed from the caller until the
    /// engine is gone. strConfigFileLoc is the folder of the configuration file, lProfileId the
    /// profile's number for the log. 0 success; 1 failure, told by strErrorMessage and lErrorCode.
    [[nodiscard]] int32_t DoBrennikProtocol(TBrennikClientConfig& oConfig,
                                            const std::string& strConfigFileLoc,
                                            int32_t lProfileId);

    /// The run of the pass-through modes; arguments and result as above.
    [[nodiscard]] int32_t DoBrennikPassThruProtocol(TBrennikClientConfig& oConfig,
                                                    const std::string& strConfigFileLoc,
                                                    int32_t lProfileId);

    /// Folder and name of a finished file, 0 to lNumFilesDownloaded - 1; empty for any other index.
    std::string GetFolderFromDownloadArray(int32_t lArrayIndex) const;
    std::string GetFileNameFromDownloadArray(int32_t lArrayIndex) const;

    const std::string& strErrorMessage() const { return error_.strErrorMessage(); }
    int32_t lErrorCode() const { return error_.lErrorCode(); }

    /// Of the file under way: the engine's own, or those of a running application download.
    const std::string& strDownloadFileName() const;
    int32_t lDownloadFileSize() const;    ///< bytes, as the far end stated it
    int32_t lFileBytesDownloaded() const; ///< bytes, as the far end counted them

    const std::string& strStatusMessage() const { return strStatusMessage_; }
    BrennikState lCurrentState() const { return lCurrentState_; }
    const std::string& strCurrentFolder() const { return strCurrentFolder_; } ///< ends in "\"

    /// The only property that others write: asks the run to stop. Acted on at the head of the
    /// packet loop.
    bool bCancelComms() const { return bCancelComms_; }
    void bCancelComms(bool bCancelComms) { bCancelComms_ = bCancelComms; }

    int32_t lNumFilesDownloaded() const { return lNumFilesDownloaded_; }
    const std::string& strBaseFolder() const { return strBaseFolder_; } ///< ends in "\"

  private:
    friend class TBrennikProtocolTestAccess;

    struct DownloadRecord {
        std::string strFolder;
        std::string strFilename;
    };

    // ClientSession.cpp
    int32_t RunClientSession(TBrennikClientConfig& oConfig, int32_t lProfileId);
    bool PrepareSession(TCommsChannel& oChannel, TIsoProtocol& oLink, TFLClientLog& oLog,
                        std::string& strRequest);
    int32_t HoldSession(TIsoProtocol& oLink, TFLClientLog& oLog, const std::string& strRequest);
    int32_t RunPacketLoop(TIsoProtocol& oLink, TFLClientLog& oLog);
    bool ActOnPacket(TBrennikPacket& oPacket, std::string_view strPacket, TFLClientLog& oLog,
                     bool& bDone);
    bool ProcessSetPasswordPacket();
    bool ProcessSetTimePacket();

    /// The first lines of every run's log.
    void LogRunHeader(TFLClientLog& oLog, int32_t lProfileId) const;

    /// Fills the connection values from the Server keys of the profile, or from its Client keys;
    /// the other properties of oConnInfo keep what they hold.
    static void LoadConnectionInfo(const TBrennikClientConfig& oConfig, TConnectionInfo& oConnInfo,
                                   bool bServer);

    // DownloadStore.cpp: true for success; a failure stands in error_.
    bool WriteToConfigSysFile(TBrennikPacket& oPacket);
    bool OpenDownloadFile(TBrennikPacket& oPacket, bool bResume);
    bool ChangeGroupFolder(const TBrennikPacket& oPacket);
    bool ChangeDriveFolder(const TBrennikPacket& oPacket);
    bool EnterCurrentFolder(const std::string& strLevel);
    void BeginFile(const TBrennikPacket& oPacket);
    bool WriteToDownloadFile(TBrennikPacket& oPacket);
    bool CloseDownloadFile();
    int32_t InitialiseFolders();
    bool DeleteFolderIfThere(const std::string& strFolder);
    bool CreateFolderOrFail(const std::string& strFolder);
    void AddToDownloadArray(const std::string& strFolder, const std::string& strFilename);

    ErrorState error_;
    std::unique_ptr<FileSystem> oFileSystem_;
    int32_t lFileHandle_;
    std::string strDownloadFileName_;
    int32_t lDownloadFileSize_ = 0;
    int32_t lFileBytesDownloaded_ = 0;
    std::string strStatusMessage_;
    BrennikState lCurrentState_ = BrennikState::Idle;
    std::string strCurrentFolder_;
    std::string strBaseFolder_;
    std::string strDriveFolder_;
    std::string strGroupFolder_;
    TBrennikClientConfig* oConfig_ = nullptr; // the caller's
    bool bCancelComms_ = false;
    std::vector<DownloadRecord> downloads_;
    int32_t lNumFilesDownloaded_ = 0;
    bool bTmsAppDownloadActive_ = false;
    std::unique_ptr<DownloadProgress> oTmsAppDownload_;
};

} // namespace brennik
