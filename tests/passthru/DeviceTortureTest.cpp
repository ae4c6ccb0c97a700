// Conversations with a device over a wire that splits, delays, drops, doubles and flips bytes by
// chance, in both directions. The seed is printed and replays.

#include "tests/passthru/DeviceWorld.h"
#include "tests/world/SeededMangler.h"
#include "tests/world/TestOptions.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace brennik::passthru {
namespace {

using world::MangleRates;
using world::SeededNumbers;

/// One conversation, in a host of its own, over a wire drawn from the seed; nWorst is that of the
/// rates.
class Ordeal : public DeviceTest {
  public:
    void TestBody() override {}

    Ordeal(uint64_t nSeed, uint64_t nWorst) : numbers(nSeed * 7919) {
        bHarm_ = !numbers.Happens(2000);
        const MangleRates toDevice = world::DrawnRates(numbers, bHarm_, nWorst);
        const MangleRates toUs = world::DrawnRates(numbers, bHarm_, nWorst);
        auto mangler = std::make_unique<world::SeededMangler>(nSeed, toDevice, toUs);
        mangler_ = mangler.get();
        Line().SetMangler(std::move(mangler));
        log.InitialiseLogging("/log", "device.log", true, true, true);
    }

    /// Nothing was lost or changed, and nothing came too late for a time limit.
    bool bUnharmed() const { return !bHarm_; }
    int64_t nHarmed() const { return mangler_->nHarmed(); }

    void ExpectNothingLeft() {
        ASSERT_FALSE(host.BudgetExceeded());
        ASSERT_EQ(host.files.nOpenStreams(), 0);
        channel.reset();
        ASSERT_EQ(host.comPorts.nOpenPorts(), 0);
    }

    SeededNumbers numbers;

  private:
    bool bHarm_ = false;
    world::SeededMangler* mangler_ = nullptr;
};

/// A hunt for a device at one of both rates, which hears what it hears, says SYN now and then, and
/// answers noise or leaves it.
class Hunt : public Ordeal {
  public:
    explicit Hunt(uint64_t nSeed) : Ordeal(nSeed, 1500) {
        lRate = numbers.Happens(5000) ? 19200 : 115200;
        Line().SetFarRate(lRate);
        config.lClientBaudRate(numbers.Happens(3000) ? 9600 : 19200);
        config.strTerminalId("T9");
        config.bPedDownload(numbers.Happens(3000));
        if (numbers.Happens(5000))
            device.Always("noise", kNak);
        device.On("ENQ", std::deque<Saying>(numbers.Below(5), Saying(kSyn)));
        device.Always("ENQ", CrcFrame(strRequest));
    }

    void Run() {
        Connect();
        const Microseconds begin = host.Now();
        const int32_t lStatus = Handshake();
        // Four periods, one command, one frame that is never completed.
        ASSERT_LT(host.Now() - begin, 100 * kSecond);
        ASSERT_NO_FATAL_FAILURE(ExpectNothingLeft());
        bGood = lStatus == 0;
        if (bUnharmed()) {
            ASSERT_EQ(lStatus, 0);
            ASSERT_EQ(strPacket, "VFI,D,XCDL,F,A,T9,E,1,2,P1");
            ASSERT_EQ(strPTID, "P1");
            ASSERT_EQ(lState, PASSTHRU_ST_LASTFULLTMSAPP);
            ASSERT_EQ(connection.lBaudRate(), lRate);
        } else if (!bGood) {
            ASSERT_NE(engine.lErrorCode(), 0);
            ASSERT_NE(engine.strErrorMessage(), "");
            ASSERT_EQ(lState, PASSTHRU_ST_START);
        }
        // What worked is kept, whatever the packet was.
        ASSERT_EQ(host.profileStrings.writes.size(), bGood ? 1u : 0u);
        for (const world::ProfileWrite& write : host.profileStrings.writes)
            ASSERT_EQ(write.strValue, std::to_string(connection.lBaudRate()));
    }

    const std::string strRequest = "VFI,D,XCDLF,F,A,T,E,1,2,P1";
    int32_t lRate = 0;
    bool bGood = false;
    bool bBeyondTheCheck = false; ///< of no meaning where the request isn't checked
};

/// A local list sent to a device that takes what has the right check and refuses the rest.
class AppDownload : public Ordeal {
  public:
    explicit AppDownload(uint64_t nSeed) : Ordeal(nSeed, 60) {
        Line().SetFarRate(115200);
        config.lClientBaudRate(115200);
        config.bAutoBaud(false);
        config.lSendPacketAttempts(static_cast<int32_t>(1 + numbers.Below(4)));
        config.strTmsAppFolder("/tms");
        host.files.Put("/tms/download.txt", "SETGROUP.2\r\n*A=1\r\na.out\r\nb.dat\r\n#B=2\r\n");
        std::string strContent;
        for (int32_t n = 0; n < 700; ++n)
            strContent += static_cast<char>(n * 7 + n / 256);
        host.files.Put("/tms/a.out", strContent);
        host.files.Put("/tms/b.dat", "bytes");
        // The request itself comes whole; the wire is what the list is sent over.
        device.Always("[]", kAck);
        device.onHeard = [this](const std::string& strWhat) {
            if (strWhat == "part" || strWhat.starts_with("bad["))
                device.Say(kNak);
        };
    }

    void Run() {
        Connect();
        int32_t lStatus = 1;
        const Microseconds begin = host.Now();
        lStatus =
            access.DownloadTmsApplication(config, link, log, Request("XDL", "F", "256"), lState);
        ASSERT_LT(host.Now() - begin, 60 * kSecond);
        host.RunFor(5 * kSecond);
        ASSERT_NO_FATAL_FAILURE(ExpectNothingLeft());
        bGood = lStatus == 0;
        const Lines& all = Expected();
        const Lines heard = Told(device.Payloads());
        // Frame by frame in their order; a frame may come again, none may come changed.
        size_t nAt = 0;
        for (const std::string& strPayload : heard) {
            const auto found =
                std::find(all.begin() + static_cast<std::ptrdiff_t>(nAt), all.end(), strPayload);
            if (found == all.end()) { // damage that has the right check by chance
                ASSERT_GT(nHarmed(), 0) << strPayload;
                bBeyondTheCheck = true;
                break;
            }
            nAt = static_cast<size_t>(found - all.begin());
        }
        if (bUnharmed()) {
            ASSERT_EQ(lStatus, 0);
            ASSERT_EQ(heard, all);
        }
        ASSERT_EQ(lState, bGood ? PASSTHRU_ST_DOWNLOAAPPCOMPLETE : PASSTHRU_ST_START);
        ASSERT_FALSE(access.bTmsAppDownloadActive());
    }

    /// Open packets without their dates, which depend on how long all took.
    static Lines Told(Lines payloads) {
        for (std::string& strPayload : payloads) {
            if (strPayload.starts_with('O') && strPayload.size() >= 40)
                strPayload.erase(18, 14);
        }
        return payloads;
    }

    /// What an undisturbed device hears.
    static const Lines& Expected() {
        static const Lines expected = [] {
            AppDownload clean(0);
            clean.Line().SetMangler(nullptr);
            clean.Connect();
            static_cast<void>(clean.access.DownloadTmsApplication(
                clean.config, clean.link, clean.log, Request("XDL", "F", "256"), clean.lState));
            clean.host.RunFor(kSecond);
            return Told(clean.device.Payloads());
        }();
        return expected;
    }

    bool bGood = false;
    bool bBeyondTheCheck = false;
};

/// One of four parts of the runs, so that they use all processors.
constexpr int64_t kParts = 4;

template <class Kind>
void Torment(int64_t lAllRuns, int64_t lPart) {
    const int64_t lRuns = world::TestOption("BRENNIK_TORTURE_RUNS", lAllRuns) / kParts;
    const int64_t lFirst = world::TestOption("BRENNIK_TORTURE_SEED", 1 + lPart * lRuns);
    int64_t lSuccesses = 0;
    int64_t lFailures = 0;
    int64_t lHarmed = 0;
    int64_t lBeyond = 0;
    for (int64_t lSeed = lFirst; lSeed < lFirst + lRuns; ++lSeed) {
        SCOPED_TRACE("replay with BRENNIK_TORTURE_SEED=" + std::to_string(lSeed) +
                     " BRENNIK_TORTURE_RUNS=4");
        Kind ordeal(static_cast<uint64_t>(lSeed));
        ASSERT_NO_THROW(ordeal.Run());
        if (::testing::Test::HasFatalFailure())
            return;
        ++(ordeal.bGood ? lSuccesses : lFailures);
        lHarmed += ordeal.nHarmed() > 0 ? 1 : 0;
        lBeyond += ordeal.bBeyondTheCheck ? 1 : 0;
    }
    ::testing::Test::RecordProperty("successes", std::to_string(lSuccesses));
    ::testing::Test::RecordProperty("failures", std::to_string(lFailures));
    ::testing::Test::RecordProperty("harmed", std::to_string(lHarmed));
    if (lRuns >= 500) {
        EXPECT_GT(lSuccesses, lRuns / 10);
        EXPECT_GT(lFailures, lRuns / 50);
        EXPECT_GT(lHarmed, lRuns / 4);
        EXPECT_LT(lBeyond, lRuns / 200);
    }
}

class DeviceTorture : public ::testing::TestWithParam<int> {};

TEST_P(DeviceTorture, OfAHuntEndsInTimeWithARequestOrAText) {
    Torment<Hunt>(4000, GetParam());
}

TEST_P(DeviceTorture, OfAnApplicationDownloadKeepsTheFramesAndTheirOrder) {
    Torment<AppDownload>(4000, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Seeds, DeviceTorture, ::testing::Range(0, static_cast<int>(kParts)));

// The rig: the comparison is with all frames of the list, in their places.
TEST(DeviceTortureRig, KnowsWhatAnUndisturbedDeviceHears) {
    const Lines& expected = AppDownload::Expected();
    ASSERT_EQ(expected.size(), 13u);
    EXPECT_EQ(expected[0], "OD0000000000000000XXXXXXXXSETGROUP.2");
    EXPECT_EQ(expected[2], "L*A\x1C"
                           "1");
    EXPECT_EQ(expected[3], "OC000002BC00000000XXXXXXXXa.out");
    EXPECT_EQ(expected[5].size(), 7u + 256u);
    EXPECT_EQ(expected.back(), "S");
}

} // namespace
} // namespace brennik::passthru
