// The reader of frames: any bytes, in any cutting, on any kind of check.
#include "fuzz/FuzzHost.h"
#include "fuzz/Require.h"
#include "link/TCommsChannel.h"
#include "link/TIsoProtocol.h"
#include "support/TFLClientLog.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using namespace brennik;

// Delivers the input in pieces whose lengths are the input's own bytes.
class PiecesChannel : public TCommsChannel {
  public:
    explicit PiecesChannel(std::string_view strInput) : strInput_(strInput) {}

    int32_t Connect(TConnectionInfo&, TFLClientLog&) override { return 0; }
    int32_t Disconnect() override { return 0; }
    int32_t WriteData(std::string_view) override { return 0; }
    int32_t ReadData(std::string& strData) override { return Deliver(strData, NextLength()); }
    int32_t ReadCharacter(std::string& strData) override { return Deliver(strData, 1); }
    int32_t lErrorCode() const override { return 0; }
    const std::string& strErrorMessage() const override { return strEmpty_; }
    const std::string& strConnectionData() const override { return strEmpty_; }

  private:
    size_t NextLength() {
        if (strInput_.empty())
            return 0;
        const auto nLength = static_cast<size_t>(static_cast<unsigned char>(strInput_.front()));
        strInput_.remove_prefix(1);
        return nLength;
    }
    int32_t Deliver(std::string& strData, size_t nLength) {
        const std::string_view strPiece = strInput_.substr(0, nLength);
        strData.assign(strPiece);
        strInput_.remove_prefix(strPiece.size());
        return 0;
    }

    std::string_view strInput_;
    std::string strEmpty_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::FuzzHost host;
    host.clock.Restart();
    if (size < 2)
        return 0;
    PiecesChannel channel({reinterpret_cast<const char*>(data) + 2, size - 2});
    TFLClientLog log;
    log.InitialiseLogging("", "", false, true, true);
    TIsoProtocol link;
    const bool bAck = (data[1] & 1) != 0;
    fuzz::Require(link.InitialiseObject(channel, log, data[0] % 4, 1, 1, 1, 2, data[1] % 4, 2,
                                        false, bAck) == 0,
                  "a link can be set up");
    std::string strPayload;
    const int32_t lRead = link.ReadPacket(strPayload, "");
    fuzz::Require(lRead == 0 || lRead == 1, "a read ends in success or failure");
    fuzz::Require(strPayload.size() <= size, "no payload is longer than what arrived");
    if (lRead != 0)
        fuzz::Require(link.lErrorCode() == 1000011, "a failed read has run out of time");
    static_cast<void>(link.SendPacket(strPayload));
    static_cast<void>(link.ReadArbitraryData(strPayload, 1, !bAck));
    static_cast<void>(link.WaitForEnq());
    return 0;
}
