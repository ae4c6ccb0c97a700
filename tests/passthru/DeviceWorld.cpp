#include "tests/passthru/DeviceWorld.h"

#include <algorithm>
#include <utility>

namespace brennik::passthru {

namespace {

const std::string kPump = "pump";
const std::string kRead = "Read 1";

Device& PlugDevice(world::SimHost& host) {
    auto made = std::make_unique<Device>(host.timeline);
    Device& device = *made;
    host.comPorts.AddLine(kComPort).Plug(std::move(made));
    return device;
}

std::string Behind(const std::string& strText, const std::string& strMark) {
    const size_t nMark = strText.find(strMark);
    return nMark == std::string::npos ? strText : strText.substr(nMark + strMark.size());
}

} // namespace

std::string Request(const std::string& strKeyword, const std::string& strKind,
                    const std::string& strBlockSize) {
    return "VFI,VX520," + strKeyword + "," + strKind + ",DAPP,DT1,EPROM," + strBlockSize +
           ",4096,DPT";
}

bool RateTellingPorts::SetState(int32_t hPort, const DCB& dcb) {
    rates.push_back({host_.Now(), dcb.BaudRate});
    const size_t nBefore = host_.ledger.trace.size();
    const bool bSet = host_.comPorts.SetState(hPort, dcb);
    if (host_.ledger.trace.size() > nBefore)
        host_.ledger.trace.at(nBefore) += " " + std::to_string(dcb.BaudRate);
    return bSet;
}

DeviceTest::DeviceTest()
    : device(PlugDevice(host)), swapped_(world::Swapped(host.TheHost(), ports)) {
    Line().SetFarRate(19200);
    host.files.MakeFolder("/log");
    host.files.Put(kConfigFile, "[PROFILE_7]\r\nProfileName=Shop\r\n");
    config.iClientComPort(2);
    config.lClientBaudRate(19200);
    config.strClientParity("NONE");
    config.iClientDatabits(8);
    config.dClientStopBit(1);
    config.iClientFlowControl(0);
    config.bAutoBaud(true);
    config.strPlatformName("VX520");
    config.lConnectAttempts(1);
    config.lReadPacketAttempts(1);
    config.lSendPacketAttempts(3);
    config.lCharTimeout(2);
    config.lReadPacketTimeout(3);
    log.InitialiseLogging("/log", "device.log", true, false, false);
}

void DeviceTest::Connect() {
    TBrennikProtocolTestAccess::LoadConnectionInfo(config, connection, false);
    ASSERT_EQ(channel->Connect(connection, log), 0);
    ASSERT_EQ(link.InitialiseObject(*channel, log, 2, config.lCharTimeout(),
                                    config.lReadPacketTimeout(), config.lCharTimeout(), 2,
                                    config.lReadPacketAttempts(), config.lSendPacketAttempts(),
                                    false, false),
              0);
}

void DeviceTest::StartAt(int32_t lHour, int32_t lMinute, int32_t lSecond, Microseconds more) {
    host.clock.SetTimeOfDay(((lHour * 60 + lMinute) * 60 + lSecond) * kSecond + more);
}

int32_t DeviceTest::Handshake() {
    const int32_t lStatus =
        access.GetFirstPacketFromDevice(config, *channel, link, connection, kConfigFolder,
                                        kProfileId, log, strPacket, strPTID, lState);
    return lStatus;
}

int32_t DeviceTest::HandshakeForUpload() {
    return access.GetFirstPacketFromDeviceForUpload(config, link, strPacket, strPTID);
}

Lines DeviceTest::Log() const {
    Lines lines;
    for (const std::string& strLine : WholeLog())
        lines.push_back(Behind(Behind(strLine, "] "), "INFO   : "));
    return lines;
}

Lines DeviceTest::RateLines() const {
    Lines lines;
    for (const std::string& strLine : Log()) {
        if (strLine.starts_with("BaudRate set @ "))
            lines.push_back(strLine);
        else if (strLine.starts_with("Connected to "))
            lines.push_back("open " +
                            Behind(strLine.substr(0, strLine.find(", Parity")), "BaudRate="));
        else if (strLine == "Connection Closed")
            lines.push_back("close");
    }
    return lines;
}

void DeviceTest::RecordSteps() {
    host.RecordCalls();
    host.ledger.trace.clear();
    nLinesBefore_ = WholeLog().size();
    if (!std::exchange(bPumpsRecorded_, true)) {
        host.OnPump([this] { host.ledger.Record(kPump); });
    }
}

Lines DeviceTest::Steps() const {
    const Lines lines = Log();
    size_t nLine = nLinesBefore_;
    Lines steps;
    for (std::string strStep : host.ledger.trace) {
        if (strStep.starts_with("AppendLine "))
            strStep = "log " + lines.at(nLine++);
        if (strStep == kRead && !steps.empty() && steps.back() == kPump)
            steps.pop_back();
        if (strStep != kRead || steps.empty() || steps.back() != kRead)
            steps.push_back(std::move(strStep));
    }
    return steps;
}

void DeviceTest::ExpectError(int32_t lCode, const std::string& strText) const {
    EXPECT_EQ(engine.lErrorCode(), lCode);
    EXPECT_EQ(engine.strErrorMessage(), strText);
}

void DeviceTest::ExpectLink(int32_t lChecksumType, bool bAckPackets) const {
    EXPECT_EQ(link.lChecksumType(), lChecksumType);
    EXPECT_EQ(link.bAckPackets(), bAckPackets);
}

} // namespace brennik::passthru
