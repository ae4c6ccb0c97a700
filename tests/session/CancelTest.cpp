// Cancel: asked for by a flag, acted on at the head of the packet loop and nowhere else.
#include "tests/session/SessionWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace brennik {
namespace {

using namespace session;
using world::kSecond;
using world::Op;

class Cancel : public SessionTest {};

const std::string kRequest = Frame("VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1,RELEASE,CONFIG");

TEST_F(Cancel, BeforeTheRunLetsItAskAndReadsNothing) {
    Say({"S"});
    onEngine = [&] { engine->bCancelComms(true); };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_EQ(peer.Received(), kRequest);
    EXPECT_EQ(peer.nDisconnected(), 1);
}

TEST_F(Cancel, DuringAFailingConnectDoesNotHideItsFailure) {
    host.network.BlackHole("10.0.0.1", 5000); // the wait for it takes its five seconds
    host.At(kSecond, [&] { engine->bCancelComms(true); });
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000004);
    EXPECT_TRUE(engine->bCancelComms());
}

TEST_F(Cancel, WhileAFolderFailsDoesNotHideItsFailure) {
    host.FailNext(Op::CreateFolder);
    host.At(1, [&] { engine->bCancelComms(true); });
    EXPECT_EQ(Run(), 1);
    EXPECT_TRUE(engine->bCancelComms());
    ExpectFailure(1000026, "Failed creating folder : /srv/pos\\");
    EXPECT_EQ(peer.nConnections(), 0);
}

TEST_F(Cancel, BetweenTwoSendsOfTheRequestLetsTheSecondGoOut) {
    int nRequests = 0;
    peer.OnBytes = [&](std::string_view) {
        engine->bCancelComms(true);
        peer.Push(++nRequests == 1 ? kNak : kAck + Frame("S"));
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_EQ(peer.Received(), kRequest + kRequest) << "no packet was read";
}

TEST_F(Cancel, DoesNotHideARequestThatIsRefusedToTheEnd) {
    peer.OnBytes = [&](std::string_view) {
        engine->bCancelComms(true);
        peer.Push(kNak);
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(0, "");
    EXPECT_EQ(peer.Received(), kRequest + kRequest + kRequest);
}

TEST_F(Cancel, BeforeTheLoopEndsItWithoutReadingAPacket) {
    Say({"S"});
    peer.OnConnect = [&] {
        engine->bCancelComms(true);
        peer.Push(kEnq);
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_TRUE(engine->bCancelComms());
    // The request went out and was acknowledged; the packet behind it was not.
    EXPECT_EQ(peer.Received(), kRequest);
    EXPECT_EQ(peer.nDisconnected(), 1);
}

TEST_F(Cancel, InAFileClosesItAndSendsNothingMore) {
    Say({Open("part", 9), Write("abc"), Write("def"), "C", "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 2)
            engine->bCancelComms(true);
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    // The flag is looked at once the read under way has returned: that packet is still taken.
    EXPECT_EQ(File("/srv/pos/part"), "abcdef");
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
    EXPECT_EQ(peer.Received().substr(peer.Received().size() - 3), kAck + kAck + kAck);
}

TEST_F(Cancel, TurnsASuccessIntoAFailure) {
    Say({"MHi", "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 1)
            engine->bCancelComms(true);
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_EQ(engine->lCurrentState(), BrennikState::DisconnectingFromServer)
        << "the success was read and acted on";
    EXPECT_EQ(peer.Received(), kRequest + kAck + kAck);
}

TEST_F(Cancel, OverwritesAFailureOfTheSamePass) {
    Say({"MHi", "U"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 1)
            engine->bCancelComms(true);
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_EQ(peer.Received(), kRequest + kAck + kAck) << "the failure was read";
}

TEST_F(Cancel, OverwritesAFailedHandlerOfTheSamePass) {
    Say({"MHi", Write("lost"), "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 1)
            engine->bCancelComms(true);
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_EQ(engine->lCurrentState(), BrennikState::DownloadingFile) << "the handler ran";
}

TEST_F(Cancel, DuringASilentReadTakesEffectWhenTheReadReturns) {
    Say({});
    host.At(5000000, [&] { engine->bCancelComms(true); });
    const auto begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_GE(host.Now() - begin, 6000000);
}

TEST_F(Cancel, DuringTheWaitForEnqDoesNotHideItsFailure) {
    peer.OnConnect = nullptr;
    host.At(1000000, [&] { engine->bCancelComms(true); });
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000012, "Failed reading ENQ character");
}

} // namespace
} // namespace brennik
