// What is plugged in at the other side of a line: openings and closings, deadlines, hang-ups.
#include "tests/world/SimLineFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brennik::world {
namespace {

class SimLineFarEndTest : public SimLineFixture {};

// Far ends.

TEST_F(SimLineFarEndTest, EachOpeningMeetsANewFarEnd) {
    ServeNotes();
    EXPECT_TRUE(notes.empty());
    Open();
    EXPECT_EQ(notes, Notes{"connected"});
    Close();
    EXPECT_EQ(notes, (Notes{"connected", "disconnected"}));
    Open();
    EXPECT_EQ(notes, (Notes{"connected", "disconnected", "connected"}));
}

TEST_F(SimLineFarEndTest, TheFarEndSpeaksFirstAndAnswers) {
    prepare = [](NotingFarEnd& made) {
        made.onConnected = [](sim::Wire& wire) { wire.Send("\x05"); };
        made.onReceived = [](sim::Wire& wire, sim::Microseconds) { wire.Send("\x06"); };
    };
    ServeNotes();
    Open();
    EXPECT_EQ(Read(), "\x05");
    Write("r");
    EXPECT_EQ(Read(), "\x06");
}

TEST_F(SimLineFarEndTest, TheFarEndHearsOfTheClosingBehindTheLastByte) {
    ServeNotes();
    Open();
    Write("bye");
    Close();
    EXPECT_EQ(notes, Notes{"connected"});
    host.RunFor(3 * kByteTime);
    EXPECT_EQ(notes, (Notes{"connected", "b", "y", "e", "disconnected"}));
    host.RunFor(kSecond);
    EXPECT_EQ(notes.size(), 5U);
}

TEST_F(SimLineFarEndTest, HeldBytesAreLostByAClosing) {
    ServeNotes();
    Open();
    Line().HoldOutput(true);
    host.At(500 * kMillisecond, [&] { Close(); });
    int32_t lWritten = 0;
    EXPECT_TRUE(host.comPorts.Write(hPort, "abc", lWritten));
    Line().HoldOutput(false);
    host.RunFor(kSecond);
    EXPECT_EQ(notes, (Notes{"connected", "disconnected"}));
}

TEST_F(SimLineFarEndTest, AnOpeningBeforeTheLastByteEndsTheOldFarEnd) {
    ServeNotes();
    Open();
    Write("abc");
    Close();
    Open();
    EXPECT_EQ(notes, (Notes{"connected", "disconnected", "connected"}));
    host.RunFor(kSecond);
    EXPECT_EQ(notes.size(), 3U); // nothing of the old bytes, and no second closing
    Write("d");
    host.RunFor(kByteTime);
    EXPECT_EQ(notes.back(), "d");
}

TEST_F(SimLineFarEndTest, APluggedFarEndLivesWhetherOrNotThePortIsOpen) {
    NotingFarEnd& farEnd = PlugNotes();
    EXPECT_EQ(notes, Notes{"connected"});
    sim::Wire& wire = Line();
    wire.Send("into nothing");
    host.RunFor(kSecond);
    Open();
    EXPECT_EQ(Read(), "");
    Write("a");
    Close();
    host.RunFor(kByteTime);
    Open();
    farEnd.onReceived = [](sim::Wire& back, sim::Microseconds) { back.Send("!"); };
    Write("b");
    EXPECT_EQ(Read(), "!");
    Close();
    host.RunFor(kSecond);
    EXPECT_EQ(notes, (Notes{"connected", "a", "b"})); // and of no closing
}

TEST_F(SimLineFarEndTest, BytesUnderWayAtTheOpeningArrive) {
    PlugNotes();
    Line().Send("ab");
    host.RunFor(kByteTime);
    Open();
    EXPECT_EQ(Read(), "b");
}

TEST_F(SimLineFarEndTest, WhatIsPluggedInReplacesWhatWasThere) {
    ServeNotes();
    Open();
    Notes others;
    Line().Plug(std::make_unique<NotingFarEnd>(others));
    Write("a");
    host.RunFor(kByteTime);
    EXPECT_EQ(notes, Notes{"connected"});
    EXPECT_EQ(others, (Notes{"connected", "a"}));
    Close();
    Line().ServeEachOpening([&] { return std::make_unique<NotingFarEnd>(notes); });
    Open();
    Write("b");
    host.RunFor(kByteTime);
    EXPECT_EQ(notes, (Notes{"connected", "connected", "b"}));
    EXPECT_EQ(others, (Notes{"connected", "a"}));
}

TEST_F(SimLineFarEndTest, ALineWithNothingPluggedInIsSilent) {
    host.comPorts.AddLine("COM1");
    Open();
    Write("abc");
    EXPECT_EQ(Read(), "");
    Close();
}

// Deadlines.

TEST_F(SimLineFarEndTest, DeadlinesElapseAtTheirMoment) {
    prepare = [](NotingFarEnd& made) {
        made.deadline = 5000;
        made.onElapsed = [&made] {
            made.deadline =
                *made.deadline < 7000 ? std::optional<Microseconds>(7000) : std::nullopt;
        };
    };
    ServeNotes();
    Open();
    Sleep(20);
    EXPECT_EQ(notes, (Notes{"connected", "elapsed 5000", "elapsed 7000"}));
}

TEST_F(SimLineFarEndTest, ADeadlineThatMovesReplacesTheOldOne) {
    prepare = [](NotingFarEnd& made) {
        made.deadline = 5000;
        made.onReceived = [&made](sim::Wire&, sim::Microseconds) { made.deadline = 9000; };
        made.onElapsed = [&made] { made.deadline.reset(); };
    };
    ServeNotes();
    Open();
    Write("x");
    Sleep(20);
    EXPECT_EQ(notes, (Notes{"connected", "x", "elapsed 9000"}));
}

TEST_F(SimLineFarEndTest, ADeadlineLeftInThePastDoesntHoldTimeStill) {
    prepare = [](NotingFarEnd& made) { made.deadline = 0; };
    ServeNotes();
    Open();
    host.RunFor(5);
    EXPECT_GE(notes.size(), 5U);
    EXPECT_LE(notes.size(), 9U);
}

TEST_F(SimLineFarEndTest, NoDeadlineElapsesBehindAClosing) {
    prepare = [](NotingFarEnd& made) { made.deadline = 5000; };
    ServeNotes();
    Open();
    Close();
    Sleep(20);
    EXPECT_EQ(notes, (Notes{"connected", "disconnected"}));
}

// Hang-ups.

TEST_F(SimLineFarEndTest, AHangUpLosesWhatIsUnderWayAndTellsTheFarEnd) {
    prepare = [](NotingFarEnd& made) {
        made.onConnected = [](sim::Wire& wire) { wire.Send("abc"); };
    };
    ServeNotes();
    Open();
    Write("xyz");
    host.RunFor(kByteTime);
    Line().HangUp();
    EXPECT_EQ(notes, (Notes{"connected", "x", "disconnected"}));
    EXPECT_EQ(Read(), "a");
    EXPECT_EQ(Read(), "dead");
    EXPECT_EQ(notes.size(), 3U);
}

TEST_F(SimLineFarEndTest, ALineThatComesBackIsAtRest) {
    ServeNotes();
    Open();
    Write("123456789");
    Line().HangUp();
    Line().ComeBack();
    Close();
    notes.clear();
    Open();
    Write("a"); // not behind the nine that were lost
    host.RunFor(kByteTime);
    EXPECT_EQ(notes, (Notes{"connected", "a"}));
}

TEST_F(SimLineFarEndTest, APluggedFarEndOutlivesAHangUpUnheard) {
    PlugNotes();
    Open();
    Line().HangUp();
    Line().Send("lost");
    EXPECT_EQ(Line().nSentByFarEnd(), 0);
    Line().ComeBack();
    Line().Send("lost too"); // the port is dead still
    EXPECT_EQ(Read(), "dead");
    Close();
    Open();
    Line().Send("back");
    EXPECT_EQ(Read(), "back");
    EXPECT_EQ(notes, Notes{"connected"});
}

TEST_F(SimLineFarEndTest, AFarEndClosesBehindItsLastByteAndIsToldNothingMore) {
    prepare = [](NotingFarEnd& made) {
        made.deadline = 50000;
        made.onReceived = [](sim::Wire& wire, sim::Microseconds) {
            wire.Send("bye");
            wire.Close();
            wire.Send("late");
        };
    };
    ServeNotes();
    Open();
    Write("ab");
    EXPECT_EQ(Read(), "bye");
    EXPECT_TRUE(Dead());
    Close();
    Sleep(100);
    EXPECT_EQ(notes, (Notes{"connected", "a"}));
    EXPECT_EQ(Line().nSentByFarEnd(), 3);
}

TEST_F(SimLineFarEndTest, ALineThatTheFarEndClosedCanBeOpenedAtOnce) {
    OpenWithPeer();
    peer->Close();
    EXPECT_TRUE(Dead());
    Close();
    Open();
    Write("x");
    host.RunFor(kByteTime);
    EXPECT_EQ(peer->Received(), "x");
    EXPECT_EQ(peer->nConnections(), 2);
    EXPECT_EQ(peer->nDisconnected(), 0);
}

TEST_F(SimLineFarEndTest, AClosingOfThePortOvertakesThatOfTheFarEnd) {
    OpenWithPeer();
    peer->Push("bye");
    peer->Close();
    Close();
    Open();
    EXPECT_EQ(Read(), "");
    EXPECT_FALSE(Dead());
}

TEST_F(SimLineFarEndTest, AResetLosesWhatIsUnderWay) {
    OpenWithPeer();
    peer->Push("lost");
    peer->Reset();
    EXPECT_EQ(Read(), "dead");
    Close();
    Open();
    EXPECT_EQ(Read(), "");
    EXPECT_EQ(peer->nDisconnected(), 0);
}

TEST_F(SimLineFarEndTest, AFarEndMayHangUpForATime) {
    prepare = [](NotingFarEnd& made) {
        made.onReceived = [](sim::Wire& wire, sim::Microseconds) { wire.HangUp(30000); };
    };
    ServeNotes();
    Open();
    Write("ab");
    host.RunFor(kByteTime);
    EXPECT_TRUE(Dead());
    Close();
    host.RunFor(29000);
    EXPECT_EQ(host.comPorts.Open("COM1"), kNoComPort);
    host.RunFor(1000);
    Open();
    EXPECT_EQ(notes, (Notes{"connected", "a", "connected"}));
}

} // namespace
} // namespace brennik::world
