// The engine: DoBrennikProtocol is the one entry point of every run, whatever the operating mode.
// One engine serves one run; what it counted and received stays readable afterwards. It works over
// the link, the channels and the files of the current host; tests let it run on the simulated one.
// The client session stands in ClientSession.cpp, folders and files in DownloadStore.cpp, and what
// concerns devices and the pass-through in the sources of passthru/.
#pragma once

#include "session/DownloadProgress.h"
#include "session/PassThruState.h"
#include "support/Failure.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

struct CommsError;
class FileSystem;
class TBrennikClientConfig;
class TBrennikPacket;
class TCommsChannel;
class TConnectionInfo;
class TFLClientLog;
class TIsoProtocol;
class TSerialComms;
class TSocketComms;

enum class BrennikPacketType : int32_t;

/// What lCurrentState tells the status window, which knows each state by its number.
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
    /// run has ended. strConfigFileLoc is the folder of the configuration file, lProfileId the
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

    static constexpr int32_t kNoFile = -1;

    // ClientSession.cpp. Those that give a bool give true for success; a failure stands in error_.

    /// The whole session in mode 0 or 1: 0 or 1.
    [[nodiscard]] int32_t RunClientSession(TBrennikClientConfig& oConfig, int32_t lProfileId);

    /// All that comes before the first byte on the wire, up to an open channel and a built request.
    [[nodiscard]] bool PrepareSession(TCommsChannel& oChannel, TConnectionInfo& oConnInfo,
                                      TIsoProtocol& oLink, TFLClientLog& oLog,
                                      std::string& strRequest);

    /// From the far end's ENQ to the end of the packet loop, with the file closed: 0 or 1.
    [[nodiscard]] int32_t HoldSession(TIsoProtocol& oLink, TFLClientLog& oLog,
                                      const std::string& strRequest);

    /// Reads and acts until a success, a failure or a cancel: 0 for a success packet, else 1.
    [[nodiscard]] int32_t RunPacketLoop(TIsoProtocol& oLink, TFLClientLog& oLog);

    /// Acts on one packet that was broken out; bDone is set by a success packet.
    [[nodiscard]] bool ActOnPacket(TBrennikPacket& oPacket, std::string_view strPacket,
                                   TFLClientLog& oLog, bool& bDone);
    [[nodiscard]] bool ProcessSetPasswordPacket();
    [[nodiscard]] bool ProcessSetTimePacket();

    /// The first lines of a session's log, of which every cycle of a pass-through writes two.
    void LogRunHeader(TFLClientLog& oLog, int32_t lProfileId) const;
    static void LogProgramAndProfile(TFLClientLog& oLog, int32_t lProfileId);

    /// Fills the connection values from the Server keys of the profile, or from its Client keys;
    /// the other properties of oConnInfo keep what they hold.
    static void LoadConnectionInfo(const TBrennikClientConfig& oConfig, TConnectionInfo& oConnInfo,
                                   bool bServer);

    // DownloadStore.cpp. Those that give a bool give true for success; a failure stands in error_.

    /// Adds the packet's variable as one line to "config.sys" of the current folder.
    [[nodiscard]] bool WriteToConfigSysFile(TBrennikPacket& oPacket);

    /// Opens the file that the packet names, emptied or (bResume) to be appended to, or changes the
    /// folder when it names a pseudo-file.
    [[nodiscard]] bool OpenDownloadFile(TBrennikPacket& oPacket, bool bResume);
    [[nodiscard]] bool ChangeGroupFolder(const TBrennikPacket& oPacket);
    [[nodiscard]] bool ChangeDriveFolder(const TBrennikPacket& oPacket);

    /// Makes the current folder unless it stands; strLevel is the level of it that the far end
    /// named, and must not lead out of the base folder.
    [[nodiscard]] bool EnterCurrentFolder(const std::string& strLevel);
    void BeginFile(const TBrennikPacket& oPacket);

    /// Adds the packet's data to the open file and counts the length that it states.
    [[nodiscard]] bool WriteToDownloadFile(TBrennikPacket& oPacket);

    /// Closes the open file, if any.
    [[nodiscard]] bool CloseDownloadFile();

    /// Prepares the folders of this attempt, wiping what the profile says: 0 or 1.
    [[nodiscard]] int32_t InitialiseFolders();
    [[nodiscard]] bool DeleteFolderIfThere(const std::string& strFolder);
    [[nodiscard]] bool CreateFolderOrFail(const std::string& strFolder);

    /// Records a finished file, but no pseudo-file.
    void AddToDownloadArray(const std::string& strFolder, const std::string& strFilename);

    // DeviceHandshake.cpp. The configuration is written to as far as is told; the packet of a
    // device is edited in place.

    /// Brings the device to its first request of a cycle: polls it with ENQ at changing rates, or
    /// tells it what to do, then classifies and edits what came. 0, or 1 with the error set; the
    /// state is set for an upload and a forced full download in either case. strPTID keeps its
    /// value behind an enquiry and a request of another kind.
    [[nodiscard]] int32_t
    GetFirstPacketFromDevice(TBrennikClientConfig& oConfig, TSerialComms& oSerialComms,
                             TIsoProtocol& oDeviceLink, TConnectionInfo& oConnection,
                             const std::string& strConfigFileLoc, int32_t lProfileId,
                             TFLClientLog& oLog, std::string& strPacket, std::string& strPTID,
                             PassThruState& lPassThruState);

    /// Tells the device what to do and reads its first real packet: 0, or 1 with the error set.
    /// Serves a forced full download as well.
    [[nodiscard]] int32_t GetFirstPacketFromDeviceForUpload(TBrennikClientConfig& oConfig,
                                                            TIsoProtocol& oDeviceLink,
                                                            std::string& strPacket,
                                                            std::string& strPTID);

    /// Waits until the device is ready again, tells an error, or lTimeout seconds are over; the
    /// first 20 of them in one sleep.
    void WaitForDeviceReboot(TIsoProtocol& oDeviceLink, int32_t lTimeout, TFLClientLog& oLog,
                             const TBrennikClientConfig& oConfig);

    /// The other of the two rates at which devices call; lBaudRate itself without bAutoBaud.
    static int32_t NextAutoBaudRate(bool bAutoBaud, int32_t lBaudRate);

    /// What the polling of a device works on and has come to. Borrows all that it names.
    struct DevicePoll {
        TBrennikClientConfig& oConfig;
        TSerialComms& oSerialComms;
        TIsoProtocol& oDeviceLink;
        TConnectionInfo& oConnection;
        TFLClientLog& oLog;
        std::string& strPacket;
        int32_t lBaudRate = 0;
        bool bGotPacket = false;
        bool bFatal = false; ///< a frame was begun and not completed

        void SetNextBaudRate();
        void LogBaudRate() const;
    };
    [[nodiscard]] bool PollDevice(DevicePoll& poll);
    void PollDeviceOnce(DevicePoll& poll);
    [[nodiscard]] int32_t ClassifyFirstPacket(TBrennikClientConfig& oConfig,
                                              TIsoProtocol& oDeviceLink, TFLClientLog& oLog,
                                              std::string& strPacket, std::string& strPTID,
                                              PassThruState& lPassThruState);
    static void SubstituteIdsAndTitles(const TBrennikClientConfig& oConfig,
                                       bool bSubstituteApplicationOnPartial,
                                       std::string& strPacket);
    [[nodiscard]] int32_t DownloadTmsApplication(TBrennikClientConfig& oConfig,
                                                 TIsoProtocol& oDeviceLink, TFLClientLog& oLog,
                                                 const std::string& strPacket,
                                                 PassThruState& lPassThruState);

    /// Takes the terminal id of profile 2 over into profile 1. Has no caller today.
    void CopyTerminalIdFromProfile(const std::string& strConfigFileLoc);

    // TmsMode.cpp.

    [[nodiscard]] bool AskForTransfer(const TBrennikClientConfig& oConfig,
                                      TIsoProtocol& oDeviceLink, std::string& strReply);

    /// Tells a device that doesn't call by itself to do so. True when its first request is in
    /// strPacket; a failure stands in error_ and stops nothing.
    [[nodiscard]] bool RequestTmsMode(const TBrennikClientConfig& oConfig,
                                      TIsoProtocol& oDeviceLink, std::string& strPacket);

    /// The same, carried through to the server and back: 0, or 1 with the error set. Both links
    /// acknowledge from then on. Has no caller today.
    [[nodiscard]] int32_t ForcePedIntoTmsMode(TBrennikClientConfig& oConfig,
                                              TIsoProtocol& oDeviceLink, TIsoProtocol& oServerLink,
                                              TSocketComms& oServerChannel,
                                              TConnectionInfo& oServerConnection,
                                              TFLClientLog& oLog, std::string& strPacket);
    [[nodiscard]] bool PassEnquiry(TIsoProtocol& oDeviceLink, TIsoProtocol& oServerLink,
                                   std::string& strPacket);

    /// Puts the profile's values into a partial request that follows a refused enquiry.
    void SubstituteProfileFields(const TBrennikClientConfig& oConfig, std::string& strPacket);

    // KeyInjection.cpp.

    /// Puts the key file of the profile into the device, bound to its PT id. Reports by log lines;
    /// a failure of the link stands in error_ as well.
    void InjectPublicKeyFile(TFLClientLog& oLog, const TBrennikClientConfig& oConfig,
                             TIsoProtocol& oDeviceLink, const std::string& strPTID);
    class KeyInjection;

    // PassThru.cpp and PassThruRelay.cpp. What goes wrong stands in error_ and in the run's bError.

    struct PassThruRun;
    void DoPassThruCycle(PassThruRun& run);
    void BeginPassThruCycle(PassThruRun& run);
    [[nodiscard]] bool InitialisePassThruLink(PassThruRun& run, TIsoProtocol& oLink,
                                              TCommsChannel& oChannel, bool bServerSide);
    void EndPassThruCycle(PassThruRun& run);
    static void LogWaitForReboot(PassThruRun& run, const char* strMark);

    void ExchangeWithServer(PassThruRun& run);
    void PassFirstPacketToServer(PassThruRun& run);
    void RelayDownload(PassThruRun& run);
    void RelayUpload(PassThruRun& run);
    [[nodiscard]] bool ActOnRelayedFrame(PassThruRun& run, BrennikState lState,
                                         const CommsError& unsuccessful, bool& bEnded);
    void ShowRelayProgress(const TBrennikPacket& oPacket, BrennikPacketType type,
                           BrennikState lState);

    void ExchangeTmsEnquiry(PassThruRun& run);
    [[nodiscard]] bool AskServerForEnquiry(PassThruRun& run);
    [[nodiscard]] bool AnswerEnquiry(PassThruRun& run);
    void ServeFallbackRequest(PassThruRun& run);

    /// Sets text, code and state when a cancel was asked for, and tells whether it was.
    bool AbortIfCancelled(PassThruRun& run);
    template <class Source>
    void FailPassThru(PassThruRun& run, const Source& source);
    [[nodiscard]] bool RelayStep(PassThruRun& run, int32_t lStatus,
                                 const TIsoProtocol& oLinkOfText);

    ErrorState error_;
    std::unique_ptr<FileSystem> oFileSystem_;
    int32_t lFileHandle_ = kNoFile;
    std::string strDownloadFileName_;
    int32_t lDownloadFileSize_ = 0;
    int32_t lFileBytesDownloaded_ = 0;
    std::string strStatusMessage_;
    BrennikState lCurrentState_ = BrennikState::Idle;
    std::string strCurrentFolder_;
    std::string strBaseFolder_;
    std::string strDriveFolder_;
    std::string strGroupFolder_;
    TBrennikClientConfig* oConfig_ = nullptr; // the caller's, for the length of a run
    bool bCancelComms_ = false;
    std::vector<DownloadRecord> downloads_;
    int32_t lNumFilesDownloaded_ = 0;
    bool bTmsAppDownloadActive_ = false;
    std::unique_ptr<DownloadProgress> oTmsAppDownload_;
    bool bTmsModeRequested_ = false; // across cycles: a device is told once to enter TMS mode
    bool bDeviceAnswered_ = false;   // across cycles: it has answered a management message
};

} // namespace brennik
