#include "config/TBrennikClientConfig.h"
#include "config/TTLIniFile.h"
#include "link/TIsoProtocol.h"
#include "passthru/TEncryption.h"
#include "platform/RuntimeFailure.h"
#include "session/TBrennikPacket.h"
#include "session/TBrennikProtocol.h"
#include "support/AsciiText.h"
#include "support/OstrandString.h"
#include "support/TFLClientLog.h"

namespace brennik {

namespace {

constexpr char kAck = 0x06;

constexpr const char* kKeyFile = "flkeyfile.txt";
constexpr const char* kSection = "ENCRYPTION";
constexpr size_t kExpiryDateLength = 8;

// Where the record goes in the device.
constexpr const char* kRecordFile = "flpkey.csv";
constexpr const char* kFolderOfP400 = "/home/usr1/flash/fernlatch";
constexpr const char* kGroupOfOthers = "setgroup.15";

constexpr int32_t kSha1 = 0;

struct KeyData {
    std::string strRsaKey;
    int32_t lIndex = 0;
    std::string strExpiryDate; ///< the content isn't looked at

    bool bValid() const {
        return !strRsaKey.empty() && lIndex >= 1 && strExpiryDate.size() == kExpiryDateLength;
    }
    std::string strFields() const {
        return strRsaKey + "," + ToDecimal(lIndex) + "," + strExpiryDate;
    }
};

KeyData ReadKeyData(const std::string& strFolder) {
    TTLIniFile oIniFile;
    oIniFile.strIniFileDir(strFolder);
    oIniFile.strIniFileName(kKeyFile);
    const auto read = [&](const char* strKey) {
        return oIniFile.GetINIString(kSection, strKey, "", kIniBufferSize);
    };
    return {read("RsaKey"), OstrandString::StrToLong(read("RsaKeyIndex")),
            read("RsaKeyExpiryDate")};
}

/// The hash binds the record to the device, whose PT id is hashed but not written.
std::string BuildRecord(const KeyData& keyData, const std::string& strPTID) {
    std::string strHash;
    TEncryption oEncryption;
    if (oEncryption.GenerateHash(kSha1, keyData.strFields() + "," + strPTID, strHash) != 0)
        throw RuntimeFailure(FailureKind::Internal);
    return keyData.strFields() + "," + strHash;
}

bool BeginsWithAck(const std::string& strReply) {
    // No reply is no value to test: the injection ends there, without a word.
    if (strReply.empty())
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    return strReply.front() == kAck;
}

} // namespace

/// One injection: sends packets to the device as a server would, and reads each answer by hand,
/// since the link acknowledges nothing here.
class TBrennikProtocol::KeyInjection {
  public:
    KeyInjection(TBrennikProtocol& oProtocol, TIsoProtocol& oDeviceLink, int32_t lCharTimeout)
        : oProtocol_(oProtocol), oDeviceLink_(oDeviceLink), lCharTimeout_(lCharTimeout) {}

    /// True when there is an outcome to tell; it is told by bFailed.
    bool Run(const std::string& strPlatformName, std::string strRecord) {
        const bool bP400 = UpperCase(strPlatformName) == "P400PLUS";
        std::string strWhere;
        std::string strClose;
        Expect(bP400 ? oPacket_.BuildSetDirectoryPacket(strWhere, kFolderOfP400)
                     : oPacket_.BuildOpenFilePacket(strWhere, kGroupOfOthers, false, 0, false));
        Expect(oPacket_.BuildCloseFilePacket(strClose));
        Exchange(strWhere);
        if (!BeginsWithAck(strReply_))
            return false;
        if (!bP400)
            Exchange(strClose);
        if (BeginsWithAck(strReply_)) // a refusal is told as a success: it is meant so
            SendRecord(std::move(strRecord), strClose);
        return true;
    }

    bool bFailed() const { return bFailed_; }

  private:
    void SendRecord(std::string strRecord, const std::string& strClose) {
        std::string strPacket;
        Expect(oPacket_.BuildOpenFilePacket(strPacket, kRecordFile, false,
                                            Narrow<int32_t>(strRecord.size()), true));
        Exchange(strPacket);
        if (bFailed_)
            return;
        if (strReply_.size() > 1) {
            const int32_t lPosition = oPacket_.ExtractResumePosition(strReply_);
            if (lPosition > 0 && static_cast<size_t>(lPosition) > strRecord.size()) {
                Exchange(strClose); // the device has it all
                return;
            }
            if (lPosition > 0)
                strRecord.erase(0, static_cast<size_t>(lPosition) - 1);
        }
        // Meant to bear the offset 0 also behind a resume.
        Expect(oPacket_.BuildWriteDataToFilePacket(strPacket, strRecord, 0));
        Exchange(strPacket);
        if (BeginsWithAck(strReply_))
            Exchange(strClose);
    }

    /// Sends a packet and reads its answer, which is empty when either fails.
    void Exchange(const std::string& strPacket) {
        strReply_.clear();
        if (oDeviceLink_.SendPacket(strPacket) != 0 ||
            oDeviceLink_.ReadArbitraryData(strReply_, lCharTimeout_, false) != 0) {
            oProtocol_.error_.CopyFrom(oDeviceLink_);
            bFailed_ = true;
            strReply_.clear();
        }
    }

    static void Expect(int32_t lStatus) {
        if (lStatus != 0)
            throw RuntimeFailure(FailureKind::Internal);
    }

    TBrennikProtocol& oProtocol_;
    TIsoProtocol& oDeviceLink_;
    int32_t lCharTimeout_;
    TBrennikPacket oPacket_;
    std::string strReply_;
    bool bFailed_ = false;
};

void TBrennikProtocol::InjectPublicKeyFile(TFLClientLog& oLog, const TBrennikClientConfig& oConfig,
                                           TIsoProtocol& oDeviceLink, const std::string& strPTID) {
    // Whatever else goes wrong ends it without a word, and without the flush.
    Quietly([&] {
        const KeyData keyData = ReadKeyData(oConfig.strPublickeyLocation());
        oLog.Logit("Starting public key injection process, PTID=" + strPTID, false);
        if (!keyData.bValid()) {
            oLog.Logit("Failed reading public key information from flkeyfile.txt [" +
                           oConfig.strPublickeyLocation() + "]",
                       false);
        } else {
            KeyInjection injection(*this, oDeviceLink, oConfig.lCharTimeout());
            if (injection.Run(oConfig.strPlatformName(), BuildRecord(keyData, strPTID)))
                oLog.Logit(injection.bFailed() ? "Failed injecting key file"
                                               : "Successfully injected key file",
                           false);
        }
        oDeviceLink.FlushBuffer();
    });
}

} // namespace brennik
