// The states of a run: what the first packet of a cycle makes of each state in which a cycle can
// begin, and what the end of a cycle makes of each in which it can end.
#include "passthru/PassThruRun.h"
#include "tests/passthru/PassThruWorld.h"

#include <gmock/gmock.h>

#include <ostream>
#include <tuple>

namespace brennik::passthru {
namespace {

using ::testing::Combine;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Values;

/// What a device says at the beginning of a cycle, and the state that it leads to.
struct Call {
    std::string strName;
    std::string strPacket; ///< empty for a device that says nothing
    bool bLocalList;       ///< the profile has one
    PassThruState lState;  ///< unless it says nothing
};

void PrintTo(const Call& call, std::ostream* stream) {
    *stream << call.strName;
}

const Call kCallEnquiry{"Enquiry", kEnquiry, false, PASSTHRU_ST_TMSENQUIRY};
const Call kCallApplication{"Application", DeviceRequest("XCDL", "F"), false,
                            PASSTHRU_ST_FULLTMSAPP};
const Call kCallLast{"LastApplication", DeviceRequest("XCDLF", "F"), false,
                     PASSTHRU_ST_LASTFULLTMSAPP};
const Call kCallFull{"Full", DeviceRequest("XDL", "F"), false, PASSTHRU_ST_FULLDOWNLOAD};
const Call kCallList{"LocalList", DeviceRequest("XDL", "F"), true, PASSTHRU_ST_DOWNLOAAPPCOMPLETE};
const Call kCallPartial{"Partial", DeviceRequest("XDL", "P"), false, PASSTHRU_ST_PARTIALDOWNLOAD};
const Call kCallOther{"Other", DeviceRequest("XUL", "F"), false, PASSTHRU_ST_PARTIALDOWNLOAD};
const Call kNoCall{"Nothing", "", false, PASSTHRU_ST_START};

bool bHeld(PassThruState lState) {
    return lState == PASSTHRU_ST_PARTIALDOWNLOAD || lState == PASSTHRU_ST_FULLDOWNLOAD ||
           lState == PASSTHRU_ST_LASTFULLTMSAPP;
}

/// The call of the cycle before, which leaves its state, and the one under test.
class PassThruFirstPacket : public PassThruTest,
                            public ::testing::WithParamInterface<std::tuple<Call, Call>> {
  protected:
    PassThruFirstPacket() {
        host.SetBudget(50000000);
        host.files.Put("/tms/download.txt", "a.txt\r\n");
        host.files.Put("/tms/a.txt", "text");
        device.Always("[]", "\x06");
        server.Always("[]", "\x06" + CrcFrame("S"));
        server.Always("[" + kEditedEnquiry + "]", "\x06" + CrcFrame(kAccepted));
        AnswerStatusQueries();
        std::deque<Saying> sayings;
        for (const Call& call : {std::get<0>(GetParam()), std::get<1>(GetParam())}) {
            if (!call.strPacket.empty()) {
                calls_.push_back(call);
                sayings.emplace_back(CrcFrame(call.strPacket));
            }
        }
        device.On("ENQ", sayings);
        device.onHeard = [this, n = size_t{0},
                          note = device.onHeard](const std::string& strText) mutable {
            note(strText);
            if (strText == "ENQ" && n < calls_.size())
                config.strTmsAppFolder(calls_[n++].bLocalList ? "/tms" : "");
        };
    }

  private:
    std::vector<Call> calls_;
};

TEST_P(PassThruFirstPacket, DecidesTheState) {
    const auto& [before, call] = GetParam();
    const bool bFirst = before.strPacket.empty();
    const bool bFailed = call.strPacket.empty();
    const PassThruState lState = bFailed ? before.lState : call.lState;
    const std::string strName = PassThruStateName(lState);
    if (bHeld(lState)) {
        EXPECT_EQ(Run(), 0);
        EXPECT_THAT(LogWith("[B]"),
                    ElementsAre("[B] State=" + strName + ", Exiting now as session is complete"));
    } else {
        EXPECT_EQ(Run(), 1);
        EXPECT_EQ(LogWith("[C]").at(bFirst ? 0 : 1), "[C] State=" + strName +
                                                         ", lTries=" + (bFirst ? "1" : "2") +
                                                         ", Waiting for terminal to reboot...");
        ExpectError(1000011, "Timed out reading ISO packet"); // of a cycle in which nobody calls
    }
    ExpectNothingOpen();
}

INSTANTIATE_TEST_SUITE_P(Behind, PassThruFirstPacket,
                         Combine(Values(kNoCall, kCallEnquiry, kCallApplication, kCallList),
                                 Values(kCallEnquiry, kCallApplication, kCallLast, kCallFull,
                                        kCallList, kCallPartial, kCallOther, kNoCall)),
                         [](const auto& tested) {
                             return std::get<0>(tested.param).strName + "_" +
                                    std::get<1>(tested.param).strName;
                         });

/// A session that the device holds when it has been told to download.
class PassThruExtraReboot : public PassThruTest, public ::testing::WithParamInterface<Call> {};

TEST_P(PassThruExtraReboot, BeginsAnewOnce) {
    const std::string strState = "State=" + PassThruStateName(GetParam().lState);
    AnswerStatusQueries();
    TellToDownload(GetParam().strPacket);
    server.Always("[]", "\x06" + CrcFrame("S"));
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(LogWith("State="),
                ElementsAre(strState,
                            "[A] " + strState + ", lTries=1, Waiting for terminal to reboot...",
                            strState, "[B] " + strState + ", Exiting now as session is complete"));
    EXPECT_EQ(nServerConnections, 2);
}

TEST_P(PassThruExtraReboot, LeavesTheStateOfABeginning) {
    AnswerStatusQueries();
    TellToDownload(GetParam().strPacket);
    server.Always("[]", "\x06" + CrcFrame("S"));
    device.onHeard = [this, note = device.onHeard](const std::string& strText) {
        note(strText);
        if (strText == "[S]") // it doesn't come back
            device.Always(std::string("[") + kDownloadCommand + "]", "");
    };
    host.SetBudget(50000000);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(LogWith("[C]").at(0),
              "[C] State=PASSTHRU_ST_START, lTries=2, Waiting for terminal to reboot...");
    EXPECT_THAT(LogWith("[B]"), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Behind, PassThruExtraReboot, Values(kCallPartial, kCallFull, kCallLast),
                         [](const auto& tested) { return tested.param.strName; });

} // namespace
} // namespace brennik::passthru
