// The sending of a local list of files to a device, in the place of the server: files, variables
// and changes of group and drive, frame by frame, then the end of the session.
// It works over the device's link and the files of the current host; tests put the simulated ones
// there. One object serves one download; the engine's getters show how far it is.
#pragma once

#include "session/DownloadProgress.h"
#include "support/Failure.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

class FileSystem;
class TBrennikClientConfig;
class TBrennikPacket;
class TFLClientLog;
class TIsoProtocol;

/// One line of the list.
struct TmsListEntry {
    std::string strFilename; ///< the trimmed line
    int32_t lFileSize = 0;   ///< bytes; 0 for a control line, -1 for a file that isn't there
    bool bCode = false;      ///< sent as code, otherwise as data
};

class TTmsAppDownload final : public DownloadProgress {
  public:
    /// Sends what "download.txt" in strTmsAppFolder lists, in blocks of lBlockSize bytes; 0 sends
    /// no data, and less is a failure. strTmsAppFolder is completed by two backslashes. The link
    /// acknowledges from here on, and nobody takes that back. A cancel isn't looked at. 0 success;
    /// 1 failure, after which the device hears nothing more.
    [[nodiscard]] int32_t Download(TIsoProtocol& oDeviceLink, TBrennikClientConfig& oConfig,
                                   int32_t lBlockSize, TFLClientLog& oLog);

    const std::string& strErrorMessage() const { return error_.strErrorMessage(); }
    int32_t lErrorCode() const { return error_.lErrorCode(); }

    /// The entry under way, its size, and the bytes of it that were sent.
    const std::string& strDownloadFileName() const override { return strDownloadFileName_; }
    int32_t lDownloadFileSize() const override { return lDownloadFileSize_; }
    int32_t lFileBytesDownloaded() const override { return lFileBytesDownloaded_; }

    /// Always empty: nothing writes it.
    const std::string& strStatusMessage() const { return strStatusMessage_; }

  private:
    friend class TTmsAppDownloadTestAccess;

    /// What the steps of one download share; borrowed for its length.
    struct Road {
        TIsoProtocol& oDeviceLink;
        TFLClientLog& oLog;
        TBrennikPacket& oPacket;
        const std::string& strFolder;
        int32_t lBlockSize;
    };

    static int32_t BytesToRead(int32_t lBlockSize, int32_t lPosition, int32_t lFileSize);
    int32_t ReadListFile(const std::string& strFolder);

    // True for success; a failure stands in error_.
    bool SendEntry(const Road& road, const TmsListEntry& entry);
    bool SendConfigLine(const Road& road, const std::string& strLine);
    bool SendFile(const Road& road, const TmsListEntry& entry);
    bool SendContents(const Road& road, const TmsListEntry& entry, const std::string& strClose);
    bool SendBlock(const Road& road, FileSystem& oFileSystem, int32_t lHandle, int32_t lBytes,
                   int32_t& lPosition);
    bool SendEndOfSession(const Road& road);
    bool Built(const Road& road, int32_t lStatus);
    bool Send(const Road& road, std::string_view strPacket);
    void ShowProgress(const std::string& strName, int32_t lFileSize);

    ErrorState error_;
    std::vector<TmsListEntry> files_;
    int32_t lNumFiles_ = 0;
    std::string strDownloadFileName_;
    int32_t lDownloadFileSize_ = 0;
    int32_t lFileBytesDownloaded_ = 0;
    std::string strStatusMessage_;
};

} // namespace brennik
