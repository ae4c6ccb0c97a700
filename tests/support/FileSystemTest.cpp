#include "tests/support/FileSystemFixture.h"
#include "tests/world/SwappedHost.h"

#include <memory>

namespace brennik {
namespace {

// Names.

TEST_F(FileSystemTest, GetFileNameNoExtEndsAtTheFirstDot) {
    EXPECT_EQ(FileSystem::GetFileNameNoExt("a.b.c"), "a");
    EXPECT_EQ(FileSystem::GetFileNameNoExt("name"), "name");
    EXPECT_EQ(FileSystem::GetFileNameNoExt("name."), "name");
    EXPECT_EQ(FileSystem::GetFileNameNoExt(""), "");
}

TEST_F(FileSystemTest, GetFileNameNoExtGivesTheWholeNameWhenItBeginsWithADot) {
    EXPECT_EQ(FileSystem::GetFileNameNoExt(".profile"), ".profile");
    EXPECT_EQ(FileSystem::GetFileNameNoExt(".a.b"), ".a.b");
}

TEST_F(FileSystemTest, GetFileNameFromPathNeedsABackslashAtPosition2OrLater) {
    EXPECT_EQ(FileSystem::GetFileNameFromPath("C:\\temp\\name.txt"), "name.txt");
    EXPECT_EQ(FileSystem::GetFileNameFromPath("a\\b"), "b");
    EXPECT_EQ(FileSystem::GetFileNameFromPath("name.txt"), "");
    EXPECT_EQ(FileSystem::GetFileNameFromPath("\\name"), "");
    EXPECT_EQ(FileSystem::GetFileNameFromPath("\\a\\b"), "b");
    EXPECT_EQ(FileSystem::GetFileNameFromPath("C:\\temp\\"), "");
    EXPECT_EQ(FileSystem::GetFileNameFromPath("/srv/name"), "");
    EXPECT_EQ(FileSystem::GetFileNameFromPath(""), "");
}

TEST_F(FileSystemTest, GetFileExtensionStandsBehindTheLeftmostDotFromPosition2On) {
    EXPECT_EQ(FileSystem::GetFileExtension("a.b.c"), "b.c");
    EXPECT_EQ(FileSystem::GetFileExtension("a."), "");
    EXPECT_EQ(FileSystem::GetFileExtension("a"), "");
    EXPECT_EQ(FileSystem::GetFileExtension(".profile"), "");
    EXPECT_EQ(FileSystem::GetFileExtension(".a.b"), "b");
    EXPECT_EQ(FileSystem::GetFileExtension(""), "");
}

// What is there.

TEST_F(FileSystemTest, FileExistsLeavesATextEitherWay) {
    host.files.Put("C:\\temp\\a.txt", "x");
    EXPECT_TRUE(files.FileExists("C:\\temp\\a.txt"));
    EXPECT_EQ(files.strErrorMessage(), "C:\\temp\\a.txt already exists");
    EXPECT_FALSE(files.FileExists("C:\\temp\\b.txt"));
    EXPECT_EQ(files.strErrorMessage(), "C:\\temp\\b.txt does not exist");
    EXPECT_FALSE(files.FileExists(""));
    EXPECT_EQ(files.strErrorMessage(), " does not exist");
}

TEST_F(FileSystemTest, FileExistsCountsFoldersAndWildcards) {
    host.files.Put("C:\\temp\\Report1.TXT", "x");
    EXPECT_TRUE(files.FileExists("C:\\temp"));
    EXPECT_TRUE(files.FileExists("C:\\temp\\rep*.txt"));
    EXPECT_TRUE(files.FileExists("C:\\temp\\report?.txt"));
    EXPECT_FALSE(files.FileExists("C:\\temp\\x*"));
}

TEST_F(FileSystemTest, FolderExistsIsTrueForFoldersAlone) {
    host.files.Put("C:\\temp\\a.txt", "x");
    EXPECT_TRUE(files.FolderExists("C:\\temp"));
    EXPECT_TRUE(files.FolderExists("C:\\temp\\"));
    EXPECT_FALSE(files.FolderExists("C:\\temp\\a.txt"));
    EXPECT_FALSE(files.FolderExists("C:\\none"));
    EXPECT_FALSE(files.FolderExists(""));
    EXPECT_EQ(files.strErrorMessage(), "");
}

TEST_F(FileSystemTest, GetFileTimesTellsUniversalTime) {
    host.files.Put("C:\\a.txt", "x");
    host.files.SetTimes("C:\\a.txt", {1772694489, 1794614399, 1794657600});
    host.clock.SetLocalOffsetSeconds(3600);
    DateTime created, accessed, modified;
    EXPECT_TRUE(files.GetFileTimes("C:\\a.txt", created, accessed, modified, false));
    EXPECT_EQ(created, (DateTime{2026, 3, 5, 7, 8, 9}));
    EXPECT_EQ(accessed, (DateTime{2026, 11, 13, 23, 59, 59}));
    EXPECT_EQ(modified, (DateTime{2026, 11, 14, 12, 0, 0}));
}

TEST_F(FileSystemTest, GetFileTimesUsesOneOffsetForAllLocalTimes) {
    host.files.Put("C:\\a.txt", "x");
    host.files.SetTimes("C:\\a.txt", {1772694489, 1794614399, 1794657600});
    host.clock.SetLocalOffsetSeconds(-5400);
    DateTime created, accessed, modified;
    EXPECT_TRUE(files.GetFileTimes("C:\\a.txt", created, accessed, modified, true));
    EXPECT_EQ(created, (DateTime{2026, 3, 5, 5, 38, 9}));
    EXPECT_EQ(accessed, (DateTime{2026, 11, 13, 22, 29, 59}));
    EXPECT_EQ(modified, (DateTime{2026, 11, 14, 10, 30, 0}));
}

TEST_F(FileSystemTest, GetFileTimesOfAFileThatCannotBeOpenedIsFalse) {
    const DateTime before{2000, 1, 2, 3, 4, 5};
    DateTime created = before, accessed = before, modified = before;
    EXPECT_FALSE(files.GetFileTimes("C:\\none.txt", created, accessed, modified, true));
    host.files.Put("C:\\a.txt", "x");
    host.files.SetTimes("C:\\a.txt", {0, 0, INT64_MAX / 2}); // no date either
    EXPECT_FALSE(files.GetFileTimes("C:\\a.txt", created, accessed, modified, false));
    EXPECT_EQ(created, before);
    EXPECT_EQ(accessed, before);
    EXPECT_EQ(modified, before);
}

TEST_F(FileSystemTest, SizesAreBytes) {
    host.files.Put("C:\\temp\\a.txt", "12345");
    host.files.Put("C:\\temp\\sub\\b.txt", "123");
    EXPECT_EQ(files.GetFileSize("C:\\temp\\a.txt"), 5);
    EXPECT_EQ(files.GetFolderSize("C:\\temp"), 8);
}

TEST_F(FileSystemTest, SizesOfWhatIsMissingAreMinusOne) {
    EXPECT_EQ(files.GetFileSize("C:\\none.txt"), -1);
    EXPECT_EQ(files.strErrorMessage(), "GetFileSize() Failed - File not found");
    EXPECT_EQ(files.GetFolderSize("C:\\none"), -1);
    EXPECT_EQ(files.strErrorMessage(), "GetFolderSize() Failed - Path not found");
}

// Folders and single files.

TEST_F(FileSystemTest, CreateFolderMakesOneLevel) {
    EXPECT_EQ(files.CreateFolder("C:\\one"), 0);
    EXPECT_TRUE(host.files.Exists("C:\\one"));
    EXPECT_EQ(files.CreateFolder("C:\\two\\three"), 1);
    EXPECT_EQ(files.strErrorMessage(), "CreateFolder() Failed - Path not found");
    EXPECT_FALSE(host.files.Exists("C:\\two"));
    EXPECT_EQ(files.CreateFolder("C:\\one"), 1);
    EXPECT_EQ(files.strErrorMessage(), "CreateFolder() Failed - File already exists");
}

TEST_F(FileSystemTest, DeleteFolderActsAlikeWithAndWithoutATrailingBackslash) {
    for (const char* strPath : {"C:\\temp\\", "C:\\temp"}) {
        host.files.Put("C:\\temp\\sub\\a.txt", "x");
        EXPECT_EQ(files.DeleteFolder(strPath), 0) << files.strErrorMessage();
        EXPECT_FALSE(host.files.Exists("C:\\temp"));
        EXPECT_EQ(files.DeleteFolder(strPath), 1);
        EXPECT_EQ(files.strErrorMessage(), "DeleteFolder() Failed - Path not found");
    }
}

TEST_F(FileSystemTest, DeleteFolderIsNotForced) {
    host.files.Put("C:\\temp\\a.txt", "x");
    host.files.Put("C:\\temp\\b.txt", "x");
    host.files.SetReadOnly("C:\\temp\\b.txt", true);
    EXPECT_EQ(files.DeleteFolder("C:\\temp"), 1);
    EXPECT_EQ(files.strErrorMessage(), "DeleteFolder() Failed - Permission denied");
    EXPECT_TRUE(host.files.Exists("C:\\temp\\a.txt"));
}

TEST_F(FileSystemTest, DeleteFolderNeverWipes) {
    host.files.Put("/home/user/keep.txt", "x");
    host.files.Put("/srv/data/keep.txt", "x");
    host.files.MakeLink("/srv/link", "/srv/data");
    const auto tree = host.files.Tree();
    for (const char* strPath : {"", "\\", "/", "C:", "C:\\", "/home", "/home/user", "C:\\home\\",
                                "/opt/brennik", "/opt", "/srv/link", "/srv/*", "\\\\host\\share"}) {
        EXPECT_EQ(files.DeleteFolder(strPath), 1) << strPath;
    }
    EXPECT_EQ(host.files.Tree(), tree);
}

TEST_F(FileSystemTest, DeleteFileIsForced) {
    host.files.Put("C:\\a.txt", "x");
    host.files.SetReadOnly("C:\\a.txt", true);
    EXPECT_EQ(files.DeleteFile("C:\\a.txt"), 0);
    EXPECT_FALSE(host.files.Exists("C:\\a.txt"));
    EXPECT_EQ(files.DeleteFile("C:\\a.txt"), 1);
    EXPECT_EQ(files.strErrorMessage(), "DeleteFile() Failed - File not found");
}

TEST_F(FileSystemTest, CopyFileOverwrites) {
    host.files.Put("C:\\a.txt", "new");
    host.files.Put("C:\\b.txt", "old and longer");
    EXPECT_EQ(files.CopyFile("C:\\a.txt", "C:\\b.txt"), 0);
    EXPECT_EQ(host.files.Get("C:\\b.txt"), "new");
    EXPECT_EQ(host.files.Get("C:\\a.txt"), "new");
    EXPECT_EQ(files.CopyFile("C:\\none.txt", "C:\\b.txt"), 1);
    EXPECT_EQ(files.strErrorMessage(), "CopyFile() Failed - File not found");
}

TEST_F(FileSystemTest, MoveFileKeepsAnExistingTarget) {
    host.files.Put("C:\\a.txt", "a");
    host.files.Put("C:\\b.txt", "b");
    EXPECT_EQ(files.MoveFile("C:\\a.txt", "C:\\b.txt"), 1);
    EXPECT_EQ(files.strErrorMessage(), "MoveFile() Failed - File already exists");
    EXPECT_EQ(files.MoveFile("C:\\a.txt", "C:\\c.txt"), 0);
    EXPECT_EQ(host.files.Get("C:\\c.txt"), "a");
    EXPECT_EQ(host.files.Get("C:\\b.txt"), "b");
    EXPECT_FALSE(host.files.Exists("C:\\a.txt"));
}

TEST_F(FileSystemTest, SetFileAttributesTellsThePathOnFailure) {
    host.files.Put("C:\\a.txt", "x");
    EXPECT_TRUE(files.SetFileAttributes("C:\\a.txt", 1));
    EXPECT_TRUE(host.files.IsReadOnly("C:\\a.txt"));
    EXPECT_TRUE(files.SetFileAttributes("C:\\a.txt", 0x20));
    EXPECT_FALSE(host.files.IsReadOnly("C:\\a.txt"));
    EXPECT_FALSE(files.SetFileAttributes("C:\\none.txt", 1));
    EXPECT_EQ(files.strErrorMessage(), "Failed setting attributes for file - C:\\none.txt");
}

TEST_F(FileSystemTest, CopyFolderCopiesTheTree) {
    host.files.Put("C:\\from\\a.txt", "a");
    host.files.Put("C:\\from\\sub\\b.txt", "b");
    EXPECT_TRUE(files.CopyFolder("C:\\from", "C:\\to", false));
    EXPECT_EQ(host.files.Get("C:\\to\\a.txt"), "a");
    EXPECT_EQ(host.files.Get("C:\\to\\sub\\b.txt"), "b");
    host.files.Put("C:\\from\\a.txt", "new");
    EXPECT_FALSE(files.CopyFolder("C:\\from", "C:\\to", false));
    EXPECT_EQ(files.strErrorMessage(), "Error in FileSystem::CopyFolder - File already exists");
    EXPECT_EQ(host.files.Get("C:\\to\\a.txt"), "a");
    EXPECT_TRUE(files.CopyFolder("C:\\from", "C:\\to", true));
    EXPECT_EQ(host.files.Get("C:\\to\\a.txt"), "new");
}

TEST_F(FileSystemTest, CopySubFoldersTakesFoldersAlone) {
    host.files.Put("C:\\from\\file.txt", "x");
    host.files.Put("C:\\from\\one\\a.txt", "a");
    host.files.Put("C:\\from\\two\\deep\\b.txt", "b");
    host.files.MakeFolder("C:\\to");
    EXPECT_EQ(files.CopySubFolders("C:\\from", "C:\\to", false), 0) << files.strErrorMessage();
    EXPECT_EQ(host.files.Tree("C:\\to"),
              (Names{"one/", "one/a.txt", "two/", "two/deep/", "two/deep/b.txt"}));
    EXPECT_EQ(files.CopySubFolders("C:\\from\\", "C:\\to\\", true), 0);
}

TEST_F(FileSystemTest, CopySubFoldersOfNothingGivesTwo) {
    host.files.Put("C:\\from\\file.txt", "x");
    EXPECT_EQ(files.CopySubFolders("C:\\from", "C:\\to", false), 2);
    EXPECT_EQ(files.CopySubFolders("C:\\none", "C:\\to", false), 2);
    EXPECT_EQ(files.CopySubFolders("", "C:\\to", false), 2);
    EXPECT_EQ(files.strErrorMessage(), "");
}

TEST_F(FileSystemTest, CopySubFoldersIntoAnEmptyPathFails) {
    host.files.Put("C:\\from\\one\\a.txt", "a");
    const auto tree = host.files.Tree();
    EXPECT_EQ(files.CopySubFolders("C:\\from", "", true), 1);
    EXPECT_EQ(files.strErrorMessage(), "Error in FileSystem::CopySubFolders - Path not found");
    EXPECT_EQ(host.files.Tree(), tree);
}

TEST_F(FileSystemTest, CopySubFoldersEndsAtTheFirstFailure) {
    host.files.Put("C:\\from\\one\\a.txt", "a");
    host.files.Put("C:\\from\\two\\b.txt", "b");
    host.files.Put("C:\\to\\one\\a.txt", "old");
    EXPECT_EQ(files.CopySubFolders("C:\\from", "C:\\to", false), 1);
    EXPECT_EQ(files.strErrorMessage(), "Error in FileSystem::CopySubFolders - File already exists");
    EXPECT_FALSE(host.files.Exists("C:\\to\\two"));
}

TEST_F(FileSystemTest, ASuccessLeavesTheTextOfTheLastFailure) {
    EXPECT_EQ(files.DeleteFile("C:\\none.txt"), 1);
    EXPECT_EQ(files.CreateFolder("C:\\one"), 0);
    EXPECT_EQ(files.strErrorMessage(), "DeleteFile() Failed - File not found");
}

TEST_F(FileSystemTest, EveryFailureOfTheHostGivesItsTextAndDescription) {
    host.files.Put("C:\\a.txt", "x");
    std::string strData;
    const int32_t lReading = Open("C:\\a.txt", kRead);
    FailNext(world::Op::CreateFolder, FailureKind::DiskFull);
    EXPECT_EQ(files.CreateFolder("C:\\one"), 1);
    EXPECT_EQ(files.strErrorMessage(), "CreateFolder() Failed - Disk full");
    FailNext(world::Op::OpenText, FailureKind::TooManyFiles);
    EXPECT_EQ(files.OpenFile("C:\\a.txt", kRead), 0);
    EXPECT_EQ(files.strErrorMessage(), "Error Open File : C:\\a.txt - Too many files");
    FailNext(world::Op::StreamRead, FailureKind::DeviceIoError);
    EXPECT_EQ(files.ReadData(lReading, strData, false, 1), 1);
    EXPECT_EQ(files.strErrorMessage(), "ReadData() Failed - Device I/O error");
}

/// A disk that can do what the one in memory can't: hold giants, and fail in a search.
class OddFiles : public world::SimFiles {
  public:
    using SimFiles::SimFiles;

    std::vector<FoundFile> Find(const std::string& strPattern) override {
        if (bFailFind) {
            throw RuntimeFailure(FailureKind::OutOfMemory);
        }
        return SimFiles::Find(strPattern);
    }
    int64_t GetFileSize(const std::string&) override { return lSize; }
    int64_t GetFolderSize(const std::string&) override { return lSize; }
    std::unique_ptr<TextStream> OpenText(const std::string&, OpenMode) override {
        return std::make_unique<LastBytesLost>();
    }

    bool bFailFind = true;
    int64_t lSize = 0;

  private:
    struct LastBytesLost : TextStream {
        std::string Read(size_t) override { return {}; }
        std::string ReadLine() override { return {}; }
        std::string ReadAll() override { return {}; }
        bool AtEndOfStream() override { throw RuntimeFailure(FailureKind::DeviceIoError); }
        void Write(std::string_view) override {}
        void WriteLine(std::string_view) override {}
        void Close() override { throw RuntimeFailure(FailureKind::DiskFull); }
    };
};

class OddFilesTest : public FileSystemTest {
  protected:
    OddFiles odd{host.ledger, host.clock};

  private:
    Host oddHost_ = world::Swapped(host.TheHost(), odd);
    ScopedHost oddScoped_{oddHost_};
};

TEST_F(OddFilesTest, ASizeBeyond31BitsIsMinusOne) {
    odd.lSize = 2147483647;
    EXPECT_EQ(files.GetFileSize("C:\\a.bin"), 2147483647);
    EXPECT_EQ(files.GetFolderSize("C:\\a"), 2147483647);
    odd.lSize = 2147483648;
    EXPECT_EQ(files.GetFileSize("C:\\a.bin"), -1);
    EXPECT_EQ(files.strErrorMessage(), "GetFileSize() Failed - Overflow");
    EXPECT_EQ(files.GetFolderSize("C:\\a"), -1);
    EXPECT_EQ(files.strErrorMessage(), "GetFolderSize() Failed - Overflow");
}

TEST_F(OddFilesTest, ASearchThatFailsGivesTheTextOfItsOperation) {
    Names names;
    EXPECT_FALSE(files.FileExists("C:\\a"));
    EXPECT_EQ(files.strErrorMessage(), "Error in FileExists - Out of memory");
    EXPECT_EQ(files.GetFilesInFolder(names, "C:\\a", "*"), 1);
    EXPECT_EQ(files.strErrorMessage(), "Error in FileSystem::GetFilesByPattern - Out of memory");
    EXPECT_EQ(names, Names{""});
    EXPECT_EQ(files.NoOfFilesInFolder("C:\\a", "*"), 0);
    EXPECT_EQ(files.strErrorMessage(), "Error in FileSystem::NoOfFilesInFolder - Out of memory");
    files.CloseFile(0);
    EXPECT_FALSE(files.DeleteFilesInFolderByDay("C:\\a", "*", 0));
    EXPECT_EQ(files.strErrorMessage(),
              "Error in FileSystem::DeleteFilesInFolderByDay - Out of memory");
    EXPECT_FALSE(files.DeleteFilesInFolder("C:\\a", "*"));
    EXPECT_EQ(files.strErrorMessage(), "Error in FileSystem::NoOfFilesInFolder - Out of memory");
    EXPECT_EQ(files.CopySubFolders("C:\\a", "C:\\b", true), 1);
    EXPECT_EQ(files.strErrorMessage(), "Error in FileSystem::CopySubFolders - Out of memory");
}

TEST_F(OddFilesTest, EofOfAStreamThatFailsIsTrue) {
    const int32_t lHandle = files.OpenFile("C:\\a.txt", kRead);
    EXPECT_EQ(lHandle, 1);
    EXPECT_TRUE(files.Eof(lHandle));
}

TEST_F(OddFilesTest, AFailedCloseIsThrownAndTheHandleIsFreeAllTheSame) {
    EXPECT_EQ(files.OpenFile("C:\\a.txt", kWrite), 1);
    EXPECT_EQ(files.OpenFile("C:\\b.txt", kWrite), 2);
    EXPECT_THROW(files.CloseFile(1), RuntimeFailure);
    EXPECT_THROW(files.CloseFile(2), RuntimeFailure);
    EXPECT_EQ(files.OpenFile("C:\\c.txt", kWrite), 1);
}

} // namespace
} // namespace brennik
