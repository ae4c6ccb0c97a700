#include "tests/support/FileSystemFixture.h"

namespace brennik {
namespace {

// Text files.

TEST_F(FileSystemTest, OpenFileToReadNeedsAnExistingFile) {
    EXPECT_EQ(files.OpenFile("C:\\none.txt", kRead), 0);
    EXPECT_EQ(files.strErrorMessage(), "Error Open File : C:\\none.txt - File not found");
    EXPECT_FALSE(host.files.Exists("C:\\none.txt"));
}

TEST_F(FileSystemTest, OpenFileToWriteEmptiesTheFile) {
    host.files.Put("C:\\a.txt", "old text");
    const int32_t lHandle = Open("C:\\a.txt", kWrite);
    EXPECT_EQ(host.files.Get("C:\\a.txt"), "");
    EXPECT_EQ(files.WriteData(lHandle, "new", false), 0);
    EXPECT_EQ(host.files.Get("C:\\a.txt"), "new");
    Open("C:\\created.txt", kWrite);
    EXPECT_TRUE(host.files.Exists("C:\\created.txt"));
}

TEST_F(FileSystemTest, OpenFileWithAnyOtherModeAppends) {
    for (const int16_t iMode : {int16_t{2}, int16_t{8}, int16_t{-1}}) {
        host.files.Put("C:\\a.txt", "old");
        const int32_t lHandle = Open("C:\\a.txt", iMode);
        EXPECT_EQ(files.WriteData(lHandle, "new", false), 0);
        EXPECT_EQ(host.files.Get("C:\\a.txt"), "oldnew");
    }
    Open("C:\\created.txt", kAppend);
    EXPECT_TRUE(host.files.Exists("C:\\created.txt"));
}

TEST_F(FileSystemTest, WriteDataWritesBytesAsTheyAreOrALine) {
    const int32_t lHandle = Open("C:\\a.txt");
    EXPECT_EQ(files.WriteData(lHandle, std::string_view("\0\r\n\xFF", 4), false), 0);
    EXPECT_EQ(files.WriteData(lHandle, "line", true), 0);
    EXPECT_EQ(files.WriteData(lHandle, "", true), 0);
    EXPECT_EQ(host.files.Get("C:\\a.txt"), std::string("\0\r\n\xFFline\r\n\r\n", 12));
}

TEST_F(FileSystemTest, WriteDataOfAFullDiskFails) {
    host.files.SetQuota(host.files.TotalBytes() + 2);
    const int32_t lHandle = Open("C:\\a.txt");
    EXPECT_EQ(files.WriteData(lHandle, "abc", false), 1);
    EXPECT_EQ(files.strErrorMessage(), "WriteData() Failed - Disk full");
}

TEST_F(FileSystemTest, ReadDataReadsLinesWithoutTheirEnds) {
    host.files.Put("C:\\a.txt", "one\r\ntwo\n\nlast");
    const int32_t lHandle = Open("C:\\a.txt", kRead);
    std::string strData;
    for (const char* strLine : {"one", "two", "", "last"}) {
        EXPECT_FALSE(files.Eof(lHandle));
        EXPECT_EQ(files.ReadData(lHandle, strData, true, 0), 0);
        EXPECT_EQ(strData, strLine);
    }
    EXPECT_TRUE(files.Eof(lHandle));
    EXPECT_EQ(files.ReadData(lHandle, strData, true, 0), 1);
    EXPECT_EQ(files.strErrorMessage(), "ReadData() Failed - Input past end of file");
    EXPECT_EQ(strData, "last");
}

TEST_F(FileSystemTest, ReadDataReadsACountOfBytes) {
    const std::string strContent("ab\r\n\0\xFF"
                                 "cd",
                                 8);
    host.files.Put("C:\\a.bin", strContent);
    const int32_t lHandle = Open("C:\\a.bin", kRead);
    std::string strData;
    EXPECT_EQ(files.ReadData(lHandle, strData, false, 5), 0);
    EXPECT_EQ(strData, strContent.substr(0, 5));
    EXPECT_EQ(files.ReadData(lHandle, strData, false, 5), 0);
    EXPECT_EQ(strData, strContent.substr(5));
    EXPECT_EQ(files.ReadData(lHandle, strData, false, 5), 0);
    EXPECT_EQ(strData, "");
}

TEST_F(FileSystemTest, ReadDataWithCountZeroReadsTheRest) {
    host.files.Put("C:\\a.txt", "one\r\ntwo");
    const int32_t lHandle = Open("C:\\a.txt", kRead);
    std::string strData;
    EXPECT_EQ(files.ReadData(lHandle, strData, false, 1), 0);
    EXPECT_EQ(files.ReadData(lHandle, strData, false, 0), 0);
    EXPECT_EQ(strData, "ne\r\ntwo");
    EXPECT_TRUE(files.Eof(lHandle));
}

TEST_F(FileSystemTest, AStreamHasOneDirection) {
    host.files.Put("C:\\a.txt", "x");
    std::string strData;
    EXPECT_EQ(files.WriteData(Open("C:\\a.txt", kRead), "y", false), 1);
    EXPECT_EQ(files.strErrorMessage(), "WriteData() Failed - Bad file mode");
    EXPECT_EQ(files.ReadData(Open("C:\\b.txt", kWrite), strData, false, 0), 1);
    EXPECT_EQ(files.strErrorMessage(), "ReadData() Failed - Bad file mode");
}

TEST_F(FileSystemTest, CountLinesReadsToTheEndAndPumpsAfterEachLine) {
    host.files.Put("C:\\a.txt", "one\r\ntwo\n\nlast");
    const int32_t lHandle = Open("C:\\a.txt", kRead);
    EXPECT_EQ(files.CountLines(lHandle), 4);
    EXPECT_EQ(host.nPumps(), 4);
    EXPECT_EQ(files.CountLines(lHandle), 0);
    host.files.Put("C:\\empty.txt", "");
    EXPECT_EQ(files.CountLines(Open("C:\\empty.txt", kRead)), 0);
    EXPECT_EQ(host.nPumps(), 4);
}

TEST_F(FileSystemTest, CountLinesTellsAFailure) {
    EXPECT_EQ(files.CountLines(1), 0);
    EXPECT_EQ(files.strErrorMessage(), "CountLines() Failed - Subscript out of range");
    host.files.Put("C:\\a.txt", "one\r\ntwo");
    const int32_t lHandle = Open("C:\\a.txt", kRead);
    host.FailNext(world::Op::StreamRead, {}, 1, 1);
    EXPECT_EQ(files.CountLines(lHandle), 0);
    EXPECT_EQ(files.strErrorMessage(), "CountLines() Failed - Device I/O error");
}

TEST_F(FileSystemTest, CountLinesSurvivesAnEventThatClosesTheFile) {
    host.files.Put("C:\\a.txt", "one\r\ntwo\r\nthree");
    const int32_t lHandle = Open("C:\\a.txt", kRead);
    host.OnPump([&] { files.CloseFile(lHandle); });
    EXPECT_EQ(files.CountLines(lHandle), 0);
    EXPECT_EQ(files.strErrorMessage(), "CountLines() Failed - Subscript out of range");
}

// Handles.

TEST_F(FileSystemTest, HandlesCountFromOne) {
    EXPECT_EQ(Open("C:\\a.txt"), 1);
    EXPECT_EQ(Open("C:\\b.txt"), 2);
    EXPECT_EQ(Open("C:\\c.txt"), 3);
}

TEST_F(FileSystemTest, ASingleHandleIsGivenOutAgain) {
    EXPECT_EQ(Open("C:\\a.txt"), 1);
    files.CloseFile(1);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
    EXPECT_EQ(Open("C:\\a.txt"), 1);
}

TEST_F(FileSystemTest, AClosedHandleIsNotGivenOutWhileOthersAreOpen) {
    Open("C:\\a.txt");
    Open("C:\\b.txt");
    files.CloseFile(1);
    EXPECT_EQ(host.files.nOpenStreams(), 1);
    EXPECT_EQ(Open("C:\\c.txt"), 3);
    files.CloseFile(2);
    EXPECT_EQ(Open("C:\\d.txt"), 4);
    files.CloseFile(3);
    files.CloseFile(4);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
    EXPECT_EQ(Open("C:\\e.txt"), 1);
}

TEST_F(FileSystemTest, AFailedOpenTakesNoHandle) {
    EXPECT_EQ(files.OpenFile("C:\\none.txt", kRead), 0);
    EXPECT_EQ(Open("C:\\a.txt"), 1);
    EXPECT_EQ(files.OpenFile("C:\\none.txt", kRead), 0);
    EXPECT_EQ(Open("C:\\b.txt"), 2);
    files.CloseFile(1);
    files.CloseFile(2);
    EXPECT_EQ(Open("C:\\c.txt"), 1);
}

TEST_F(FileSystemTest, ClosingTwiceCountsOnce) {
    Open("C:\\a.txt");
    const int32_t lHandle = Open("C:\\b.txt");
    files.CloseFile(1);
    files.CloseFile(1);
    EXPECT_EQ(files.WriteData(lHandle, "still open", false), 0);
    EXPECT_EQ(Open("C:\\c.txt"), 3);
}

TEST_F(FileSystemTest, ClosingWhatWasNeverOpenDoesNothing) {
    for (const int32_t lHandle : {-1, 0, 1, 99}) {
        files.CloseFile(lHandle);
    }
    EXPECT_EQ(Open("C:\\a.txt"), 1);
    files.CloseFile(2);
    files.CloseFile(-1);
    EXPECT_EQ(files.WriteData(1, "still open", false), 0);
    EXPECT_EQ(files.strErrorMessage(), "");
}

TEST_F(FileSystemTest, AnUnknownHandleFails) {
    Open("C:\\a.txt");
    std::string strData = "old";
    for (const int32_t lHandle : {-1, 0, 2}) {
        EXPECT_EQ(files.WriteData(lHandle, "x", false), 1);
        EXPECT_EQ(files.strErrorMessage(), "WriteData() Failed - Subscript out of range");
        EXPECT_EQ(files.ReadData(lHandle, strData, true, 0), 1);
        EXPECT_EQ(files.strErrorMessage(), "ReadData() Failed - Subscript out of range");
    }
    EXPECT_EQ(strData, "old");
}

TEST_F(FileSystemTest, AClosedHandleFailsInItsSlot) {
    Open("C:\\a.txt");
    Open("C:\\b.txt");
    files.CloseFile(1);
    EXPECT_EQ(files.WriteData(1, "x", false), 1);
    EXPECT_EQ(files.strErrorMessage(), "WriteData() Failed - Bad file number");
}

TEST_F(FileSystemTest, ASlotWhoseOpenFailedHoldsNoStream) {
    EXPECT_EQ(files.OpenFile("C:\\none.txt", kRead), 0);
    EXPECT_EQ(files.WriteData(1, "x", false), 1);
    EXPECT_EQ(files.strErrorMessage(), "WriteData() Failed - Object not set");
    files.CloseFile(1);
}

TEST_F(FileSystemTest, EofOfWhatCannotBeReadIsTrue) {
    for (const int32_t lHandle : {-1, 0, 1, 99}) {
        EXPECT_TRUE(files.Eof(lHandle)) << lHandle;
    }
    host.files.Put("C:\\a.txt", "x");
    const int32_t lHandle = Open("C:\\a.txt", kRead);
    Open("C:\\b.txt");
    EXPECT_FALSE(files.Eof(lHandle));
    files.CloseFile(lHandle);
    EXPECT_TRUE(files.Eof(lHandle));
    EXPECT_EQ(files.strErrorMessage(), "");
}

TEST_F(FileSystemTest, TheDestructorClosesEveryStream) {
    {
        FileSystem others;
        EXPECT_EQ(others.OpenFile("C:\\a.txt", kWrite), 1);
        EXPECT_EQ(others.OpenFile("C:\\b.txt", kWrite), 2);
        others.CloseFile(1);
        EXPECT_EQ(host.files.nOpenStreams(), 1);
    }
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

} // namespace
} // namespace brennik
