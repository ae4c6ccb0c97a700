// The steps of a relay that fail, seen closely: whose text is taken when both links have one, and
// how often events are pumped.
#include "platform/RuntimeFailure.h"
#include "tests/passthru/PassThruWorld.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace brennik::passthru {
namespace {

using session::Open;
using ::testing::ElementsAre;

constexpr int32_t kLineCode = 5;
constexpr const char* kLineWrite = "Failed writing data to the opened port";
constexpr const char* kTimedOut = "Timed out reading ISO packet";

class RelayFailures : public PassThruTest {
  protected:
    RelayFailures() {
        host.OnPump([this] {
            host.ledger.Record("Pump " + engine->strErrorMessage());
            if (nThrowingPump_ > 0 && --nThrowingPump_ == 0)
                throw RuntimeFailure(FailureKind::Internal);
        });
        host.RecordCalls();
    }

    /// One read on the line fails while the device's agreement to an upload is read, and is
    /// repeated with success: the device's link keeps that text.
    void LeaveATextOnTheDevicesLink() {
        const std::string strCommand = "[3.9,3,U,Q,0,0,,,U,0]";
        device.On(strCommand, {"\x06"});
        OnHeard(device, strCommand, [this] {
            device.Say(Saying(LrcFrame("3.9,1,U,Q,0,0,,,A"), 100 * kMillisecond));
            host.At(50 * kMillisecond,
                    [this] { host.FailNext(Op::ComRead, {.lLastError = kLineCode}); });
        });
    }
    /// The same for the server's link and its reply to an enquiry. No failure of the connection
    /// ends a read on it; an event that fails while it waits does.
    void LeaveATextOnTheServersLink(const std::string& strReply) {
        server.On("[" + kEditedEnquiry + "]", {"\x06"});
        OnHeard(server, "[" + kEditedEnquiry + "]", [this, strReply] {
            server.Say(Saying(CrcFrame(strReply), 100 * kMillisecond));
            // The first pump behind that is the link's own, the second that of the channel.
            host.At(50 * kMillisecond, [this] { nThrowingPump_ = 2; });
        });
    }
    /// An upload in the second cycle, the first being an accepted enquiry. The device sends that
    /// frame, if any, behind the ACK of its request.
    void UploadBehindAnEnquiry(const std::string& strPayload) {
        config.lPassThruType(3);
        device.On("ENQ", {CrcFrame(kEnquiry), CrcFrame(DeviceRequest("XDL", "P"))});
        device.Always("[]", "\x06");
        server.Always("[]", "\x06");
        LeaveATextOnTheServersLink(kAccepted);
        OnHeard(server, "[" + EditedRequest("XDL", "P") + "]", [this, strPayload] {
            if (!strPayload.empty())
                device.On("ACK", {CrcFrame(strPayload)});
        });
    }
    static void OnHeard(Device& end, const std::string& strWhat, std::function<void()> act) {
        end.onHeard = [strWhat, act = std::move(act),
                       note = end.onHeard](const std::string& strText) {
            note(strText);
            if (strText == strWhat)
                act();
        };
    }

    /// The failure of the run, with one pump behind it.
    void ExpectFailure(int32_t lCode, const std::string& strText) const {
        ExpectError(lCode, strText);
        EXPECT_EQ(LogWith("ERROR").size(), 1u);
        EXPECT_EQ(std::ranges::count(host.ledger.trace, "Pump " + strText), 1);
    }
    /// The notes of that kind behind the last byte that went to the server.
    Lines BehindTheLastSend(const std::string& strKind) const {
        const std::vector<std::string>& trace = host.ledger.trace;
        const auto last =
            std::find_if(trace.rbegin(), trace.rend(),
                         [](const std::string& strCall) { return strCall.starts_with("Send "); });
        Lines notes;
        std::copy_if(last.base(), trace.end(), std::back_inserter(notes),
                     [&](const std::string& strCall) { return strCall.starts_with(strKind); });
        return notes;
    }

  private:
    int32_t nThrowingPump_ = 0;
};

// ---- An upload takes the text of the other link, which has an older one here.

constexpr const char* kOldOfDevice = "Failed reading data from the opened port";
constexpr const char* kOldOfServer = "TSocketComms.ReadData() Failed - Internal error";

TEST_F(RelayFailures, TheRigLeavesTheDevicesLinkATextThatTheRunDoesNotTake) {
    Upload({"S"});
    LeaveATextOnTheDevicesLink();
    EXPECT_EQ(Run(), 0);
    ExpectError(0, "");
}

TEST_F(RelayFailures, TheRigLeavesTheServersLinkATextThatTheRunDoesNotTake) {
    UploadBehindAnEnquiry("S");
    EXPECT_EQ(Run(), 0);
    ExpectError(0, "");
}

TEST_F(RelayFailures, AFrameThatTheDeviceDoesNotSendTakesTheServersText) {
    UploadBehindAnEnquiry("");
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000000, kOldOfServer);
    EXPECT_EQ(wires.back(), "D:ACK");
}

TEST_F(RelayFailures, AFrameThatTheServerDoesNotGetTakesTheDevicesText) {
    Upload({"MHello", "S"});
    LeaveATextOnTheDevicesLink();
    host.FailNext(Op::Send, {.lLastError = 10054}, 1, 1); // behind the request
    EXPECT_EQ(Run(), 1);
    ExpectFailure(kLineCode, kOldOfDevice);
    EXPECT_EQ(server.Count("[MHello]"), 0);
}

TEST_F(RelayFailures, AnAnswerThatTheServerDoesNotGiveTakesTheDevicesText) {
    Upload({"MHello", "S"});
    LeaveATextOnTheDevicesLink();
    OnHeard(server, "[MHello]", [this] {
        server.Always("[]", ""); // and noise, which is no answer
        for (int32_t lSeconds = 0; lSeconds < 5; ++lSeconds)
            server.Say(Saying("x", lSeconds * kSecond + kMillisecond));
    });
    EXPECT_EQ(Run(), 1);
    ExpectFailure(kLineCode, kOldOfDevice);
    EXPECT_EQ(wires.back(), "S:[MHello]");
}

TEST_F(RelayFailures, AnAnswerThatTheDeviceDoesNotGetTakesTheServersText) {
    UploadBehindAnEnquiry("MHello");
    OnHeard(server, "[MHello]", [this] { host.FailNext(Op::ComWrite, {.lLastError = kLineCode}); });
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000000, kOldOfServer);
    EXPECT_EQ(wires.back(), "S:[MHello]");
}

TEST_F(RelayFailures, ARequestThatDoesNotFollowARefusalTakesTheServersOldText) {
    Enquire(kRefused);
    device.Always("[]", "\x06");
    LeaveATextOnTheServersLink(kRefused);
    EXPECT_EQ(Run(), 1);
    ExpectError(1000000, kOldOfServer);
    EXPECT_EQ(wires.back(), "D:[" + kRefused + "]");
}

// ---- One pump behind a step of a download that failed.

TEST_F(RelayFailures, AFrameThatTheServerDoesNotSendPumpsOnce) {
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {});
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000011, kTimedOut);
}

TEST_F(RelayFailures, AFrameThatTheDeviceDoesNotGetPumpsOnce) {
    Download("XDL", "P");
    host.FailNext(Op::ComWrite, {.lLastError = kLineCode}, 1, 2); // behind poll and verdict
    EXPECT_EQ(Run(), 1);
    ExpectFailure(kLineCode, kLineWrite);
}

TEST_F(RelayFailures, AnAnswerThatTheDeviceDoesNotGivePumpsOnce) {
    Download("XDL", "P");
    device.On("[" + Open("a.bin", 4) + "]", {""});
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000011, kTimedOut);
}

TEST_F(RelayFailures, AnAnswerThatTheServerDoesNotGetPumpsOnce) {
    Download("XDL", "P");
    host.FailNext(Op::Send, {.lLastError = 10054}, 1, 1); // behind the request
    EXPECT_EQ(Run(), 1);
    ExpectFailure(-1, "Failed sending data to socket Data=\x06");
}

TEST_F(RelayFailures, BehindARefusedEnquiryAFailedStepPumpsOnceToo) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {"\x06"});
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000011, kTimedOut);
}

// ---- Three pumps behind a frame that was passed on.

TEST_F(RelayFailures, TheLastFrameOfADownloadPumpsThrice) {
    Download("XDL", "P");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(BehindTheLastSend("Pump "), ElementsAre("Pump ", "Pump ", "Pump "));
}

TEST_F(RelayFailures, TheServersRefusalIsToldBetweenTheSecondAndTheThird) {
    Download("XDL", "P", "U");
    EXPECT_EQ(Run(), 1);
    EXPECT_THAT(BehindTheLastSend("Pump "),
                ElementsAre("Pump ", "Pump ", "Pump Brennik download failed."));
}

TEST_F(RelayFailures, TheFirstOfThemKnowsTheFile) {
    host.OnPump([this] { host.ledger.Record("Name " + engine->strDownloadFileName()); });
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {Open("a.bin", 4)});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(BehindTheLastSend("Name ").at(0), "Name a.bin");
}

} // namespace
} // namespace brennik::passthru
