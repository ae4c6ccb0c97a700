#include "tests/world/CallLedger.h"

#include "support/Failure.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <exception>
#include <set>
#include <string>
#include <type_traits>

namespace brennik::world {
namespace {

class CallLedgerTest : public ::testing::Test {
  protected:
    SimTimeline timeline;
    CallLedger ledger{timeline};
};

TEST_F(CallLedgerTest, EveryCallCostsAMicrosecond) {
    ledger.Enter();
    EXPECT_EQ(ledger.Enter(Op::Send), nullptr);
    EXPECT_EQ(timeline.Now(), 2);
    EXPECT_EQ(ledger.nCalls(), 2);
    EXPECT_EQ(ledger.nFailable(), 1);
}

TEST_F(CallLedgerTest, EachCallBehindTheBudgetThrows) {
    ledger.SetBudget(2);
    ledger.Enter();
    ledger.Enter();
    EXPECT_FALSE(ledger.BudgetExceeded());
    EXPECT_THROW(ledger.Enter(), BudgetExhausted);
    EXPECT_THROW(static_cast<void>(ledger.Enter(Op::Send)), BudgetExhausted);
    EXPECT_TRUE(ledger.BudgetExceeded());
}

TEST_F(CallLedgerTest, TheOverrunIsNoStandardException) {
    EXPECT_FALSE((std::is_base_of_v<std::exception, BudgetExhausted>));
}

TEST_F(CallLedgerTest, AnOverrunThatACatchAllSwallowsIsStillRecorded) {
    ledger.SetBudget(0);
    Quietly([&] { ledger.Enter(); });
    EXPECT_TRUE(ledger.BudgetExceeded());
    ledger.ForgiveOverrun(1);
    EXPECT_FALSE(ledger.BudgetExceeded());
    EXPECT_NO_THROW(ledger.Enter());
    EXPECT_THROW(ledger.Enter(), BudgetExhausted);
}

TEST_F(CallLedgerTest, ALoopThatSwallowsEveryOverrunIsAborted) {
    EXPECT_DEATH(
        {
            ledger.SetBudget(10);
            for (;;) {
                Quietly([&] { ledger.Enter(); });
            }
        },
        "The code under test went on for 100000 calls behind its budget of 10 calls: a loop that "
        "never ends\\.");
}

TEST_F(CallLedgerTest, FailsTheNthFailableCallOnce) {
    EXPECT_EQ(ledger.Enter(Op::Send), nullptr);
    ledger.FailNthCall(2, Fault{.lLastError = 10053});
    ledger.Enter(); // can't fail and so doesn't count
    EXPECT_EQ(ledger.Enter(Op::Receive), nullptr);
    EXPECT_FALSE(ledger.FailedOp().has_value());
    const Fault* fault = ledger.Enter(Op::CreateFolder);
    ASSERT_NE(fault, nullptr);
    EXPECT_EQ(fault->lLastError, 10053);
    EXPECT_EQ(ledger.FailedOp(), Op::CreateFolder);
    EXPECT_EQ(ledger.Enter(Op::CreateFolder), nullptr);
    EXPECT_EQ(ledger.nFailable(), 4);
}

TEST_F(CallLedgerTest, FailsNothingWithoutAPlan) {
    ledger.FailNthCall(0);
    for (int nCall = 0; nCall < 100; ++nCall) {
        EXPECT_EQ(ledger.Enter(Op::Send), nullptr);
    }
}

TEST_F(CallLedgerTest, FailsTheNextCallsOfOneOperationBehindThoseThatPass) {
    ledger.FailNext(Op::Send, {.lResult = 3}, 2, 1);
    ledger.FailNext(Op::Send, {.lResult = 0});
    EXPECT_EQ(ledger.Enter(Op::Receive), nullptr);
    EXPECT_EQ(ledger.Enter(Op::Send), nullptr);
    for (const int32_t lResult : {3, 3, 0}) {
        const Fault* fault = ledger.Enter(Op::Send);
        ASSERT_NE(fault, nullptr);
        EXPECT_EQ(fault->lResult, lResult);
    }
    EXPECT_EQ(ledger.Enter(Op::Send), nullptr);
}

TEST_F(CallLedgerTest, DropsPlannedFailures) {
    ledger.FailNext(Op::Send);
    ledger.FailNthCall(1);
    ledger.ClearFaults();
    EXPECT_EQ(ledger.Enter(Op::Send), nullptr);
}

TEST_F(CallLedgerTest, NamesEveryOperation) {
    std::set<std::string> names;
    for (size_t nOp = 0; nOp < static_cast<size_t>(Op::Count_); ++nOp) {
        EXPECT_TRUE(names.insert(NameOf(static_cast<Op>(nOp))).second) << nOp; // no two alike
    }
    EXPECT_FALSE(names.contains(""));
    EXPECT_STREQ(NameOf(Op::Count_), "");
    EXPECT_STREQ(NameOf(Op::Startup), "Startup");
    EXPECT_STREQ(NameOf(Op::GetHostByName), "GetHostByName");
    EXPECT_STREQ(NameOf(Op::ComOpen), "ComOpen");
    EXPECT_STREQ(NameOf(Op::ComSetTimeouts), "ComSetTimeouts");
    EXPECT_STREQ(NameOf(Op::OpenText), "OpenText");
    EXPECT_STREQ(NameOf(Op::ChangeDirectory), "ChangeDirectory");
}

} // namespace
} // namespace brennik::world
