// The device side of a run in the simulated host: a profile, a serial line with a device at its
// far end, the channel, the link and the engine over it, and the session log.
#pragma once

#include "config/TBrennikClientConfig.h"
#include "link/TConnectionInfo.h"
#include "link/TIsoProtocol.h"
#include "link/TSerialComms.h"
#include "session/TBrennikProtocol.h"
#include "support/TFLClientLog.h"
#include "tests/passthru/Device.h"
#include "tests/session/SessionWorld.h"
#include "tests/world/SimHost.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace brennik::passthru {

using world::kMillisecond;
using world::kSecond;
using world::Op;
using Lines = std::vector<std::string>;

inline constexpr const char* kComPort = "COM2";
inline constexpr int32_t kProfileId = 7;
inline constexpr const char* kConfigFolder = "C:\\config";
inline constexpr const char* kConfigFile = "/config/BrennikClient.ini";
inline constexpr const char* kLogFile = "/log/device.log";

inline const std::string kStx = "\x02";
inline const std::string kEnq = "\x05";
inline const std::string kAck = "\x06";
inline const std::string kNak = "\x15";
inline const std::string kSyn = "\x16";

inline constexpr const char* kTimedOut = "Timed out reading ISO packet";
inline constexpr const char* kRefused = "Quayminder does not authorise upload of files";

/// The request of a device: ten fields, without titles.
std::string Request(const std::string& strKeyword, const std::string& strKind,
                    const std::string& strBlockSize = "1024");

/// The ports of the host, which also keep the rates that are set and add them to the trace.
class RateTellingPorts : public ComPorts {
  public:
    explicit RateTellingPorts(world::SimHost& host) : host_(host) {}
    int32_t LastError() override { return host_.comPorts.LastError(); }
    int32_t Open(const std::string& strPort) override { return host_.comPorts.Open(strPort); }
    bool Close(int32_t hPort) override { return host_.comPorts.Close(hPort); }
    bool Read(int32_t hPort, char* buffer, int32_t lCount, int32_t& lRead) override {
        return host_.comPorts.Read(hPort, buffer, lCount, lRead);
    }
    bool Write(int32_t hPort, std::string_view strData, int32_t& lWritten) override {
        return host_.comPorts.Write(hPort, strData, lWritten);
    }
    void Purge(int32_t hPort, int32_t lFlags) override { host_.comPorts.Purge(hPort, lFlags); }
    bool GetState(int32_t hPort, DCB& dcb) override { return host_.comPorts.GetState(hPort, dcb); }
    bool SetState(int32_t hPort, const DCB& dcb) override;
    bool SetTimeouts(int32_t hPort, const CommTimeouts& timeouts) override {
        return host_.comPorts.SetTimeouts(hPort, timeouts);
    }

    /// Each setting of the line: when, and to what rate.
    struct RateSet {
        Microseconds moment;
        int32_t lBaudRate;
    };
    std::vector<RateSet> rates;

  private:
    world::SimHost& host_;
};

class DeviceTest : public world::WorldTest {
  protected:
    /// The device speaks at 19200, which is also the rate of the profile; the port is closed.
    DeviceTest();

    world::SimLine& Line() { return host.comPorts.Line(kComPort); }

    /// Opens the line with the profile's values and sets the link up, as each cycle begins.
    void Connect();
    /// Makes it that moment of the day, to the microsecond.
    void StartAt(int32_t lHour, int32_t lMinute, int32_t lSecond, Microseconds more = 0);

    /// The handshake on an open line: its status. Packet, PT id and state stand below.
    int32_t Handshake();
    int32_t HandshakeForUpload();

    /// The log without dates and tags; "INFO   : " is left out.
    Lines Log() const;
    /// Log lines that tell a rate or the opening and closing of the line, shortened to "BaudRate
    /// set @ 19200", "open 19200" and "close".
    Lines RateLines() const;
    /// The log as the file has it.
    Lines WholeLog() const { return host.files.Lines(kLogFile); }

    /// Forgets the calls so far and records from here on, pumped events too.
    void RecordSteps();
    /// The calls since RecordSteps as the trace has them, but log lines as "log TEXT" and settings
    /// as "SetState 19200". Reads are told once for a run of them, without the pump of each.
    Lines Steps() const;

    void ExpectError(int32_t lCode, const std::string& strText) const;
    /// The four values of the link that the operations on devices change and give back.
    void ExpectLink(int32_t lChecksumType, bool bAckPackets) const;

    std::string Ini() const { return host.files.Get(kConfigFile).value_or("no file"); }
    std::string VfiCopy() const {
        return host.files.Get("/opt/brennik/vfi.txt").value_or("no file");
    }

    TBrennikClientConfig config;
    TConnectionInfo connection;
    TFLClientLog log;
    TIsoProtocol link;
    std::unique_ptr<TSerialComms> channel = std::make_unique<TSerialComms>();
    TBrennikProtocol engine;
    TBrennikProtocolTestAccess access{engine};
    Device& device;

    RateTellingPorts ports{host};

    std::string strPacket = "old packet";
    std::string strPTID = "old id";
    PassThruState lState = PASSTHRU_ST_START;

  private:
    Host swapped_;
    ScopedHost scoped_{swapped_};
    size_t nLinesBefore_ = 0;
    bool bPumpsRecorded_ = false;
};

} // namespace brennik::passthru
