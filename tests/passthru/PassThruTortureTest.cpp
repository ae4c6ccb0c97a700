#include "sim/ServiceBehaviour.h"
#include "tests/passthru/PassThruWorld.h"
#include "tests/passthru/PlainRelay.h"
#include "tests/world/SeededMangler.h"
#include "tests/world/TestOptions.h"
#include "tests/world/WatchedHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::passthru {
namespace {

using world::Direction;
using world::MangleRates;
using world::Outlet;
using world::SeededMangler;
using world::SeededNumbers;

/// A wire that does nothing until it is let loose.
class GatedMangler : public world::Mangler {
  public:
    GatedMangler(std::shared_ptr<bool> loose, uint64_t nSeed, const MangleRates& toServer,
                 const MangleRates& toClient)
        : loose_(std::move(loose)), mangler_(nSeed, toServer, toClient) {}
    void Pass(Direction direction, std::string_view strBytes, Outlet& outlet) override {
        if (*loose_)
            mangler_.Pass(direction, strBytes, outlet);
        else
            outlet.Put(strBytes);
    }
    int64_t nHarmed() const { return mangler_.nHarmed(); }

  private:
    std::shared_ptr<bool> loose_;
    SeededMangler mangler_;
};

/// What the driver sees and sends, from the moment on at which the server's verdict on the first
/// packet went to the device.
struct Watched : world::Watcher {
    bool bRelay = false;
    bool bServerAsked = false;
    std::vector<RelaySight> sights;
    std::string strToServer;
    std::string strToDevice;
    std::shared_ptr<bool> loose = std::make_shared<bool>(false);

    void See(RelaySight sight) {
        if (bRelay)
            sights.push_back(std::move(sight));
    }
    void TimeRead(float dNow) override { See({RelaySight::Kind::Time, dNow, {}}); }
    void ConnectionSilent() override { See({RelaySight::Kind::ServerNothing, 0, {}}); }
    void ConnectionRead(std::string_view strBytes) override {
        See({RelaySight::Kind::ServerBytes, 0, std::string(strBytes)});
    }
    void ConnectionWriting(std::string_view strBytes) override {
        if (bRelay)
            strToServer += strBytes;
        bServerAsked = true;
    }
    void PortSilent() override { See({RelaySight::Kind::DeviceNothing, 0, {}}); }
    void PortRead(std::string_view strBytes) override {
        See({RelaySight::Kind::DeviceByte, 0, std::string(strBytes)});
    }
    void PortWriting(std::string_view strBytes) override {
        if (bRelay)
            strToDevice += strBytes;
    }
    void PortWritten() override {
        if (bServerAsked) { // the verdict; the relay begins behind it
            bRelay = true;
            *loose = true;
        }
    }
    void PortClosing() override { bRelay = false; }
};

/// One tortured run: the driver and the model, fed with the same.
class Ordeal {
  public:
    Ordeal(bool bUpload, uint64_t nSeed, SeededNumbers& numbers, const MangleRates& toServer,
           const MangleRates& toClient)
        : bUpload_(bUpload) {
        auto device = std::make_unique<Device>(host_.timeline);
        device_ = device.get();
        world::SimLine& line = host_.comPorts.AddLine("COM2");
        line.SetFarRate(19200);
        line.Plug(std::move(device));
        MakePayloads(numbers);
        if (bUpload)
            PrepareUpload();
        else
            PrepareDownload();
        auto onNetwork = std::make_unique<GatedMangler>(watched_.loose, nSeed, toServer, toClient);
        auto onLine = std::make_unique<GatedMangler>(watched_.loose, nSeed + 1, OnLine(toServer),
                                                     OnLine(toClient));
        onNetwork_ = onNetwork.get();
        onLine_ = onLine.get();
        host_.network.SetMangler(std::move(onNetwork));
        line.SetMangler(std::move(onLine));
        FeedNow();
    }

    void Run() {
        host_.SetBudget(3000000);
        world::WatchedHost watched(host_.TheHost(), watched_);
        ScopedHost scoped(watched.TheHost());
        TBrennikClientConfig config;
        config.lOperatingMode(2);
        config.lPassThruType(bUpload_ ? 1 : 0);
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
        config.lReadPacketTimeout(1);
        TBrennikProtocol engine;
        result = engine.DoBrennikProtocol(config, "", 1);
        strErrorMessage = engine.strErrorMessage();
        lErrorCode = engine.lErrorCode();
        profile_ = {bUpload_, 2, 1, 1, std::set<std::string>(payloads_.begin(), payloads_.end())};
        PlainRelay model(profile_, watched_.sights);
        expected = model.Run();
        bAllSeen = model.bAllSeen();
    }

    const Watched& Seen() const { return watched_; }
    int64_t nHarmed() const { return onNetwork_->nHarmed() + onLine_->nHarmed(); }
    bool bFed() const { return bFed_; }
    bool BudgetExceeded() const { return host_.BudgetExceeded(); }
    int32_t nOpen() const { return host_.comPorts.nOpenPorts() + host_.network.nOpenSockets(); }
    /// The frames that the end which receives has taken, and those that there are.
    std::vector<std::string> Received() const {
        std::vector<std::string> all = (bUpload_ ? *server_ : *device_).Payloads();
        all.erase(all.begin()); // the request, or the command
        return all;
    }
    std::vector<std::string> DeviceReceived() const { return device_->Payloads(); }
    const std::vector<std::string>& Payloads() const { return payloads_; }
    bool bUpload() const { return bUpload_; }

    int32_t result = -1;
    std::string strErrorMessage;
    int32_t lErrorCode = 0;
    RelayOutcome expected;
    bool bAllSeen = false;

  private:
    /// A line that takes nothing for a second is a failed write, which is told elsewhere.
    static MangleRates OnLine(MangleRates rates) {
        rates.longestDelay = std::min(rates.longestDelay, 500 * kMillisecond);
        return rates;
    }
    void MakePayloads(SeededNumbers& numbers) {
        payloads_ = {"MHello", session::Open("a.bin", 40)};
        for (uint64_t n = numbers.Below(4); n > 0; --n) {
            std::string strData;
            for (uint64_t m = 1 + numbers.Below(60); m > 0; --m)
                strData += static_cast<char>(numbers.Below(256));
            payloads_.push_back(session::Write(strData));
        }
        payloads_.insert(payloads_.end(), {"C", "S"});
    }
    /// An end that sends the frames one by one: the next on ACK, the same again on anything else.
    void SendFrom(Device& end) {
        end.onHeard = [this, &end](const std::string& strText) {
            if (!bSending_)
                return;
            if (strText == "ACK" && nNext_ + 1 < payloads_.size())
                end.Say(CrcFrame(payloads_[++nNext_]));
            else if (strText == "NAK")
                end.Say(CrcFrame(payloads_[nNext_]));
        };
    }
    /// An end that takes them: ACK for a good frame, NAK for any other.
    static void TakeAt(Device& end) {
        end.Always("[]", "\x06");
        end.onHeard = [&end](const std::string& strText) {
            if (strText.starts_with("bad["))
                end.Say("\x15");
        };
    }
    void ServeBy(const std::function<void(Device&)>& prepare) {
        server_ = std::make_unique<Device>(host_.timeline);
        prepare(*server_);
        host_.network.Listen("10.0.0.1", 5000, [this] { return std::make_unique<Lent>(*server_); });
    }
    void PrepareDownload() {
        TakeAt(*device_);
        device_->On("ENQ", {CrcFrame(DeviceRequest("XDL", "P"))});
        ServeBy([this](Device& server) {
            SendFrom(server);
            server.On("[" + DeviceRequest("XDL", "P") + "]",
                      {Saying("\x06" + CrcFrame(payloads_[0]))});
        });
        bSending_ = true;
    }
    void PrepareUpload() {
        device_->ExpectLrc(true);
        device_->On("[3.9,3,U,Q,0,0,,,U,0]", {Saying("\x06" + LrcFrame("3.9,1,U,Q,0,0,,,A"))});
        SendFrom(*device_);
        device_->onHeard = [this, send = device_->onHeard,
                            nAcks = 0](const std::string& strText) mutable {
            // The ACK of its agreement, then that of its request.
            if (strText == "ACK" && nAcks < 2) {
                device_->Say(CrcFrame(nAcks == 0 ? DeviceRequest("XUL", "F") : payloads_[0]));
                bSending_ = ++nAcks == 2;
                return;
            }
            send(strText);
        };
        ServeBy([](Device& server) { TakeAt(server); });
    }

    /// A connection to the server, which lives longer, begun with ENQ.
    class Lent : public sim::FarEnd {
      public:
        explicit Lent(Device& server) : server_(server) {}
        void Connected(sim::Wire& wire, sim::Microseconds now) override {
            server_.Connected(wire, now);
            server_.Say("\x05");
        }
        void Received(sim::Wire& wire, sim::Microseconds now, std::string_view bytes) override {
            server_.Received(wire, now, bytes);
        }
        void Elapsed(sim::Wire& wire, sim::Microseconds now) override {
            server_.Elapsed(wire, now);
        }
        void Disconnected(sim::Microseconds) override {}
        std::optional<sim::Microseconds> NextDeadline() const override {
            return server_.NextDeadline();
        }

      private:
        Device& server_;
    };

    // The wait for the server's answer has no end; it stands idle until it is fed a byte.
    void FeedNow() {
        host_.At(20 * kSecond, [this] {
            if (watched_.bRelay) {
                host_.network.LastConnection().Feed("x");
                bFed_ = true;
            }
            FeedNow();
        });
    }

    world::SimHost host_;
    bool bUpload_;
    Watched watched_;
    Device* device_ = nullptr;
    std::unique_ptr<Device> server_;
    GatedMangler* onNetwork_ = nullptr;
    GatedMangler* onLine_ = nullptr;
    std::vector<std::string> payloads_;
    size_t nNext_ = 0;
    bool bSending_ = false;
    bool bFed_ = false;
    RelayProfile profile_;
};

constexpr uint64_t kWorst = 80; ///< of each harm in 10,000 bytes

constexpr int64_t kParts = 4;

void Torment(bool bUpload, int64_t lAllRuns, int64_t lPart) {
    const int64_t lRuns = world::TestOption("BRENNIK_TORTURE_RUNS", lAllRuns) / kParts;
    const int64_t lFirst = world::TestOption("BRENNIK_TORTURE_SEED", 1 + lPart * lRuns);
    int64_t lSuccesses = 0;
    int64_t lFailures = 0;
    int64_t lBeyond = 0;
    int64_t lFed = 0;
    for (int64_t lSeed = lFirst; lSeed < lFirst + lRuns; ++lSeed) {
        SeededNumbers numbers(static_cast<uint64_t>(lSeed) * 7919);
        const bool bHarm = !numbers.Happens(2000);
        const MangleRates toServer = world::DrawnRates(numbers, bHarm, kWorst);
        const MangleRates toClient = world::DrawnRates(numbers, bHarm, kWorst);
        Ordeal ordeal(bUpload, static_cast<uint64_t>(lSeed), numbers, toServer, toClient);
        SCOPED_TRACE("replay with BRENNIK_TORTURE_SEED=" + std::to_string(lSeed) +
                     " BRENNIK_TORTURE_RUNS=4");
        ASSERT_NO_THROW(ordeal.Run());
        ASSERT_FALSE(ordeal.BudgetExceeded());
        ASSERT_EQ(ordeal.nOpen(), 0);
        lFed += ordeal.bFed() ? 1 : 0;
        if (ordeal.expected.bBeyondTheModel) {
            // Up to the damaged packet all is as the model says.
            ++lBeyond;
            ASSERT_TRUE(ordeal.Seen().strToDevice.starts_with(ordeal.expected.strToDevice));
            ASSERT_TRUE(ordeal.Seen().strToServer.starts_with(ordeal.expected.strToServer));
            continue;
        }
        ASSERT_EQ(ordeal.Seen().strToDevice, ordeal.expected.strToDevice);
        ASSERT_EQ(ordeal.Seen().strToServer, ordeal.expected.strToServer);
        ASSERT_EQ(ordeal.result, ordeal.expected.bError ? 1 : 0);
        ASSERT_EQ(ordeal.lErrorCode, ordeal.expected.lErrorCode);
        ASSERT_EQ(ordeal.strErrorMessage, ordeal.expected.strErrorMessage);
        ASSERT_TRUE(ordeal.bAllSeen);
        if (ordeal.nHarmed() == 0 && toClient.longestDelay < kSecond &&
            toServer.longestDelay < kSecond && !ordeal.bFed()) {
            ASSERT_EQ(ordeal.result, 0);
            ASSERT_EQ(ordeal.bUpload() ? ordeal.Received() : ordeal.DeviceReceived(),
                      ordeal.Payloads());
        }
        ++(ordeal.result == 0 ? lSuccesses : lFailures);
    }
    ::testing::Test::RecordProperty("successes", std::to_string(lSuccesses));
    ::testing::Test::RecordProperty("failures", std::to_string(lFailures));
    ::testing::Test::RecordProperty("beyond_the_model", std::to_string(lBeyond));
    ::testing::Test::RecordProperty("fed", std::to_string(lFed));
    if (lRuns >= 1000) {
        EXPECT_GT(lSuccesses, lRuns / 10);
        EXPECT_GT(lFailures, lRuns / 10);
        EXPECT_LT(lBeyond, lRuns / 3);
        EXPECT_EQ(lFed > 0, bUpload) << "only the server's answer is waited for without end";
    }
}

class PassThruTorture : public ::testing::TestWithParam<int> {};

TEST_P(PassThruTorture, RelaysADownloadAsThePlainModelSays) {
    Torment(false, 6000, GetParam());
}

TEST_P(PassThruTorture, RelaysAnUploadAsThePlainModelSays) {
    Torment(true, 6000, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Seeds, PassThruTorture, ::testing::Range(0, static_cast<int>(kParts)));

// The rig: a model that is told one other byte of what the driver saw must part ways with it.
TEST(PassThruTortureRig, FindsADifference) {
    for (const bool bUpload : {false, true}) {
        SeededNumbers numbers(4);
        Ordeal ordeal(bUpload, 4, numbers, {}, {});
        ordeal.Run();
        ASSERT_EQ(ordeal.result, 0);
        ASSERT_EQ(ordeal.Seen().strToServer, ordeal.expected.strToServer);
        const RelayProfile profile{
            bUpload, 2, 1, 1,
            std::set<std::string>(ordeal.Payloads().begin(), ordeal.Payloads().end())};
        int32_t nFlipped = 0;
        for (size_t n = 0; n < ordeal.Seen().sights.size(); ++n) {
            std::vector<RelaySight> sights = ordeal.Seen().sights;
            if (sights[n].strBytes.empty())
                continue;
            sights[n].strBytes.back() = static_cast<char>(sights[n].strBytes.back() ^ 1);
            bool bAgrees = true;
            try {
                PlainRelay model(profile, sights);
                const RelayOutcome told = model.Run();
                // The last bytes of a frame are its check, which a relay makes anew.
                bAgrees = told.strToServer == ordeal.Seen().strToServer &&
                          told.strToDevice == ordeal.Seen().strToDevice && !told.bBeyondTheModel;
            } catch (const std::logic_error&) {
                bAgrees = false;
            }
            nFlipped += bAgrees ? 0 : 1;
        }
        EXPECT_GT(nFlipped, 4);
    }
}

} // namespace
} // namespace brennik::passthru
