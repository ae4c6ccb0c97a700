#include "platform/LinuxTextStream.h"

#include "platform/LinuxFiles.h"
#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace system_tests;

class LinuxTextStreamTest : public testing::Test {
  protected:
    std::unique_ptr<TextStream> Open(const std::string& strName, OpenMode mode) {
        return files_.OpenText(folder_ / strName, mode);
    }

    std::string OpenFailure(const std::string& strPath, OpenMode mode) {
        return FailureOf([&] { files_.OpenText(strPath, mode); });
    }

    TempFolder folder_;
    LinuxFiles files_{DefaultDrives(), folder_ / "program"};
};

TEST_F(LinuxTextStreamTest, WritesBytesAsTheyAreAndLinesWithCrLf) {
    const auto stream = Open("a", OpenMode::Write);
    stream->Write("one\ntwo\0three\xFF"s);
    stream->WriteLine("line");
    stream->WriteLine("");
    stream->Write("");
    EXPECT_EQ(ReadFile(folder_ / "a"), "one\ntwo\0three\xFFline\r\n\r\n"s)
        << "nothing is held back";
    stream->Close();
}

TEST_F(LinuxTextStreamTest, WritingEmptiesTheFileAndAppendingKeepsIt) {
    WriteFile(folder_ / "a", "old content");
    Open("a", OpenMode::Write)->Write("new");
    EXPECT_EQ(ReadFile(folder_ / "a"), "new");
    Open("a", OpenMode::Append)->Write("+1");
    Open("b", OpenMode::Append)->Write("made");
    EXPECT_EQ(ReadFile(folder_ / "a"), "new+1");
    EXPECT_EQ(ReadFile(folder_ / "b"), "made");
}

TEST_F(LinuxTextStreamTest, EveryAppendGoesToTheEnd) {
    const auto first = Open("a", OpenMode::Append);
    const auto second = Open("a", OpenMode::Append);
    first->Write("1");
    second->Write("2");
    first->Write("3");
    EXPECT_EQ(ReadFile(folder_ / "a"), "123");
}

TEST_F(LinuxTextStreamTest, ReadsLinesOfBothKinds) {
    WriteFile(folder_ / "a", "one\r\ntwo\n\nfour\r\r\nlast\r");
    const auto stream = Open("a", OpenMode::Read);
    EXPECT_EQ(stream->ReadLine(), "one");
    EXPECT_EQ(stream->ReadLine(), "two");
    EXPECT_EQ(stream->ReadLine(), "");
    EXPECT_EQ(stream->ReadLine(), "four\r");
    EXPECT_FALSE(stream->AtEndOfStream());
    EXPECT_EQ(stream->ReadLine(), "last\r");
    EXPECT_TRUE(stream->AtEndOfStream());
    EXPECT_EQ(FailureOf([&] { stream->ReadLine(); }), "Input past end of file");
}

TEST_F(LinuxTextStreamTest, ReadsLinesOverTheBordersOfItsBuffer) {
    // 65536 bytes are read at once: the CR of one line is the last of them, its LF the next.
    const std::string strLong(65535, 'x');
    WriteFile(folder_ / "a", strLong + "\r\n" + strLong + strLong + "\nend\n");
    const auto stream = Open("a", OpenMode::Read);
    EXPECT_EQ(stream->ReadLine(), strLong);
    EXPECT_EQ(stream->ReadLine(), strLong + strLong);
    EXPECT_EQ(stream->ReadLine(), "end");
    EXPECT_TRUE(stream->AtEndOfStream());
}

TEST_F(LinuxTextStreamTest, ReadsCountedBytesAndTheRest) {
    WriteFile(folder_ / "a", "abc\0def\r\nghi"s);
    const auto stream = Open("a", OpenMode::Read);
    EXPECT_EQ(stream->Read(0), "");
    EXPECT_EQ(stream->Read(5), "abc\0d"s);
    EXPECT_EQ(stream->ReadLine(), "ef");
    EXPECT_EQ(stream->Read(2), "gh");
    EXPECT_EQ(stream->Read(2000000000), "i");
    EXPECT_EQ(stream->Read(5), "");
    EXPECT_EQ(stream->ReadAll(), "");
}

TEST_F(LinuxTextStreamTest, ReadsALargeFileWhole) {
    std::string strContent;
    for (int n = 0; n < 60000; ++n) {
        strContent += std::to_string(n) + "\n";
    }
    WriteFile(folder_ / "a", strContent);
    EXPECT_EQ(Open("a", OpenMode::Read)->ReadAll(), strContent);
    const auto stream = Open("a", OpenMode::Read);
    EXPECT_EQ(stream->Read(200000), strContent.substr(0, 200000));
    EXPECT_EQ(stream->ReadAll(), strContent.substr(200000));
}

TEST_F(LinuxTextStreamTest, AnEmptyFileIsAtItsEnd) {
    WriteFile(folder_ / "a", "");
    const auto stream = Open("a", OpenMode::Read);
    EXPECT_TRUE(stream->AtEndOfStream());
    EXPECT_EQ(stream->ReadAll(), "");
    EXPECT_EQ(stream->Read(1), "");
    EXPECT_EQ(FailureOf([&] { stream->ReadLine(); }), "Input past end of file");
}

TEST_F(LinuxTextStreamTest, AFileThatHoldsNoMoreThanALineIsNeverTakenWhole) {
    // A hole in the file: sixteen million zero bytes and one more, without any disk behind them.
    const int nFile = ::open((folder_ / "a").c_str(), O_WRONLY | O_CREAT, 0666);
    ASSERT_EQ(::ftruncate(nFile, 16777217), 0);
    EXPECT_EQ(FailureOf([&] { Open("a", OpenMode::Read)->ReadLine(); }), "Out of memory");
    ASSERT_EQ(::ftruncate(nFile, 16777216), 0);
    EXPECT_EQ(Open("a", OpenMode::Read)->ReadLine().size(), 16777216U);
    ASSERT_EQ(::ftruncate(nFile, 268435457), 0);
    EXPECT_EQ(FailureOf([&] { Open("a", OpenMode::Read)->ReadAll(); }), "Out of memory");
    EXPECT_EQ(FailureOf([&] { Open("a", OpenMode::Read)->Read(2000000000); }), "Out of memory");
    ::close(nFile);
}

TEST_F(LinuxTextStreamTest, AStreamDoesWhatItWasOpenedForAlone) {
    WriteFile(folder_ / "a", "x");
    const auto reading = Open("a", OpenMode::Read);
    EXPECT_EQ(FailureOf([&] { reading->Write("y"); }), "Bad file mode");
    EXPECT_EQ(FailureOf([&] { reading->WriteLine("y"); }), "Bad file mode");
    for (const OpenMode mode : {OpenMode::Write, OpenMode::Append}) {
        const auto writing = Open("b", mode);
        EXPECT_EQ(FailureOf([&] { writing->Read(1); }), "Bad file mode");
        EXPECT_EQ(FailureOf([&] { writing->ReadLine(); }), "Bad file mode");
        EXPECT_EQ(FailureOf([&] { writing->ReadAll(); }), "Bad file mode");
        EXPECT_EQ(FailureOf([&] { writing->AtEndOfStream(); }), "Bad file mode");
    }
}

TEST_F(LinuxTextStreamTest, AClosedStreamDoesNothingMore) {
    const auto stream = Open("a", OpenMode::Write);
    stream->Close();
    stream->Close();
    EXPECT_EQ(FailureOf([&] { stream->Write("y"); }), "Bad file number");
    EXPECT_EQ(FailureOf([&] { stream->AtEndOfStream(); }), "Bad file number");
}

TEST_F(LinuxTextStreamTest, OnlyRegularFilesOpenAndNothingWaits) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0666), 0);
    const int nSocket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder_ / "socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(nSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(nSocket);
    for (const OpenMode mode : {OpenMode::Read, OpenMode::Write, OpenMode::Append}) {
        EXPECT_EQ(OpenFailure(folder_.strPath(), mode), "Permission denied");
        EXPECT_EQ(OpenFailure("/dev/null", mode), "Permission denied");
        EXPECT_EQ(OpenFailure(folder_ / "socket", mode), "Device I/O error");
    }
    EXPECT_EQ(OpenFailure(folder_ / "pipe", OpenMode::Read), "Permission denied");
    EXPECT_EQ(OpenFailure(folder_ / "pipe", OpenMode::Write), "Device I/O error");
    const int nReader = ::open((folder_ / "pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(OpenFailure(folder_ / "pipe", OpenMode::Append), "Permission denied");
    ::close(nReader);
}

TEST_F(LinuxTextStreamTest, TellsAMissingFileFromAMissingFolder) {
    EXPECT_EQ(OpenFailure(folder_ / "none", OpenMode::Read), "File not found");
    EXPECT_EQ(OpenFailure(folder_ / "none/a", OpenMode::Read), "Path not found");
    EXPECT_EQ(OpenFailure(folder_ / "none/a", OpenMode::Write), "Path not found");
    WriteFile(folder_ / "file", "");
    EXPECT_EQ(OpenFailure(folder_ / "file/a", OpenMode::Append), "Path not found");
}

TEST_F(LinuxTextStreamTest, APathThatDoesNotExistOpensNothing) {
    for (const std::string& strPath : {""s, "Q:\\a"s, "\\\\server\\a"s, (folder_ / "a") + "\0.txt"s,
                                       folder_ / std::string(60000, 'x')}) {
        for (const OpenMode mode : {OpenMode::Read, OpenMode::Write, OpenMode::Append}) {
            EXPECT_EQ(OpenFailure(strPath, mode), "Path not found");
        }
    }
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "");
}

TEST_F(LinuxTextStreamTest, ItsDescriptorIsClosedOnExec) {
    const auto stream = Open("a", OpenMode::Write);
    int nOurs = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (std::filesystem::read_symlink(entry.path(), ignored) == folder_ / "a") {
            const int nDescriptor = std::stoi(entry.path().filename().string());
            EXPECT_EQ(::fcntl(nDescriptor, F_GETFD), FD_CLOEXEC);
            ++nOurs;
        }
    }
    EXPECT_EQ(nOurs, 1);
}

TEST_F(LinuxTextStreamTest, AFullDiskKeepsWhatWasTaken) {
    const std::string strPath = folder_ / "a";
    EXPECT_EQ(ReportOfChild([&] {
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{60, 60};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  const auto stream = files_.OpenText(strPath, OpenMode::Write);
                  stream->Write(std::string(40, 'a'));
                  return FailureOf([&] { stream->Write(std::string(40, 'b')); });
              }),
              "Disk full");
    EXPECT_EQ(ReadFile(strPath), std::string(40, 'a') + std::string(20, 'b'));
}

TEST_F(LinuxTextStreamTest, ATrulyFullDiskIsToldToo) {
    const TempFolder root;
    EXPECT_EQ(
        ReportOfSandbox(root, false,
                        [] {
                            MountMemory("/memory", "64k");
                            LinuxFiles files(DefaultDrives(), "/program");
                            const auto stream = files.OpenText("C:\\memory\\a", OpenMode::Write);
                            return FailureOf([&] { stream->Write(std::string(1000000, 'x')); });
                        }),
        "Disk full");
}

/// The value of one line of this process's account of its calls.
long long CallsSoFar(const std::string& strName) {
    const std::string strAccount = ReadFile("/proc/self/io");
    const size_t nAt = strAccount.find(strName + ": ");
    return nAt == std::string::npos ? -1 : std::stoll(strAccount.substr(nAt + strName.size() + 2));
}

TEST_F(LinuxTextStreamTest, AWriteIsOneCallOfTheSystem) {
    const auto stream = Open("a", OpenMode::Write);
    const long long nBefore = CallsSoFar("syscw");
    ASSERT_GE(nBefore, 0);
    stream->WriteLine(std::string(60000, 'x'));
    stream->Write("y");
    files_.AppendLine(folder_ / "log", "line\r\n");
#ifdef __SANITIZE_ADDRESS__
    EXPECT_GE(CallsSoFar("syscw") - nBefore, 3); // the sanitizers probe memory with writes too
#else
    EXPECT_EQ(CallsSoFar("syscw") - nBefore, 3);
#endif
}

} // namespace
} // namespace brennik
