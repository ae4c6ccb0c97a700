#include "tests/session/Contents.h"
#include "tests/session/SessionWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using namespace session;
using namespace std::string_literals;
using world::Op;

class DownloadStore : public SessionTest {
  protected:
    /// What stands below the working folder.
    std::vector<std::string> Tree() const { return host.files.Tree("/srv/pos"); }

    /// A whole session of the payloads and a success behind them.
    int32_t Receive(std::vector<std::string> payloads) {
        payloads.push_back("S");
        Say(std::move(payloads));
        return Run();
    }
};

using Strings = std::vector<std::string>;

// ---- The folders of an attempt.

TEST_F(DownloadStore, WipesTheWorkingFolderWithoutAFolderPerAttempt) {
    host.files.Put("/srv/pos/old/file.txt", "old");
    ASSERT_EQ(Receive({}), 0);
    EXPECT_EQ(Tree(), Strings{});
    EXPECT_TRUE(Exists("/srv/pos"));
    EXPECT_EQ(engine->strBaseFolder(), "/srv/pos\\");
}

TEST_F(DownloadStore, WipesTheWorkingFolderAlsoWithTheDeleteSettingAlone) {
    config.bDeleteFolderPerDownloadAttempt(true);
    host.files.Put("/srv/pos/old.txt", "old");
    ASSERT_EQ(Receive({}), 0);
    EXPECT_EQ(Tree(), Strings{});
}

TEST_F(DownloadStore, TakesAWorkingFolderWithItsBackslash) {
    config.strWorkingFolder("C:\\srv\\pos\\");
    ASSERT_EQ(Receive({Open("a.txt", 0), "C"}), 0);
    EXPECT_EQ(engine->strBaseFolder(), "C:\\srv\\pos\\");
    EXPECT_TRUE(Exists("/srv/pos/a.txt"));
}

TEST_F(DownloadStore, MakesAFolderOfDateAndTimePerAttemptAndKeepsTheOthers) {
    host.clock.SetLocal(DateTime{2026, 3, 4, 5, 6, 7});
    host.files.Put("/srv/pos/20260101-000000/old.txt", "old");
    config.bFolderperDownloadAttempt(true);
    ASSERT_EQ(Receive({Open("a.txt", 0), "C"}), 0);
    EXPECT_EQ(engine->strBaseFolder(), "/srv/pos\\20260304-050607\\");
    EXPECT_EQ(Tree(), (Strings{"20260101-000000/", "20260101-000000/old.txt", "20260304-050607/",
                               "20260304-050607/a.txt"}));
}

TEST_F(DownloadStore, NeedsTheWorkingFolderForAFolderPerAttempt) {
    config.bFolderperDownloadAttempt(true);
    EXPECT_EQ(Receive({}), 1);
    ExpectFailure(1000026, "Failed creating folder : /srv/pos\\20261114-120000\\");
    EXPECT_EQ(engine->strBaseFolder(), "");
    EXPECT_EQ(engine->strCurrentFolder(), "");
}

TEST_F(DownloadStore, DeletesEarlierAttemptsWhenBothSettingsAreOn) {
    host.files.Put("/srv/pos/20260101-000000/old.txt", "old");
    config.bFolderperDownloadAttempt(true);
    config.bDeleteFolderPerDownloadAttempt(true);
    ASSERT_EQ(Receive({}), 0);
    EXPECT_EQ(Tree(), Strings{"20261114-120000/"});
}

TEST_F(DownloadStore, MakesTheWorkingFolderWhenBothSettingsAreOn) {
    config.bFolderperDownloadAttempt(true);
    config.bDeleteFolderPerDownloadAttempt(true);
    ASSERT_EQ(Receive({}), 0);
    EXPECT_EQ(Tree(), Strings{"20261114-120000/"});
}

TEST_F(DownloadStore, DeletesTheAttemptOfTheSameSecond) {
    host.files.Put("/srv/pos/20261114-120000/other.txt", "of a run in the same second");
    config.bFolderperDownloadAttempt(true);
    ASSERT_EQ(Receive({}), 0);
    EXPECT_EQ(Tree(), Strings{"20261114-120000/"});
}

TEST_F(DownloadStore, StopsAtAFailedDeleteAndNothingTurnsItIntoASuccess) {
    for (bool bBoth : {false, true}) {
        host.files.Remove("/log/session.log");
        host.files.Put("/srv/pos/old.txt", "old");
        host.files.SetReadOnly("/srv/pos/old.txt", true);
        config.bFolderperDownloadAttempt(bBoth);
        config.bDeleteFolderPerDownloadAttempt(bBoth);
        EXPECT_EQ(Receive({}), 1);
        ExpectFailure(1000029, "Failed deleting folder. : /srv/pos\\");
        EXPECT_EQ(peer.nConnections(), 0);
        EXPECT_EQ(Tree(), Strings{"old.txt"});
        EXPECT_EQ(engine->strBaseFolder(), "");
    }
}

TEST_F(DownloadStore, ReportsAFolderThatCannotBeMade) {
    host.files.DenyWrites("/srv/pos");
    EXPECT_EQ(Receive({}), 1);
    ExpectFailure(1000026, "Failed creating folder : /srv/pos\\");
}

TEST_F(DownloadStore, DoesNotLookAtAFailedCreationOfTheEmptiedWorkingFolder) {
    host.files.Put("/srv/pos/old.txt", "old");
    config.bFolderperDownloadAttempt(true);
    config.bDeleteFolderPerDownloadAttempt(true);
    host.FailNext(Op::CreateFolder);
    EXPECT_EQ(Receive({}), 1);
    ExpectFailure(1000026, "Failed creating folder : /srv/pos\\20261114-120000\\");
}

TEST_F(DownloadStore, TouchesNothingForDangerousWorkingFolders) {
    host.files.Put("/home/user/letter.txt", "mine");
    const auto before = Contents(host.files);
    for (const char* folder : {"", "\\", "/", "C:\\", "C:", "/home/user", "/home", "\\home\\",
                               "/opt/brennik", "/opt", "C:\\home\\user\\"}) {
        host.files.Remove("/log/session.log");
        config.strWorkingFolder(folder);
        EXPECT_EQ(Receive({Open("a.txt", 0), "C"}), 1) << folder;
        EXPECT_EQ(engine->lErrorCode(), 1000029) << folder;
        const std::string strFolder =
            std::string(folder).empty() || std::string(folder).back() != '\\'
                ? std::string(folder) + "\\"
                : folder;
        EXPECT_EQ(engine->strErrorMessage(), "Failed deleting folder. : " + strFolder) << folder;
        host.files.Remove("/log/session.log");
        EXPECT_EQ(Contents(host.files), before) << folder;
    }
    EXPECT_EQ(peer.nConnections(), 0);
}

TEST_F(DownloadStore, TouchesNothingForAnUnknownProfile) {
    host.files.Put("/home/user/letter.txt", "mine");
    TBrennikClientConfig unknown;
    ASSERT_EQ(unknown.GetConfiguration("/config", 99), 0);
    const auto before = Contents(host.files);
    TBrennikProtocol oProtocol;
    EXPECT_EQ(oProtocol.DoBrennikProtocol(unknown, "/config", 99), 1);
    EXPECT_EQ(oProtocol.lErrorCode(), 1000029);
    EXPECT_EQ(oProtocol.strErrorMessage(), "Failed deleting folder. : \\");
    EXPECT_EQ(Contents(host.files), before);
}

// ---- Opening.

TEST_F(DownloadStore, EmptiesAnExistingFileOnOpenAndAppendsOnA) {
    ASSERT_EQ(Receive({Open("f", 3), Write("abc"), "C", Open("f", 3, 'A'), Write("def"), "C",
                       Open("g", 3), Write("old"), "C", Open("g", 3), Write("n"), "C",
                       Open("new", 1, 'A'), Write("x"), "C"}),
              0);
    EXPECT_EQ(File("/srv/pos/f"), "abcdef");
    EXPECT_EQ(File("/srv/pos/g"), "n");
    EXPECT_EQ(File("/srv/pos/new"), "x") << "an append makes a file that doesn't exist";
}

TEST_F(DownloadStore, CountsAResumedFileFromZero) {
    std::vector<int32_t> counts;
    Say({Open("f", 6), Write("abc"), "C", Open("f", 6, 'A'), Write("def"), "C", "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 4 || nIndex == 5)
            counts.push_back(engine->lFileBytesDownloaded());
    };
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(counts, (std::vector<int32_t>{0, 3}));
}

TEST_F(DownloadStore, StoresDefaultAsATextFileInAnyCase) {
    for (const char* name : {"<DEFAULT>", "<default>", "<DeFault>"}) {
        ASSERT_EQ(Receive({Open(name, 1), Write("x"), "C"}), 0) << name;
        EXPECT_EQ(Tree(), Strings{"default.txt"});
        EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "default.txt");
    }
    ASSERT_EQ(Receive({Open("<DEFAULT>x", 0), "C"}), 0);
    EXPECT_EQ(Tree(), Strings{"<DEFAULT>x"});
}

TEST_F(DownloadStore, ReportsAFileThatCannotBeOpened) {
    host.files.MakeFolder("/srv/pos");
    host.FailNext(Op::OpenText);
    EXPECT_EQ(Receive({Open("a.txt", 1)}), 1);
    ExpectFailure(1000027, "Failed opening file : /srv/pos\\");
    EXPECT_EQ(engine->strDownloadFileName(), "") << "the file under way stays what it was";
}

TEST_F(DownloadStore, ReportsAFileInAFolderThatIsMissing) {
    EXPECT_EQ(Receive({Open("sub\\a.txt", 1)}), 1);
    ExpectFailure(1000027, "Failed opening file : /srv/pos\\");
}

TEST_F(DownloadStore, KeepsReceivedNamesInsideTheBaseFolder) {
    host.files.Put("/etc/x", "system");
    host.files.MakeFolder("/srv/pos");
    for (const std::string& strName :
         {"..\\x"s, "../x"s, "..\\..\\x"s, "../../etc/x"s, "a\\..\\..\\x"s, "/etc/x"s, "\\etc\\x"s,
          "C:\\x"s, "C:x"s, "/x"s, "zero\0byte"s, "."s, ".."s, ""s}) {
        host.files.Remove("/log/session.log");
        EXPECT_EQ(Receive({Open(strName, 1), Write("evil"), "C"}), 1) << strName;
        ExpectFailure(1000027, "Failed opening file : /srv/pos\\");
        EXPECT_EQ(Tree(), Strings{}) << strName;
    }
    EXPECT_EQ(File("/etc/x"), "system");
    EXPECT_FALSE(Exists("/srv/x"));
    EXPECT_FALSE(Exists("/x"));
}

TEST_F(DownloadStore, FollowsNoLinkThatWasPlantedInTheFolder) {
    host.files.Put("/etc/passwd", "root");
    Say({Open("link", 1), Write("evil"), "C", "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 0)
            host.files.MakeLink("/srv/pos/link", "/etc/passwd");
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000027, "Failed opening file : /srv/pos\\");
    EXPECT_EQ(File("/etc/passwd"), "root");
}

TEST_F(DownloadStore, FollowsNoLinkForConfigSysOrAGroupFolder) {
    host.files.Put("/etc/config.sys", "root");
    Say({"LA\x1C"s + "1", "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 0)
            host.files.MakeLink("/srv/pos/config.sys", "/etc/config.sys");
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000024, "Failed opening config system file : /srv/pos\\config.sys");
    EXPECT_EQ(File("/etc/config.sys"), "root");

    host.files.Remove("/log/session.log");
    Say({Open("SETGROUP.out", 0), "C", "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 0)
            host.files.MakeLink("/srv/pos/out", "/etc");
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000026, "Failed creating folder : /srv/pos\\out\\");
}

TEST_F(DownloadStore, StoresNamesWithBytesAbove127AsTheyCome) {
    ASSERT_EQ(Receive({Open("caf\xE9.txt", 1), Write("x"), "C"}), 0);
    EXPECT_EQ(Tree(), Strings{"caf\xE9.txt"});
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "caf\xE9.txt");
}

// ---- Drives and groups.

TEST_F(DownloadStore, ChangesDriveAndGroup) {
    ASSERT_EQ(Receive({Open("root.txt", 0), "C", Open("SETDRIVE.F", 0), "C", Open("f.txt", 0), "C",
                       Open("SETGROUP.2", 0), "C", Open("f2.txt", 0), "C"}),
              0);
    EXPECT_EQ(Tree(), (Strings{"F/", "F/2/", "F/2/f2.txt", "F/f.txt", "root.txt"}));
    ASSERT_EQ(engine->lNumFilesDownloaded(), 3);
    EXPECT_EQ(engine->GetFolderFromDownloadArray(0), "/srv/pos\\");
    EXPECT_EQ(engine->GetFolderFromDownloadArray(1), "/srv/pos\\F\\");
    EXPECT_EQ(engine->GetFolderFromDownloadArray(2), "/srv/pos\\F\\2\\");
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(2), "f2.txt");
    EXPECT_EQ(engine->strCurrentFolder(), "/srv/pos\\F\\2\\");
    EXPECT_EQ(engine->strBaseFolder(), "/srv/pos\\");
}

TEST_F(DownloadStore, ReplacesTheGroupAndKeepsTheDrive) {
    ASSERT_EQ(Receive({Open("SETDRIVE.F", 0), "C", Open("SETGROUP.2", 0), "C",
                       Open("SETGROUP.3", 0), "C", Open("a", 0), "C"}),
              0);
    EXPECT_EQ(Tree(), (Strings{"F/", "F/2/", "F/3/", "F/3/a"}));
}

TEST_F(DownloadStore, CarriesTheGroupIntoANewDrive) {
    ASSERT_EQ(Receive({Open("SETGROUP.2", 0), "C", Open("SETDRIVE.F", 0), "C", Open("a", 0), "C",
                       Open("SETDRIVE.F", 0), "C", Open("b", 0), "C"}),
              0);
    EXPECT_EQ(Tree(), (Strings{"2/", "F/", "F/2/", "F/2/a", "F/2/b"}));
}

TEST_F(DownloadStore, MakesOneFolderForANewDriveWhileThereIsNoGroup) {
    Say({Open("SETDRIVE.F", 0), "C", Open("SETDRIVE.F", 0), "C", "S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(Tree(), Strings{"F/"});
}

TEST_F(DownloadStore, ListsAPseudoFileInLowerCaseAsAFileAllTheSame) {
    ASSERT_EQ(Receive({Open("setgroup.3", 0), "C", Open("a", 0), "C", Open("SetDrive.g", 0), "C"}),
              0);
    EXPECT_EQ(Tree(), (Strings{"3/", "3/a", "g/", "g/3/"}));
    ASSERT_EQ(engine->lNumFilesDownloaded(), 3);
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "setgroup.3");
    EXPECT_EQ(engine->GetFolderFromDownloadArray(0), "/srv/pos\\3\\");
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(2), "SetDrive.g");
}

TEST_F(DownloadStore, ReusesTheSlotOfAPseudoFile) {
    ASSERT_EQ(Receive({Open("SETGROUP.1", 0), "C", Open("SETGROUP.2", 0), "C", Open("a", 0), "C"}),
              0);
    ASSERT_EQ(engine->lNumFilesDownloaded(), 1);
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "a");
}

TEST_F(DownloadStore, TakesAnyNameThatContainsAPseudoNameAsAChangeOfFolder) {
    ASSERT_EQ(Receive({Open("mySETGROUPx.txt", 5), "C"}), 0);
    // The folder is what stands behind nine characters, wherever the word stands.
    EXPECT_EQ(Tree(), (Strings{"Px.txt/"}));
    EXPECT_EQ(engine->lNumFilesDownloaded(), 1) << "no dot behind the word: listed as a file";
    ASSERT_EQ(Receive({Open("SETDRIVESETGROUP", 0), "C"}), 0);
    EXPECT_EQ(Tree(), (Strings{"ETGROUP/"})) << "the group is looked for first";
}

TEST_F(DownloadStore, KeepsAnEmptyFolderLevelAsItComes) {
    ASSERT_EQ(Receive({Open("SETDRIVE", 0), "C", Open("a", 0), "C", Open("SETGROUP.", 0), "C",
                       Open("b", 0), "C"}),
              0);
    EXPECT_EQ(engine->GetFolderFromDownloadArray(0), "/srv/pos\\\\") << "of the word without a dot";
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "SETDRIVE");
    EXPECT_EQ(engine->GetFolderFromDownloadArray(2), "/srv/pos\\\\\\");
    EXPECT_EQ(Tree(), (Strings{"a", "b"}));
}

TEST_F(DownloadStore, SetsTheFileInHandFromAPseudoFile) {
    std::vector<std::string> seen;
    Say({Open("SETGROUP.2", 77), "C", "S"});
    onPayload = [&](size_t nIndex) {
        if (nIndex == 1)
            seen.push_back(engine->strDownloadFileName() + " " +
                           std::to_string(engine->lDownloadFileSize()));
    };
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(seen, Strings{"SETGROUP.2 77"});
}

TEST_F(DownloadStore, KeepsReceivedFolderNamesInsideTheBaseFolder) {
    host.files.MakeFolder("/srv/pos");
    for (const std::string& strName :
         {"SETGROUP..."s, "SETDRIVE..."s, "SETGROUP.../up"s, "SETDRIVE...\\up"s, "SETGROUP./etc"s,
          "SETDRIVE.\\etc"s, "SETDRIVE.C:\\x"s, "SETGROUP.C:"s, "SETGROUP.a\\..\\.."s}) {
        host.files.Remove("/log/session.log");
        EXPECT_EQ(Receive({Open(strName, 0), "C", Open("x", 1), Write("evil"), "C"}), 1) << strName;
        ExpectFailure(1000026, "Failed creating folder : /srv/pos\\" + strName.substr(9) + "\\");
        EXPECT_EQ(Tree(), Strings{}) << strName;
    }
    EXPECT_FALSE(Exists("/srv/x"));
    EXPECT_EQ(Receive({Open("SETGROUP.zero\0byte"s, 0), "C"}), 1);
    EXPECT_EQ(engine->strErrorMessage(), "Failed creating folder : /srv/pos\\zero\0byte\\"s);
    EXPECT_EQ(Tree(), Strings{});
}

TEST_F(DownloadStore, ReportsAGroupOrDriveFolderThatCannotBeMade) {
    for (const char* word : {"SETGROUP", "SETDRIVE"}) {
        host.files.Remove("/log/session.log");
        EXPECT_EQ(Receive({Open(word + ".no\\such"s, 0), "C"}), 1);
        ExpectFailure(1000026, "Failed creating folder : /srv/pos\\no\\such\\");
    }
    host.files.Remove("/log/session.log");
    Say({Open("SETGROUP.2", 0), "C", Open("SETDRIVE.F", 0), "C", "S"});
    host.FailNext(Op::CreateFolder, {}, 1, 3); // base, group, drive pass; the group in it fails
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000026, "Failed creating folder : /srv/pos\\F\\2\\");
}

// ---- Writing.

TEST_F(DownloadStore, ReportsDataWithNoFileOpen) {
    EXPECT_EQ(Receive({Write("lost")}), 1);
    ExpectFailure(1000028, "Failed writing to file. : data=lost");
}

TEST_F(DownloadStore, ReportsDataBehindAPseudoFile) {
    EXPECT_EQ(Receive({Open("SETGROUP.1", 0), Write("lost")}), 1);
    ExpectFailure(1000028, "Failed writing to file. : data=lost");
}

TEST_F(DownloadStore, KeepsWhatWasWrittenWhenTheDiskIsFull) {
    Say({Open("a", 10), Write("12345"), Write("67890"), "C", "S"});
    config.bLoggingEnabled(false);
    host.files.SetQuota(host.files.TotalBytes() + 8);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000028);
    EXPECT_EQ(engine->strErrorMessage(), "Failed writing to file. : data=67890");
    EXPECT_EQ(File("/srv/pos/a"), "12345678");
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(DownloadStore, FailsWhenTheCountOfBytesRunsOver) {
    // 32,768 blocks that state 65,535 bytes each and carry none pass 2^31.
    config.bLoggingEnabled(false);
    std::vector<std::string> payloads{Open("a", 1)};
    payloads.insert(payloads.end(), 32769, "B\xFF\xFF\0\0\0\0"s);
    EXPECT_EQ(Receive(std::move(payloads)), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000000);
    EXPECT_EQ(engine->strErrorMessage(),
              "TBrennikProtocol.WriteToDownloadFile() Failed - Overflow");
    EXPECT_EQ(engine->lFileBytesDownloaded(), 32768 * 65535);
}

// ---- Configuration variables.

TEST_F(DownloadStore, CollectsVariablesLineByLineInTheCurrentFolder) {
    ASSERT_EQ(Receive({"L*A\x1C"s + "1", "LB\x1C"s + "x\x1C"s + "y", "Lplain",
                       Open("SETGROUP.2", 0), "C", "LC\x1C"s + "2"}),
              0);
    EXPECT_EQ(File("/srv/pos/config.sys"), "*A=1\r\nB=x=y\r\nplain\r\n");
    EXPECT_EQ(File("/srv/pos/2/config.sys"), "C=2\r\n");
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(DownloadStore, ReportsAConfigSysThatCannotBeOpened) {
    host.FailNext(Op::OpenText);
    EXPECT_EQ(Receive({"LA\x1C"s + "1"}), 1);
    ExpectFailure(1000024, "Failed opening config system file : /srv/pos\\config.sys");
}

TEST_F(DownloadStore, ReportsAConfigSysThatCannotBeWrittenAndClosesIt) {
    host.FailNext(Op::StreamWrite);
    EXPECT_EQ(Receive({"LA\x1C"s + "1"}), 1);
    ExpectFailure(1000025, "Failed writing to config system file : data=A=1");
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

} // namespace
} // namespace brennik
