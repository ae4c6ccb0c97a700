#include "tests/passthru/PassThruWorld.h"

#include "passthru/PassThruRun.h"

#include <utility>

namespace brennik::passthru {

namespace {

Device& PlugDevice(world::SimHost& host) {
    auto made = std::make_unique<Device>(host.timeline);
    Device& device = *made;
    host.comPorts.AddLine("COM2").Plug(std::move(made));
    return device;
}

std::string Behind(const std::string& strText, const std::string& strMark) {
    const size_t nMark = strText.find(strMark);
    return nMark == std::string::npos ? strText : strText.substr(nMark + strMark.size());
}

} // namespace

std::string DeviceRequest(const std::string& strKeyword, const std::string& strKind) {
    return "VFI,VX520," + strKeyword + "," + strKind + ",DAPP,DTID,EPROM,1024,4096,PT7,,";
}

std::string EditedRequest(const std::string& strKeyword, const std::string& strKind) {
    // A partial request keeps the application that the device has.
    const std::string strApplication = strKind == "P" ? "DAPP" : "APP";
    return "VFI,VX520," + strKeyword + "," + strKind + "," + strApplication +
           ",T1,EPROM,1024,4096,PT7,REL,CONF";
}

/// One connection to the server, which lives longer.
class PassThruTest::ServerEnd : public sim::FarEnd {
  public:
    explicit ServerEnd(PassThruTest& test) : test_(test) {}
    void Connected(sim::Wire& wire, sim::Microseconds now) override {
        ++test_.nServerConnections;
        test_.server.Connected(wire, now);
        test_.server.Say("\x05");
    }
    void Received(sim::Wire& wire, sim::Microseconds now, std::string_view strBytes) override {
        test_.server.Received(wire, now, strBytes);
    }
    void Elapsed(sim::Wire& wire, sim::Microseconds now) override {
        test_.server.Elapsed(wire, now);
    }
    void Disconnected(sim::Microseconds) override {}
    std::optional<sim::Microseconds> NextDeadline() const override {
        return test_.server.NextDeadline();
    }

  private:
    PassThruTest& test_;
};

PassThruTest::PassThruTest() : device(PlugDevice(host)) {
    Line().SetFarRate(19200);
    host.network.Listen("10.0.0.1", 5000, [this] { return std::make_unique<ServerEnd>(*this); });
    host.files.MakeFolder("/srv");
    host.files.Put("/srv/pos/keep.txt", "kept");
    host.files.MakeFolder("/log");
    host.files.Put("/config/BrennikClient.ini", "[PROFILE_7]\r\nProfileName=Shop\r\n");
    config.lOperatingMode(2);
    config.strWorkingFolder("/srv/pos");
    config.strLogFilePath("/log");
    config.strLogFileName("run.log");
    config.bLoggingEnabled(true);
    config.strPlatformName("VX520");
    config.strApplicationID("APP");
    config.strTerminalId("T1");
    config.strReleaseTitle("REL");
    config.strConfigTitle("CONF");
    config.strServerIPAddress1("10.0.0.1");
    config.lServerPort1(5000);
    config.lServerConnectTimeout(5);
    config.iClientComPort(2);
    config.lClientBaudRate(19200);
    config.strClientParity("NONE");
    config.iClientDatabits(8);
    config.dClientStopBit(1);
    config.lConnectAttempts(1);
    config.lReadPacketAttempts(1);
    config.lSendPacketAttempts(3);
    config.lCharTimeout(2);
    config.lReadPacketTimeout(3);
    const auto note = [this](const std::string& strHeard) {
        if (wires.empty() || wires.back() != strHeard || strHeard != "D:ENQ")
            wires.push_back(strHeard);
    };
    device.onHeard = [note](const std::string& strText) { note("D:" + strText); };
    server.onHeard = [note](const std::string& strText) { note("S:" + strText); };
}

void PassThruTest::Ask(const std::string& strRequest) {
    device.On("ENQ", {CrcFrame(strRequest)});
    device.Always("[]", "\x06");
}

void PassThruTest::Serve(const std::string& strRequest, const std::vector<std::string>& payloads) {
    std::deque<Saying> frames;
    for (const std::string& strPayload : payloads)
        frames.emplace_back(CrcFrame(strPayload));
    if (!frames.empty()) {
        server.On("[" + strRequest + "]", {Saying("\x06" + frames.front().strBytes)});
        frames.pop_front();
    } else {
        server.On("[" + strRequest + "]", {Saying("\x06")});
    }
    server.On("ACK", frames);
}

void PassThruTest::Download(const std::string& strKeyword, const std::string& strKind,
                            const std::string& strEnd) {
    Ask(DeviceRequest(strKeyword, strKind));
    Serve(EditedRequest(strKeyword == "XCDLF" ? "XCDL" : strKeyword, strKind),
          {session::Open("a.bin", 4), session::Write("data"), "C", strEnd});
}

void PassThruTest::Upload(const std::vector<std::string>& payloads) {
    config.lPassThruType(1);
    device.ExpectLrc(true);
    device.On("[3.9,3,U,Q,0,0,,,U,0]", {Saying("\x06" + LrcFrame("3.9,1,U,Q,0,0,,,A"))});
    std::deque<Saying> frames{CrcFrame(DeviceRequest("XUL", "F"))};
    for (const std::string& strPayload : payloads)
        frames.emplace_back(CrcFrame(strPayload));
    device.On("ACK", frames);
    server.Always("[]", "\x06");
}

void PassThruTest::TellToDownload(const std::string& strRequest) {
    config.bPedDownload(true);
    device.ExpectLrc(true);
    const std::string strCommand = std::string("[") + kDownloadCommand + "]";
    device.Always(strCommand, "\x06" + LrcFrame("3.9,1,T,Q,0,0,,,A"));
    device.Always("[]", "\x06");
    device.onHeard = [this, strCommand, strRequest, bAgreed = false,
                      note = device.onHeard](const std::string& strText) mutable {
        note(strText);
        // The ACK of its agreement is followed by its request, that of a status reply by nothing.
        if (strText == "ACK" && bAgreed) {
            device.ExpectLrc(false);
            device.Say(CrcFrame(strRequest));
        }
        if (strText == "ACK" || strText == strCommand)
            bAgreed = strText == strCommand;
    };
}

void PassThruTest::ForceFullDownload(const std::string& strReply) {
    config.lPassThruType(2);
    device.ExpectLrc(true);
    device.On("[3.9,2,U,Q,0,0,,,F,]", {Saying("\x06" + LrcFrame(strReply))});
    device.On("ACK", {CrcFrame(DeviceRequest("XDL", "F"))});
    device.onHeard = [this, note = device.onHeard](const std::string& strText) {
        note(strText);
        if (strText == "ACK")
            device.ExpectLrc(false);
    };
    device.Always("[]", "\x06");
}

void PassThruTest::AskForLocalList() {
    config.strTmsAppFolder("/tms");
    host.files.Put("/tms/download.txt", "a.txt\r\n");
    host.files.Put("/tms/a.txt", "text");
    Ask(DeviceRequest("XDL", "F"));
}

void PassThruTest::Enquire(const std::string& strReply) {
    device.On("ENQ", {CrcFrame(kEnquiry)});
    server.On("[" + kEditedEnquiry + "]", {Saying("\x06" + CrcFrame(strReply))});
}

void PassThruTest::FallBack() {
    Enquire(kRefused);
    device.On("[" + kRefused + "]", {Saying("\x06" + CrcFrame(DeviceRequest("XDL", "P")))});
    device.Always("[]", "\x06");
}

void PassThruTest::CancelAt(const std::string& strHeard) {
    const auto cancel = [this, strHeard](Device& end, const std::string& strSide) {
        end.onHeard = [this, strSide, strHeard, note = end.onHeard](const std::string& strText) {
            note(strText);
            if (strSide + strText == strHeard)
                engine->bCancelComms(true);
        };
    };
    cancel(device, "D:");
    cancel(server, "S:");
}

void PassThruTest::AnswerStatusQueries() {
    device.onHeard = [this, note = device.onHeard](const std::string& strText) {
        note(strText);
        if (strText == "[S]")
            device.ExpectLrc(true);
        else if (strText == "ENQ")
            device.ExpectLrc(false);
    };
    device.Always(std::string("[") + kStatusQuery + "]", "\x06" + LrcFrame(kReadyReply));
}

int32_t PassThruTest::Run() {
    engine = std::make_unique<TBrennikProtocol>();
    return RunAgain();
}

int32_t PassThruTest::RunAgain() {
    const int32_t lResult = engine->DoBrennikProtocol(config, "C:\\config", 7);
    host.RunFor(10 * kMillisecond); // what is still under way arrives
    EXPECT_TRUE(LogWith(PassThruStateName(PASSTHRU_ST_ERROR)).empty());
    return lResult;
}

Lines PassThruTest::Log() const {
    Lines lines;
    for (const std::string& strLine : host.files.Lines("/log/run.log"))
        lines.push_back(Behind(Behind(strLine, "] "), "INFO   : "));
    return lines;
}

Lines PassThruTest::LogWith(const std::string& strPart) const {
    Lines lines;
    for (const std::string& strLine : Log()) {
        if (strLine.find(strPart) != std::string::npos)
            lines.push_back(strLine);
    }
    return lines;
}

void PassThruTest::ExpectError(int32_t lCode, const std::string& strText) const {
    EXPECT_EQ(engine->lErrorCode(), lCode);
    EXPECT_EQ(engine->strErrorMessage(), strText);
}

void PassThruTest::ExpectNothingOpen() const {
    EXPECT_EQ(host.comPorts.nOpenPorts(), 0);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

} // namespace brennik::passthru
