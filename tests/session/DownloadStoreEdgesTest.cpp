// The rarer turns of folders and files: files left open, names that look dangerous and aren't, the
// folders of the serial client, and failures that no handler names.
#include "tests/session/SessionWorld.h"
#include "tests/world/AllocationLimit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace brennik {
namespace {

using namespace session;
using namespace std::string_literals;
using world::AllocationLimit;
using world::Op;
using Strings = std::vector<std::string>;

constexpr size_t kTooMuch = size_t{1} << 19;
const std::string kVeryLong(600000, 'n');

class DownloadStoreEdges : public SessionTest {
  protected:
    Strings Tree() const { return host.files.Tree("/srv/pos"); }

    int32_t Receive(Strings payloads) {
        payloads.push_back("S");
        Say(std::move(payloads));
        return Run();
    }
};

// ---- Files that the far end never closes.

TEST_F(DownloadStoreEdges, KeepsOneFileOpenAtMostHoweverManyAreOpened) {
    config.bLoggingEnabled(false);
    Strings payloads;
    for (int32_t n = 0; n < 2000; ++n)
        payloads.push_back(Open("f" + std::to_string(n), 0, n % 2 == 0 ? 'O' : 'A'));
    payloads.push_back("S");
    const size_t nLast = payloads.size() - 1;
    Say(std::move(payloads));
    int32_t nMost = 0;
    int32_t nAtEnd = 0;
    onPayload = [&](size_t nIndex) {
        nMost = std::max(nMost, host.files.nOpenStreams());
        if (nIndex == nLast)
            nAtEnd = host.files.nOpenStreams();
    };
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(nMost, 1);
    EXPECT_EQ(nAtEnd, 1) << "the last one is still open";
    EXPECT_EQ(Tree().size(), 2000u);
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(DownloadStoreEdges, KeepsTheDataOfAFileThatTheNextOneEnds) {
    ASSERT_EQ(Receive({Open("a", 3), Write("one"), Open("b", 3), Write("two"), "C"}), 0);
    EXPECT_EQ(File("/srv/pos/a"), "one");
    EXPECT_EQ(File("/srv/pos/b"), "two");
    ASSERT_EQ(engine->lNumFilesDownloaded(), 1);
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "b");
}

TEST_F(DownloadStoreEdges, OpensAFileAgainWhileItIsOpen) {
    ASSERT_EQ(Receive({Open("a", 3), Write("one"), Open("a", 3, 'A'), Write("two"), "C"}), 0);
    EXPECT_EQ(File("/srv/pos/a"), "onetwo");
    ASSERT_EQ(Receive({Open("a", 3), Write("one"), Open("a", 3), Write("two"), "C"}), 0);
    EXPECT_EQ(File("/srv/pos/a"), "two");
}

TEST_F(DownloadStoreEdges, ReallyClosesBehindACloseAndBehindAVariable) {
    std::vector<int32_t> open;
    Say({Open("a", 1), Write("x"), "C", "LA\x1C"s + "1", Open("b", 1), "LB\x1C"s + "2", "C", "S"});
    onPayload = [&](size_t) { open.push_back(host.files.nOpenStreams()); };
    ASSERT_EQ(Run(), 0);
    // Seen behind: request, open, write, close, variable, open, variable, close.
    EXPECT_EQ(open, (std::vector<int32_t>{0, 1, 1, 0, 0, 1, 1, 0}));
}

TEST_F(DownloadStoreEdges, ReportsDataBehindAClose) {
    EXPECT_EQ(Receive({Open("a", 1), Write("x"), "C", Write("lost")}), 1);
    ExpectFailure(1000028, "Failed writing to file. : data=lost");
    EXPECT_EQ(File("/srv/pos/a"), "x");
}

TEST_F(DownloadStoreEdges, GoesOnWithTheOpenFileBehindAPseudoFile) {
    ASSERT_EQ(Receive({Open("a", 6), Write("one"), Open("SETGROUP.2", 0), Write("two"), "C",
                       Open("b", 0), "C"}),
              0);
    EXPECT_EQ(File("/srv/pos/a"), "onetwo") << "a change of folder closes nothing";
    EXPECT_EQ(Tree(), (Strings{"2/", "2/b", "a"}));
    ASSERT_EQ(engine->lNumFilesDownloaded(), 1) << "the close names the pseudo-file";
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "b");
}

TEST_F(DownloadStoreEdges, CountsFromZeroBehindAPseudoFile) {
    std::vector<int32_t> counts;
    Say({Open("a", 3), Write("one"), "C", Open("SETGROUP.2", 5), "C", Open("SETDRIVE.F", 5), "S"});
    onPayload = [&](size_t) { counts.push_back(engine->lFileBytesDownloaded()); };
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(counts, (std::vector<int32_t>{0, 0, 3, 3, 0, 0, 0}));
    Say({Open("a", 3), Write("one"), Open("SETDRIVE.F", 5), "S"});
    counts.clear();
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(counts, (std::vector<int32_t>{0, 0, 3, 0}));
}

// ---- Folders and names.

TEST_F(DownloadStoreEdges, LeavesAFileInThePlaceOfTheWorkingFolderUnharmed) {
    host.files.Put("/srv/pos", "a file");
    EXPECT_EQ(Receive({}), 1);
    ExpectFailure(1000026, "Failed creating folder : /srv/pos\\");
    EXPECT_EQ(File("/srv/pos"), "a file");
    EXPECT_EQ(peer.nConnections(), 0);
}

TEST_F(DownloadStoreEdges, MakesTheMissingGroupFolderOfADriveThatStands) {
    ASSERT_EQ(Receive({Open("SETDRIVE.F", 0), "C", Open("SETDRIVE.G", 0), "C",
                       Open("SETGROUP.3", 0), "C", Open("SETDRIVE.F", 0), "C", Open("a", 0), "C"}),
              0);
    EXPECT_EQ(Tree(), (Strings{"F/", "F/3/", "F/3/a", "G/", "G/3/"}));
    EXPECT_EQ(engine->strCurrentFolder(), "/srv/pos\\F\\3\\");
}

TEST_F(DownloadStoreEdges, StoresRelativeNamesInFoldersThatStand) {
    Say({Open(".\\x", 1), Write("1"), "C", Open("F\\x", 1), Write("2"), "C", "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 0)
            host.files.MakeFolder("/srv/pos/F");
    };
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(Tree(), (Strings{"F/", "F/x", "x"}));
    EXPECT_EQ(File("/srv/pos/x"), "1");
    EXPECT_EQ(File("/srv/pos/F/x"), "2");
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), ".\\x");
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(1), "F\\x");
}

TEST_F(DownloadStoreEdges, StoresNamesWithAColonThatNameNoDrive) {
    for (const char* name : {"1:x", "::", ":", "_:x", "ab:c", "@:", "[:", "`:", "{:"}) {
        ASSERT_EQ(Receive({Open(name, 1), Write("x"), "C"}), 0) << name;
        EXPECT_EQ(Tree(), Strings{name});
        ASSERT_EQ(Receive({Open("SETGROUP."s + name, 0), "C", Open("a", 0), "C"}), 0) << name;
        EXPECT_EQ(Tree(), (Strings{name + "/"s, name + "/a"s}));
    }
}

TEST_F(DownloadStoreEdges, RefusesEveryDriveLetterInEitherCase) {
    for (const char* name : {"A:x", "a:x", "Z:x", "z:x", "m:"}) {
        host.files.Remove("/log/session.log");
        EXPECT_EQ(Receive({Open(name, 1), "C"}), 1) << name;
        ExpectFailure(1000027, "Failed opening file : /srv/pos\\");
        EXPECT_EQ(Tree(), Strings{}) << name;
    }
}

// ---- The folders of the serial client and of the pass-through.

TEST_F(DownloadStoreEdges, PreparesDriveIAndGroup1InEveryOtherMode) {
    for (int32_t lMode : {1, 2, 3}) {
        config.lOperatingMode(lMode);
        TBrennikProtocol oProtocol;
        TBrennikProtocolTestAccess access(oProtocol);
        host.files.Put("/srv/pos/old.txt", "old");
        ASSERT_EQ(access.InitialiseFolders(config), 0) << lMode;
        EXPECT_EQ(Tree(), (Strings{"I/", "I/1/"})) << lMode;
        EXPECT_EQ(oProtocol.strBaseFolder(), "/srv/pos\\");
        EXPECT_EQ(oProtocol.strCurrentFolder(), "/srv/pos\\I\\1\\");
        EXPECT_EQ(access.strDriveFolder(), "I\\");
        EXPECT_EQ(access.strGroupFolder(), "1\\");
    }
}

TEST_F(DownloadStoreEdges, ReportsDriveIOrGroup1ThatCannotBeMade) {
    const Strings paths = {"/srv/pos\\I\\", "/srv/pos\\I\\1\\"};
    for (int32_t lMode : {1, 2}) {
        for (size_t n = 0; n < paths.size(); ++n) {
            config.lOperatingMode(lMode);
            TBrennikProtocol oProtocol;
            TBrennikProtocolTestAccess access(oProtocol);
            host.FailNext(Op::CreateFolder, {}, 1, static_cast<int32_t>(n) + 1);
            EXPECT_EQ(access.InitialiseFolders(config), 1);
            EXPECT_EQ(oProtocol.lErrorCode(), 1000026);
            EXPECT_EQ(oProtocol.strErrorMessage(), "Failed creating folder : " + paths[n]);
            EXPECT_EQ(oProtocol.strBaseFolder(), "");
            EXPECT_EQ(oProtocol.strCurrentFolder(), "");
            EXPECT_EQ(access.strDriveFolder(), "");
            EXPECT_EQ(access.strGroupFolder(), "");
        }
    }
}

// ---- Failures that no handler names.

TEST_F(DownloadStoreEdges, TellsOfACloseThatFailsByItsOperation) {
    host.FailNext(Op::StreamClose);
    EXPECT_EQ(Receive({Open("a", 1), Write("x"), "C"}), 1);
    ExpectFailure(1000000, "TBrennikProtocol.CloseDownloadFile() Failed - Device I/O error");
}

TEST_F(DownloadStoreEdges, TellsOfAVariablesCloseThatFailsByItsOperation) {
    host.FailNext(Op::StreamClose, {.kind = FailureKind::DiskFull});
    EXPECT_EQ(Receive({"LA\x1C"s + "1"}), 1);
    ExpectFailure(1000000, "TBrennikProtocol.WriteToConfigSysFile() Failed - Disk full");
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(DownloadStoreEdges, TellsOfFoldersThatFailForWantOfMemory) {
    config.strWorkingFolder(kVeryLong);
    int32_t lResult = 0;
    {
        const AllocationLimit limit(kTooMuch);
        lResult = Run();
    }
    EXPECT_EQ(lResult, 1);
    ExpectFailure(1000000, "TBrennikProtocol.InitialiseFolders() Failed - Out of memory");
    EXPECT_EQ(peer.nConnections(), 0);
}

TEST_F(DownloadStoreEdges, TellsOfAnOpenThatFailsForWantOfMemory) {
    TBrennikProtocol oProtocol;
    TBrennikProtocolTestAccess access(oProtocol);
    ASSERT_EQ(access.InitialiseFolders(config), 0);
    TBrennikPacket oPacket;
    oPacket.strFilename(kVeryLong);
    bool bOpened = true;
    {
        const AllocationLimit limit(kTooMuch);
        bOpened = access.OpenDownloadFile(oPacket, false);
    }
    EXPECT_FALSE(bOpened);
    EXPECT_EQ(oProtocol.lErrorCode(), 1000000);
    EXPECT_EQ(oProtocol.strErrorMessage(),
              "TBrennikProtocol.OpenDownloadFile() Failed - Out of memory");
}

} // namespace
} // namespace brennik
