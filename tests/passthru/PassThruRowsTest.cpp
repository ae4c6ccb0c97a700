// What a run promises, row by row, each with the tests that hold it to that: the meaning of every
// state, every change of state, every failure, and what goes over the wires in every case. A row
// without a test, and a test that is named here and isn't there, fail. The compiler finds a row
// that the switches leave out.
#include "passthru/PassThruRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace brennik::passthru {
namespace {

using Names = std::vector<std::string>;

constexpr int32_t kStates = 11;

/// Every test of this program that would run, as "Suite.Test".
std::set<std::string> TestsOfTheProgram() {
    std::set<std::string> names;
    const auto& program = *testing::UnitTest::GetInstance();
    for (int nSuite = 0; nSuite < program.total_test_suite_count(); ++nSuite) {
        const testing::TestSuite& suite = *program.GetTestSuite(nSuite);
        for (int nTest = 0; nTest < suite.total_test_count(); ++nTest) {
            const std::string strTest = suite.GetTestInfo(nTest)->name();
            if (strTest.find("DISABLED_") == std::string::npos)
                names.insert(suite.name() + ("." + strTest));
        }
    }
    return names;
}

void ExpectTests(const Names& tests, const std::string& strRow) {
    static const std::set<std::string> program = TestsOfTheProgram();
    EXPECT_FALSE(tests.empty()) << strRow << " has no test";
    for (const std::string& strTest : tests)
        EXPECT_TRUE(program.contains(strTest)) << strRow << ": there is no test " << strTest;
}

/// Follows an enumeration up to its last value.
template <class Row>
void ExpectTestsOfEach(Row last, Names (*testsOf)(Row)) {
    for (int32_t lRow = 0; lRow <= static_cast<int32_t>(last); ++lRow)
        ExpectTests(testsOf(static_cast<Row>(lRow)), "row " + std::to_string(lRow));
}

// ---- The meaning of each state.

Names TestsOfState(PassThruState lState) {
    switch (lState) {
    case PASSTHRU_ST_COMLETE:
        return {"PassThru.PassesAPartialDownloadThrough"};
    case PASSTHRU_ST_ERROR: // each run of the fixture looks for it too
        return {"PassThruStateName.NamesEveryStateAndNothingElse",
                "PassThruLog.OfARunWithoutADevice"};
    case PASSTHRU_ST_PARTIALDOWNLOAD:
        return {"PassThru.PassesAPartialDownloadThrough"};
    case PASSTHRU_ST_UPLOADFILES:
        return {"PassThru.PassesAnUploadThrough"};
    case PASSTHRU_ST_FULLDOWNLOAD:
        return {"PassThru.PassesAFullDownloadThrough", "PassThru.ForcesAFullDownload"};
    case PASSTHRU_ST_TMSENQUIRY:
        return {"PassThru.PassesAnEnquiryAndGoesOnWithoutAWait"};
    case PASSTHRU_ST_START:
        return {"PassThru.MakesThirteenCyclesWithADeviceThatNeverAnswers",
                "Behind/PassThruExtraReboot.LeavesTheStateOfABeginning/Full"};
    case PASSTHRU_ST_USERABORTED:
        return {"PassThru.SeesACancelInARelayAtOnce",
                "PassThru.CarriesOutTheRequestThatFollowsARefusedEnquiry"};
    case PASSTHRU_ST_FULLTMSAPP:
    case PASSTHRU_ST_LASTFULLTMSAPP:
        return {"PassThru.GoesThroughASeriesOfApplicationsUpToTheLast"};
    case PASSTHRU_ST_DOWNLOAAPPCOMPLETE:
        return {"PassThru.ServesTheLocalListAndGoesOnWithANewCycle"};
    }
    return {};
}

// ---- What changes the state, and what leaves it.

enum class Change {
    CancelAtTheHeadOfACycle,
    CancelInTheServerExchange,
    CancelInADownload,
    CancelInAnUpload,
    CancelInAnEnquiry,
    CancelInTheRelayBehindAnEnquiry,
    UploadToldAndAgreed,
    UploadToldAndRefused,
    FullDownloadToldAndAgreed,
    FullDownloadToldAndRefused,
    CalledByAnEnquiry,
    CalledForOneApplication,
    CalledForTheLastApplication,
    CalledForAFullDownload,
    CalledForTheLocalList,
    CalledForAPartialDownload,
    CalledForAnythingElse,
    NobodyCalled,
    TheLocalListFailed,
    EnquiryRefused,
    ExtraReboot,
    PartialDownloadHeld,
    UploadHeld,
    FullDownloadHeld,
    LastApplicationHeld,
    NextCycleBehindAnEnquiry,
    NextCycleBehindABeginning,
    NextCycleBehindAnApplication,
    NextCycleBehindTheLocalList,
    AbortedRunEnds,
    HeldRunEnds,
    ThirteenCyclesEndTheRun // the last
};

/// The test of a call, behind each state in which a cycle can begin.
Names BehindEachBeginning(const std::string& strCall) {
    Names tests;
    for (const char* strBefore : {"Nothing", "Enquiry", "Application", "LocalList"})
        tests.push_back(std::string("Behind/PassThruFirstPacket.DecidesTheState/") + strBefore +
                        "_" + strCall);
    return tests;
}

Names TestsOfCancel(Change change) {
    switch (change) {
    case Change::CancelAtTheHeadOfACycle:
        return {"PassThru.SeesACancelDuringThePolling",
                "PassThruCancel.DuringTheWaitForARebootTakesEffectInTheNextCycle",
                "PassThruCancel.DuringTheExtraRebootOfAPedDownloadMakesNoSecondDownload",
                "PassThruCancel.ShortensTheCyclesThatFollowAFailure"};
    case Change::CancelInTheServerExchange:
        return {"PassThru.SeesACancelAsTheServerAnswers",
                "PassThruCancel.WithTheVerdictOnAnUploadLeavesItsFramesUnread",
                "PassThruCancel.DuringAKeyInjectionIsSeenByTheRelay"};
    case Change::CancelInADownload:
        return {"PassThru.SeesACancelInARelayAtOnce",
                "PassThruCancel.WithTheLastFrameOfASessionIsSeenAheadOfTheEnd"};
    case Change::CancelInAnUpload:
        return {"PassThruCancel.InAnUploadIsSeenBehindTheFrame"};
    case Change::CancelInAnEnquiry:
        return {"PassThruCancel.InAnEnquiryIsSeenBehindItsReply",
                "PassThruCancel.InAnEnquiryWithoutAReplyTakesThePlaceOfItsText"};
    case Change::CancelInTheRelayBehindAnEnquiry:
        return {"PassThruCancel.InTheRelayBehindARefusalIsSeenBehindTheFrame",
                "PassThruCancel.WithTheRefusalOfAnEnquiryLeavesTheServersFramesUnread"};
    default:
        return {};
    }
}

Names TestsOfChange(Change change) {
    switch (change) {
    case Change::CancelAtTheHeadOfACycle:
    case Change::CancelInTheServerExchange:
    case Change::CancelInADownload:
    case Change::CancelInAnUpload:
    case Change::CancelInAnEnquiry:
    case Change::CancelInTheRelayBehindAnEnquiry:
        return TestsOfCancel(change);
    case Change::UploadToldAndAgreed:
        return {"PassThru.PassesAnUploadThrough"};
    case Change::UploadToldAndRefused:
        return {"PassThru.KeepsTheStateOfAnUploadThatTheDeviceRefused"};
    case Change::FullDownloadToldAndAgreed:
        return {"PassThru.ForcesAFullDownload"};
    case Change::FullDownloadToldAndRefused:
        return {"PassThru.KeepsTheStateOfAForcedDownloadThatTheDeviceRefused"};
    case Change::CalledByAnEnquiry:
        return BehindEachBeginning("Enquiry");
    case Change::CalledForOneApplication:
        return BehindEachBeginning("Application");
    case Change::CalledForTheLastApplication:
        return BehindEachBeginning("LastApplication");
    case Change::CalledForAFullDownload:
        return BehindEachBeginning("Full");
    case Change::CalledForTheLocalList:
        return BehindEachBeginning("LocalList");
    case Change::CalledForAPartialDownload:
        return BehindEachBeginning("Partial");
    case Change::CalledForAnythingElse:
        return BehindEachBeginning("Other");
    case Change::NobodyCalled:
        return BehindEachBeginning("Nothing");
    case Change::TheLocalListFailed:
        return {"PassThruFailures.AFailedLocalListLeavesTheStateAsItWas"};
    case Change::EnquiryRefused:
        return {"PassThru.CarriesOutTheRequestThatFollowsARefusedEnquiry"};
    case Change::ExtraReboot:
        return {"Behind/PassThruExtraReboot.BeginsAnewOnce/Partial",
                "Behind/PassThruExtraReboot.BeginsAnewOnce/Full",
                "Behind/PassThruExtraReboot.BeginsAnewOnce/LastApplication",
                "Behind/PassThruExtraReboot.LeavesTheStateOfABeginning/Partial",
                "Behind/PassThruExtraReboot.LeavesTheStateOfABeginning/Full",
                "Behind/PassThruExtraReboot.LeavesTheStateOfABeginning/LastApplication"};
    case Change::PartialDownloadHeld:
        return {"PassThru.PassesAPartialDownloadThrough"};
    case Change::UploadHeld:
        return {"PassThru.PassesAnUploadThrough"};
    case Change::FullDownloadHeld:
        return {"PassThru.PassesAFullDownloadThrough"};
    case Change::LastApplicationHeld:
    case Change::NextCycleBehindAnApplication:
        return {"PassThru.GoesThroughASeriesOfApplicationsUpToTheLast"};
    case Change::NextCycleBehindAnEnquiry:
        return {"PassThru.PassesAnEnquiryAndGoesOnWithoutAWait"};
    case Change::NextCycleBehindABeginning:
        return {"PassThru.MakesThirteenCyclesWithADeviceThatNeverAnswers"};
    case Change::NextCycleBehindTheLocalList:
        return {"PassThru.ServesTheLocalListAndGoesOnWithANewCycle"};
    case Change::AbortedRunEnds:
        return {"PassThru.SeesACancelInARelayAtOnce",
                "PassThru.CarriesOutTheRequestThatFollowsARefusedEnquiry"};
    case Change::HeldRunEnds:
        return {"PassThru.PassesAPartialDownloadThrough"};
    case Change::ThirteenCyclesEndTheRun:
        return {"PassThru.MakesThirteenCyclesWithADeviceThatNeverAnswers",
                "PassThruFailures.ThirteenEnquiriesEndTheRunWithoutAText"};
    }
    return {};
}

// ---- Failures, and what follows each.

enum class Failed {
    ByTheUser,
    DeviceChannel,
    ServerChannel,
    ServerLinkInADownload,
    DeviceLinkInADownload,
    ServerLinkInAnUpload,
    DeviceLinkInAnUpload,
    ServerLinkInAnEnquiry,
    DeviceLinkInAnEnquiry,
    TheRequestBehindARefusal,
    ThePassingOnOfThatRequest,
    TheRelayBehindARefusal,
    UnsuccessfulDownload,
    UnsuccessfulUpload,
    UnsuccessfulRelayBehindARefusal,
    RefusedEnquiry,
    FrameNotUnderstood,
    Unforeseen,
    TailOfIdleCycles,
    TailBehindTheExtraReboot,
    NoTailBehindAHeldSession,
    NoTailBehindACommand // the last
};

Names TestsOfLinkFailure(Failed failed) {
    switch (failed) {
    case Failed::ServerLinkInADownload:
        return {"PassThruFailures.TheServersSilenceAheadOfItsEnqEndsTheRun",
                "PassThruFailures.ARequestThatCantBePassedOnTakesTheServersText",
                "PassThruFailures.AServerThatFallsSilentInADownloadGivesItsOwnText",
                "PassThruFailures.AnAnswerThatCantBePassedOnTakesTheServersText"};
    case Failed::DeviceLinkInADownload:
        return {"PassThruFailures.AVerdictThatCantBePassedOnTakesTheDevicesText",
                "PassThruFailures.AFrameThatCantBeDeliveredTakesTheDevicesText",
                "PassThruFailures.ADeviceThatFallsSilentInADownloadGivesItsOwnText"};
    case Failed::ServerLinkInAnUpload:
        return {"PassThruFailures.AFrameThatCantBePassedToTheServerTakesTheDevicesText"};
    case Failed::DeviceLinkInAnUpload:
        return {"PassThru.TakesTheTextOfADeviceThatFallsSilentInAnUploadFromTheServersLink",
                "PassThruFailures.AnAnswerThatCantBePassedToTheDeviceTakesTheServersText"};
    case Failed::ServerLinkInAnEnquiry:
        return {"PassThruFailures.AnEnquiryTakesTheTextOfAServerThatSaysNothing",
                "PassThruFailures.AnEnquiryThatTheServerDoesNotGetTakesItsText",
                "PassThruFailures.AnEnquiryWithoutAReplyIsNotAcknowledged",
                "PassThru.SendsARefusedEnquiryAsOftenAsTheProfileSays"};
    case Failed::DeviceLinkInAnEnquiry:
        return {"PassThruFailures.AnEnquiryThatCantBeAcknowledgedTakesTheDevicesText",
                "PassThruFailures.AReplyThatTheDeviceDoesNotTakeIsSentOnceMore",
                "PassThruFailures.AReplyThatIsTakenTheSecondTimeIsAnErrorAllTheSame",
                "PassThruFailures.TheSecondSendsTextIsNotTaken"};
    case Failed::TheRequestBehindARefusal:
        return {"PassThruFailures.ARequestThatDoesNotFollowARefusalTakesTheServersText"};
    case Failed::ThePassingOnOfThatRequest:
        return {"PassThruFailures.ARequestThatTheServerDoesNotGetTakesTheDevicesText",
                "PassThruFailures.ATextTakenFromTheOtherSideMayBeAnOldOne"};
    case Failed::TheRelayBehindARefusal:
        return {"PassThruFailures.AServerThatFallsSilentBehindARefusalGivesItsOwnText",
                "PassThruFailures.ADeviceThatFallsSilentBehindARefusalGivesItsOwnText",
                "PassThruFailures.AFrameThatTheDeviceRefusesBehindARefusalEndsTheRunWithoutAText",
                "PassThruFailures.AFrameThatItDoesNotUnderstandBehindARefusalIsAnError"};
    default:
        return {};
    }
}

Names TestsOfFailure(Failed failed) {
    switch (failed) {
    case Failed::ByTheUser:
        return {"PassThru.SeesACancelInARelayAtOnce"};
    case Failed::DeviceChannel:
        return {"PassThruFailures.ADeviceSideThatCantBeOpenedIsTriedInThirteenCycles"};
    case Failed::ServerChannel:
        return {"PassThru.EndsBehindTheCycleWhenTheServerCantBeReached",
                "PassThruFailures.AnEnquiryWithoutAServerTakesTheTextOfTheChannel"};
    case Failed::ServerLinkInADownload:
    case Failed::DeviceLinkInADownload:
    case Failed::ServerLinkInAnUpload:
    case Failed::DeviceLinkInAnUpload:
    case Failed::ServerLinkInAnEnquiry:
    case Failed::DeviceLinkInAnEnquiry:
    case Failed::TheRequestBehindARefusal:
    case Failed::ThePassingOnOfThatRequest:
    case Failed::TheRelayBehindARefusal:
        return TestsOfLinkFailure(failed);
    case Failed::UnsuccessfulDownload:
        return {"PassThru.EndsWithTheServersRefusalInADownload"};
    case Failed::UnsuccessfulUpload:
        return {"PassThru.EndsAnUploadByItsOwnText"};
    case Failed::UnsuccessfulRelayBehindARefusal:
        return {"PassThru.AnUnsuccessfulRelayBehindARefusedEnquiryIsNoError"};
    case Failed::RefusedEnquiry:
        return {"PassThru.CarriesOutTheRequestThatFollowsARefusedEnquiry"};
    case Failed::FrameNotUnderstood:
        return {"PassThru.EndsBehindAFrameThatItDoesNotUnderstand"};
    case Failed::Unforeseen:
        return {"PassThru.RefusesADeviceOnTcpAtTheHandOver",
                "PassThruFailures.AnErrorReplyWithoutItsTextEndsTheRunAtOnce"};
    case Failed::TailOfIdleCycles:
        return {"PassThru.MakesThirteenCyclesWithADeviceThatNeverAnswers",
                "PassThruFailures.ASeriesThatBreaksOffKeepsItsState",
                "PassThruFailures.ALocalListKeepsItsStateWhenNobodyCallsBehindIt",
                "PassThruFailures.ADeviceThatFallsSilentBehindItsEnquiryIsNotWaitedFor"};
    case Failed::TailBehindTheExtraReboot:
        return {"PassThruFailures.AFailedPedDownloadTakesItsExtraRebootAndThenIdles"};
    case Failed::NoTailBehindAHeldSession:
        return {"PassThru.EndsWithTheServersRefusalInADownload",
                "PassThru.EndsBehindTheCycleWhenTheServerCantBeReached"};
    case Failed::NoTailBehindACommand:
        return {"PassThru.KeepsTheStateOfAnUploadThatTheDeviceRefused",
                "PassThru.KeepsTheStateOfAForcedDownloadThatTheDeviceRefused"};
    }
    return {};
}

// ---- What goes over the wires.

enum class Case {
    PartialDownload,
    FullDownload,
    ForcedFullDownload,
    Upload,
    Enquiry,
    RefusedEnquiry,
    SeriesOfApplications,
    LocalList // the last
};

Names TestsOfCase(Case which) {
    switch (which) {
    case Case::PartialDownload:
        return {"PassThru.PassesAPartialDownloadThrough",
                "PassThru.CopiesANakToTheServerWhichSendsAgain"};
    case Case::FullDownload:
        return {"PassThru.PassesAFullDownloadThrough", "KeyInjection.PutsTheRecordIntoGroup15",
                "Transcript.OfADownloadIsWhatTheDocumentShows"};
    case Case::ForcedFullDownload:
        return {"PassThru.ForcesAFullDownload"};
    case Case::Upload:
        return {"PassThru.PassesAnUploadThrough"};
    case Case::Enquiry:
        return {"PassThru.PassesAnEnquiryAndGoesOnWithoutAWait"};
    case Case::RefusedEnquiry:
        return {"PassThru.CarriesOutTheRequestThatFollowsARefusedEnquiry"};
    case Case::SeriesOfApplications:
        return {"PassThru.GoesThroughASeriesOfApplicationsUpToTheLast"};
    case Case::LocalList:
        return {"PassThru.ServesTheLocalListAndGoesOnWithANewCycle"};
    }
    return {};
}

TEST(PassThruRows, EveryStateHasItsTest) {
    int32_t lNamed = 0;
    while (!PassThruStateName(lNamed).empty())
        ++lNamed;
    EXPECT_EQ(lNamed, kStates);
    for (int32_t lState = 0; lState < kStates; ++lState)
        ExpectTests(TestsOfState(static_cast<PassThruState>(lState)), PassThruStateName(lState));
}

TEST(PassThruRows, EveryChangeOfStateHasItsTest) {
    ExpectTestsOfEach(Change::ThirteenCyclesEndTheRun, TestsOfChange);
}

TEST(PassThruRows, EveryFailureHasItsTest) {
    ExpectTestsOfEach(Failed::NoTailBehindACommand, TestsOfFailure);
}

TEST(PassThruRows, EveryCaseOnTheWiresHasItsTest) {
    ExpectTestsOfEach(Case::LocalList, TestsOfCase);
}

TEST(PassThruRows, ARowWithoutATestFails) {
    EXPECT_NONFATAL_FAILURE(ExpectTests({}, "this row"), "this row has no test");
}

TEST(PassThruRows, ATestThatIsNotThereFails) {
    EXPECT_NONFATAL_FAILURE(ExpectTests({"PassThru.IsNotThere"}, "this row"),
                            "this row: there is no test PassThru.IsNotThere");
}

} // namespace
} // namespace brennik::passthru
