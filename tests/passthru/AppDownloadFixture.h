// A download of a local list over a line to a device that takes every frame; and the packets of it,
// worked out by hand.
#pragma once

#include "passthru/TTmsAppDownload.h"
#include "tests/passthru/DeviceWorld.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace brennik::passthru {

/// An open file packet; all is sent within the first second of noon.
inline std::string Opened(char cType, const std::string& strSize, const std::string& strName) {
    return "O" + std::string(1, cType) + strSize + "00000000" + "20261114120000" + "XXXXXXXX" +
           strName;
}

/// A block of fewer than 256 bytes at an offset below 256.
inline std::string Block(const std::string& strData, size_t nOffset = 0) {
    return std::string("W\0", 2) + static_cast<char>(strData.size()) + std::string(3, '\0') +
           static_cast<char>(nOffset) + strData;
}

inline std::string Variable(const std::string& strName, const std::string& strValue) {
    return "L" + strName + "\x1C" + strValue;
}

inline const std::string kClose = "C";
inline const std::string kSuccess = "S";

class AppDownload : public DeviceTest {
  protected:
    AppDownload() {
        StartAt(12, 0, 0);
        Line().SetFarRate(115200);
        config.lClientBaudRate(115200);
        config.strTmsAppFolder("C:\\tms");
        device.Always("[]", kAck);
        Connect();
        host.files.Remove(kLogFile);
    }

    void List(const Lines& lines) {
        std::string strText;
        for (const std::string& strLine : lines)
            strText += strLine + "\r\n";
        host.files.Put("/tms/download.txt", strText);
    }
    void File(const std::string& strName, const std::string& strContent) {
        host.files.Put("/tms/" + strName, strContent);
    }

    /// The status of a download; what was still on the line has arrived then.
    int32_t Run(int32_t lBlockSize = 1024) {
        const int32_t lStatus = download.Download(link, config, lBlockSize, log);
        host.RunFor(10 * kMillisecond);
        EXPECT_EQ(host.files.nOpenStreams(), 0);
        return lStatus;
    }
    /// Runs the list of these lines with a new object and gives what the device was sent.
    Lines Sent(const Lines& lines, int32_t lBlockSize = 1024) {
        List(lines);
        StartAt(12, 0, 0);
        device.Forget();
        host.files.Remove(kLogFile);
        TTmsAppDownload fresh;
        EXPECT_EQ(fresh.Download(link, config, lBlockSize, log), 0) << fresh.strErrorMessage();
        host.RunFor(10 * kMillisecond);
        return device.Payloads();
    }
    void ExpectFailure(int32_t lCode, const std::string& strText) const {
        EXPECT_EQ(download.lErrorCode(), lCode);
        EXPECT_EQ(download.strErrorMessage(), strText);
    }
    void ExpectProgress(const std::string& strName, int32_t lSize, int32_t lSent) const {
        EXPECT_EQ(download.strDownloadFileName(), strName);
        EXPECT_EQ(download.lDownloadFileSize(), lSize);
        EXPECT_EQ(download.lFileBytesDownloaded(), lSent);
    }

    TTmsAppDownload download;
};

} // namespace brennik::passthru
