#include "tests/support/FileSystemFixture.h"

namespace brennik {
namespace {

// The files of a folder.

class FolderListTest : public FileSystemTest {
  protected:
    FolderListTest() {
        host.files.Put("C:\\list\\b.txt", "b");
        host.files.Put("C:\\list\\A.TXT", "a");
        host.files.Put("C:\\list\\c.dat", "c");
        host.files.MakeFolder("C:\\list\\d.txt");
    }

    /// Makes a file of that time of creation.
    void PutCreated(const std::string& strPath, int64_t lCreated) {
        host.files.Put(strPath, "x");
        host.files.SetTimes(strPath, {lCreated, 1794657600, 1794657600});
    }

    Names names{"old", "entries"};
};

TEST_F(FolderListTest, GetFilesInFolderEndsWithOneEmptyEntry) {
    EXPECT_EQ(files.GetFilesInFolder(names, "C:\\list", "*.txt"), 0);
    EXPECT_EQ(names, (Names{"A.TXT", "b.txt", ""}));
}

TEST_F(FolderListTest, GetFilesInFolderTakesEveryFileWithoutAPattern) {
    EXPECT_EQ(files.GetFilesInFolder(names, "C:\\list\\"), 0);
    EXPECT_EQ(names, (Names{"A.TXT", "b.txt", "c.dat", ""}));
    EXPECT_EQ(files.GetFilesInFolder(names, "C:\\list", ""), 0);
    EXPECT_EQ(names, (Names{"A.TXT", "b.txt", "c.dat", ""}));
}

TEST_F(FolderListTest, GetFilesInFolderMatchesWithoutRegardToCase) {
    host.files.Put("C:\\logs\\MyFLClient01.log", "x");
    host.files.Put("C:\\logs\\flclient", "x");
    host.files.Put("C:\\logs\\flclien", "x");
    EXPECT_EQ(files.GetFilesInFolder(names, "C:\\logs", "*flclient*"), 0);
    EXPECT_EQ(names, (Names{"flclient", "MyFLClient01.log", ""}));
}

TEST_F(FolderListTest, GetFilesInFolderThatFindsNoneGivesTwoAndOneEmptyEntry) {
    for (const char* strFolder : {"C:\\list", "C:\\none", ""}) {
        names = {"old"};
        EXPECT_EQ(files.GetFilesInFolder(names, strFolder, "*.zip"), 2) << strFolder;
        EXPECT_EQ(names, Names{""});
    }
    EXPECT_EQ(files.GetFilesInFolder(names, "C:\\list", "d*"), 2); // a folder is no file
    EXPECT_EQ(files.strErrorMessage(), "");
}

TEST_F(FolderListTest, AnEmptyFolderIsNotTheRoot) {
    host.files.Put("/file.txt", "x");
    EXPECT_EQ(files.GetFilesInFolder(names, "", "*"), 2);
    EXPECT_EQ(files.NoOfFilesInFolder("", "*"), 0);
    EXPECT_TRUE(files.DeleteFilesInFolder("", "*"));
    EXPECT_TRUE(files.DeleteFilesInFolderByDay("", "*", 0));
    EXPECT_TRUE(host.files.Exists("/file.txt"));
}

TEST_F(FolderListTest, NoOfFilesInFolderCountsFiles) {
    EXPECT_EQ(files.NoOfFilesInFolder("C:\\list"), 3);
    EXPECT_EQ(files.NoOfFilesInFolder("C:\\list", "*.txt"), 2);
    EXPECT_EQ(files.NoOfFilesInFolder("C:\\list", "*.zip"), 0);
    EXPECT_EQ(files.NoOfFilesInFolder("C:\\none", "*"), 0);
}

TEST_F(FolderListTest, DeleteFilesInFolderDeletesMatches) {
    EXPECT_TRUE(files.DeleteFilesInFolder("C:\\list", "*.txt"));
    EXPECT_EQ(host.files.Tree("C:\\list"), (Names{"c.dat", "d.txt/"}));
    EXPECT_TRUE(files.DeleteFilesInFolder("C:\\list", "*.txt"));
    EXPECT_TRUE(files.DeleteFilesInFolder("C:\\list"));
    EXPECT_EQ(host.files.Tree("C:\\list"), Names{"d.txt/"});
}

TEST_F(FolderListTest, DeleteFilesInFolderEndsAtTheFirstFailure) {
    host.files.Deny("C:\\list\\b.txt");
    EXPECT_FALSE(files.DeleteFilesInFolder("C:\\list"));
    EXPECT_EQ(files.strErrorMessage(), "DeleteFile() Failed - Permission denied");
    EXPECT_EQ(host.files.Tree("C:\\list"), (Names{"b.txt", "c.dat", "d.txt/"}));
}

TEST_F(FolderListTest, DeleteFilesInFolderByDayOfZeroDaysDeletesEveryMatch) {
    PutCreated("C:\\days\\now.log", 1794657600);
    PutCreated("C:\\days\\old.log", 0);
    PutCreated("C:\\days\\other.txt", 0);
    EXPECT_TRUE(files.DeleteFilesInFolderByDay("C:\\days", "*.log", 0));
    EXPECT_EQ(host.files.Tree("C:\\days"), Names{"other.txt"});
}

TEST_F(FolderListTest, DeleteFilesInFolderByDayCountsCalendarDaysFromTheCreation) {
    PutCreated("C:\\days\\lastsecond.log", 1794614399); // yesterday, 23:59:59
    PutCreated("C:\\days\\today.log", 1794614400);      // today, 00:00:00
    EXPECT_TRUE(files.DeleteFilesInFolderByDay("C:\\days", "*.log", 2));
    EXPECT_EQ(host.files.Tree("C:\\days"), (Names{"lastsecond.log", "today.log"}));
    EXPECT_TRUE(files.DeleteFilesInFolderByDay("C:\\days", "*.log", 1));
    EXPECT_EQ(host.files.Tree("C:\\days"), Names{"today.log"});
}

TEST_F(FolderListTest, DeleteFilesInFolderByDayComparesUniversalDaysWithTheLocalToday) {
    host.clock.SetLocal({2026, 11, 15, 1, 0, 0});
    host.clock.SetLocalOffsetSeconds(7200);        // it is 14 November, 23:00 in universal time
    PutCreated("C:\\days\\fresh.log", 1794657600); // 14 November in both
    EXPECT_TRUE(files.DeleteFilesInFolderByDay("C:\\days", "", 1));
    EXPECT_EQ(host.files.Tree("C:\\days"), Names{});
}

TEST_F(FolderListTest, DeleteFilesInFolderByDayFailsOnATimeThatHasNoDate) {
    PutCreated("C:\\days\\a.log", 910692730086);
    PutCreated("C:\\days\\b.log", 0);
    EXPECT_FALSE(files.DeleteFilesInFolderByDay("C:\\days", "*.log", 0));
    EXPECT_EQ(files.strErrorMessage(), "FileTimeToSystemTime Failed for :a.log");
    PutCreated("C:\\days\\a.log", -11644473601);
    EXPECT_FALSE(files.DeleteFilesInFolderByDay("C:\\days", "*.log", 0));
    EXPECT_EQ(host.files.Tree("C:\\days"), (Names{"a.log", "b.log"}));
    PutCreated("C:\\days\\a.log", -11644473600);
    EXPECT_TRUE(files.DeleteFilesInFolderByDay("C:\\days", "*.log", 0));
}

TEST_F(FolderListTest, DeleteFilesInFolderByDayEndsAtTheFirstFailure) {
    host.files.Deny("C:\\list\\b.txt");
    EXPECT_FALSE(files.DeleteFilesInFolderByDay("C:\\list", "", 0));
    EXPECT_EQ(files.strErrorMessage(), "DeleteFile() Failed - Permission denied");
    EXPECT_EQ(host.files.Tree("C:\\list"), (Names{"b.txt", "c.dat", "d.txt/"}));
}

} // namespace
} // namespace brennik
