#include "tests/session/SessionWorld.h"

namespace brennik::session {

sim::ServiceScript LineSettled() {
    std::string strError;
    return sim::ServiceScript::Parse("at start pause 1\n", strError).value();
}

SessionTest::SessionTest(Over over)
    : peer(over == Over::Tcp ? host.network.AddPeer("10.0.0.1", 5000)
                             : host.comPorts.AddPeer(kComPort)) {
    if (over == Over::SerialLine) {
        config.lOperatingMode(1);
        host.comPorts.Line(kComPort).SetFarRate(kBaudRate);
    }
    config.iServerComPort(3);
    config.lServerBaudRate(kBaudRate);
    config.strServerParity("NONE");
    config.iServerDatabits(8);
    config.dServerStopBit(1);
    config.iServerFlowControl(0);
    host.files.MakeFolder("/srv");
    host.files.MakeFolder("/log");
    config.strWorkingFolder("/srv/pos");
    config.strLogFilePath("/log");
    config.strLogFileName("session.log");
    config.bLoggingEnabled(true);
    config.strPlatformName("VX520");
    config.strApplicationID("APP");
    config.strTerminalId("T1");
    config.strEpromID("EPROM");
    config.lBlockSize(1024);
    config.strPTid("PT1");
    config.lMemory(4096);
    config.strConfigTitle("CONFIG");
    config.strReleaseTitle("RELEASE");
    config.strServerIPAddress1("10.0.0.1");
    config.lServerPort1(5000);
    config.lServerConnectTimeout(5);
    config.lConnectAttempts(1);
    config.lReadPacketAttempts(1);
    config.lSendPacketAttempts(3);
    config.lCharTimeout(2);
    config.lReadPacketTimeout(3);
    Say({});
}

void SessionTest::Say(std::vector<std::string> payloads) {
    payloads_ = std::move(payloads);
    // A line is set a moment after it was opened; until then it would hear noise.
    peer.OnConnect = [this] { peer.PushAt(world::kMillisecond, kEnq); };
    peer.OnBytes = [this, nNext = size_t{0},
                    strHeard = std::string()](std::string_view strBytes) mutable {
        // The request, which a line brings byte by byte, is answered with ACK and the first
        // payload, each later ACK with the next.
        strHeard += strBytes;
        const size_t nEtx = strHeard.find(sim::kEtx);
        if (strHeard.front() == sim::kStx &&
            (nEtx == std::string::npos || nEtx + 3 != strHeard.size()))
            return;
        if (std::exchange(strHeard, {}) != kAck)
            peer.Push(kAck);
        if (nNext < payloads_.size()) {
            if (onPayload)
                onPayload(nNext);
            peer.Push(Frame(payloads_[nNext++]));
        }
    };
}

int32_t SessionTest::Run() {
    engine = std::make_unique<TBrennikProtocol>();
    if (onEngine)
        onEngine();
    const int32_t lResult = engine->DoBrennikProtocol(config, "C:\\config", 7);
    host.RunFor(world::kMillisecond); // what is still under way reaches the peer
    return lResult;
}

std::vector<std::string> SessionTest::Log() const {
    std::vector<std::string> lines;
    for (const std::string& strLine : host.files.Lines("/log/session.log")) {
        const size_t nTag = strLine.find("] ");
        lines.push_back(nTag == std::string::npos ? strLine : strLine.substr(nTag + 2));
    }
    return lines;
}

std::vector<std::string> SessionTest::Errors() const {
    std::vector<std::string> errors;
    for (const std::string& strLine : Log()) {
        if (strLine.rfind("ERROR  : ", 0) == 0)
            errors.push_back(strLine.substr(9));
    }
    return errors;
}

void SessionTest::ExpectFailure(int32_t lCode, const std::string& strText) {
    EXPECT_EQ(engine->lErrorCode(), lCode);
    EXPECT_EQ(engine->strErrorMessage(), strText);
    EXPECT_EQ(Errors(), std::vector<std::string>{"Error Code=" + std::to_string(lCode) +
                                                 ", Error Message=" + strText});
}

} // namespace brennik::session
