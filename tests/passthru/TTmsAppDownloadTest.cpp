// What is sent of each line of the list, of each file, and of lists that aren't there.

#include "tests/passthru/AppDownloadFixture.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace brennik {

/// The way of the tests to the one private operation that is plain arithmetic.
class TTmsAppDownloadTestAccess {
  public:
    static int32_t BytesToRead(int32_t lBlockSize, int32_t lPosition, int32_t lFileSize) {
        return TTmsAppDownload::BytesToRead(lBlockSize, lPosition, lFileSize);
    }
};

namespace passthru {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;

// ---- Lines of the list.

TEST_F(AppDownload, SendsAFileInThreeSteps) {
    File("a.txt", "hello");
    EXPECT_THAT(Sent({"a.txt"}),
                ElementsAre(Opened('D', "00000005", "a.txt"), Block("hello"), kClose, kSuccess));
}

TEST_F(AppDownload, SendsTheseBytes) {
    File("a.txt", "hello");
    List({"*B=2", "a.txt"});
    EXPECT_EQ(Run(), 0);
    // The checks are the CRC over all behind the start character, worked out bit by bit.
    EXPECT_EQ(device.Bytes(), "\x02L*B\x1C"
                              "2\x03\x29\xDF"
                              "\x02OD000000050000000020261114120000XXXXXXXXa.txt\x03\xF2\x97"
                              "\x02W\x00\x05\x00\x00\x00\x00hello\x01\xE3"
                              "\x02"
                              "C\x03\x8A\x0C"
                              "\x02S\x03\x6A\x0F"s);
}

TEST_F(AppDownload, SendsCodeByTheEndingsAnywhereInTheName) {
    struct {
        const char* strName;
        char cType;
    } const cases[] = {
        {"A.OUT", 'C'},       {"A.LIB", 'C'},       {"A.P7S", 'C'},     {"A.OS", 'C'},
        {"A.SCM", 'C'},       {"A.VSO", 'C'},       {"A.CRT", 'C'},     {"A.ZIP", 'C'},
        {"a.out", 'C'},       {"a.Lib", 'C'},       {"a.p7s", 'C'},     {"a.os", 'C'},
        {"a.scm", 'C'},       {"a.vso", 'C'},       {"a.crt", 'C'},     {"a.zip", 'C'},
        {"a.outx", 'C'},      {"a.ost", 'C'},       {"a.crt.bak", 'C'}, {".out", 'C'},
        {"in.zip\\a.t", 'C'}, {"a.lib b.txt", 'C'}, {"a.txt", 'D'},     {"a", 'D'},
        {"out", 'D'},         {"aout", 'D'},        {"a.ou", 'D'},      {"a.p7", 'D'},
        {"a. out", 'D'},      {"a.so", 'D'},        {"a.dat", 'D'},     {"a.li.b", 'D'},
        {"a.o.s", 'D'},
    };
    for (const auto& c : cases) {
        File(c.strName, "");
        std::string strNative = c.strName;
        std::ranges::replace(strNative, '\\', '/');
        File(strNative, "");
        EXPECT_THAT(Sent({c.strName}),
                    ElementsAre(Opened(c.cType, "00000000", c.strName), kClose, kSuccess));
    }
}

TEST_F(AppDownload, SendsGroupsAndDrivesAsFilesWithoutContent) {
    for (const std::string strLine : {"SETGROUP.15", "SETDRIVE.I", "setgroup.15", "SetDrive.i",
                                      "SETGROUPX", "SETGROUP 1", "setgroup.out"}) {
        File(strLine, "a file of that name plays no part");
        EXPECT_THAT(Sent({strLine}),
                    ElementsAre(Opened('D', "00000000", strLine), kClose, kSuccess));
        EXPECT_THAT(Log(), ElementsAre("Filename=" + strLine + ", FileSize=0"));
    }
}

TEST_F(AppDownload, TakesTheEightLettersAloneForAFile) {
    for (const std::string strLine : {"SETGROUP", "setdrive"}) {
        File(strLine, "abc");
        EXPECT_THAT(Sent({strLine}),
                    ElementsAre(Opened('D', "00000003", strLine), Block("abc"), kClose, kSuccess));
    }
    File("ASETGROUP.1", "abc");
    EXPECT_EQ(Sent({"ASETGROUP.1"}).at(0), Opened('D', "00000003", "ASETGROUP.1"));
}

TEST_F(AppDownload, SendsVariablesAsOnePacketEach) {
    struct {
        const char* strLine;
        std::string strPayload;
    } const cases[] = {
        {"*A=1", Variable("*A", "1")},
        {"#A=1", Variable("#A", "1")},
        {"*A=", Variable("*A", "")},
        {"*A=1=2", Variable("*A", "1=2")},
        {"*=1", Variable("*", "1")},
        {"#a b = c", Variable("#a b ", " c")},
        // Meant: without "=" the packet is empty, and is sent.
        {"*A", ""},
        {"#", ""},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(Sent({c.strLine}), ElementsAre(c.strPayload, kSuccess)) << c.strLine;
        EXPECT_THAT(Log(), ElementsAre("Filename="s + c.strLine + ", FileSize=0"));
    }
}

// Meant: the list looks at the first character, the sending at the whole name.
TEST_F(AppDownload, SendsANameWithAMarkInItsMiddleAsAVariable) {
    File("a#b.txt", "1234");
    EXPECT_THAT(Sent({"a#b.txt"}), ElementsAre("", kSuccess));
    EXPECT_THAT(Log(), ElementsAre("Filename=a#b.txt, FileSize=4")) << "of the file of that name";
    EXPECT_THAT(Sent({"x*y=z.out"}), ElementsAre(Variable("x*y", "z.out"), kSuccess));
    EXPECT_THAT(Log(), ElementsAre("Filename=x*y=z.out, FileSize=-1")) << "there is no such file";
    EXPECT_THAT(Sent({"SETGROUP.#=1"}), ElementsAre(Variable("SETGROUP.#", "1"), kSuccess));
}

TEST_F(AppDownload, KeepsTheOrderOfTheList) {
    File("b", "B");
    File("a", "A");
    EXPECT_THAT(Sent({"b", "SETGROUP.2", "*X=1", "a", "b"}),
                ElementsAre(Opened('D', "00000001", "b"), Block("B"), kClose,
                            Opened('D', "00000000", "SETGROUP.2"), kClose, Variable("*X", "1"),
                            Opened('D', "00000001", "a"), Block("A"), kClose,
                            Opened('D', "00000001", "b"), Block("B"), kClose, kSuccess));
}

TEST_F(AppDownload, DropsBlanksAtBothEndsAndSkipsEmptyLines) {
    File("a b.txt", "A");
    EXPECT_THAT(Sent({"", "   ", "  a b.txt  ", "", "  *X=1 ", "     "}),
                ElementsAre(Opened('D', "00000001", "a b.txt"), Block("A"), kClose,
                            Variable("*X", "1"), kSuccess));
    EXPECT_EQ(Log().at(0), "Filename=a b.txt, FileSize=1");
}

TEST_F(AppDownload, ReadsEitherLineEndAndALastLineWithout) {
    host.files.Put("/tms/download.txt", "*A=1\n*B=2\r\n\n*C=3");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(device.Payloads(), ElementsAre(Variable("*A", "1"), Variable("*B", "2"),
                                               Variable("*C", "3"), kSuccess));
}

TEST_F(AppDownload, TakesNamesRelativeToTheFolder) {
    File("sub/a.txt", "A");
    EXPECT_THAT(Sent({"sub\\a.txt"}),
                ElementsAre(Opened('D', "00000001", "sub\\a.txt"), Block("A"), kClose, kSuccess));
}

TEST_F(AppDownload, DoesntLookAtTheListFileOfTheProfile) {
    config.strTmsAppListFile("C:\\tms\\other.txt");
    host.files.Put("/tms/other.txt", "*OTHER=1\r\n");
    EXPECT_THAT(Sent({"*A=1"}), ElementsAre(Variable("*A", "1"), kSuccess));
}

// ---- Blocks.

TEST_F(AppDownload, ReadsTheSmallerOfABlockAndTheRest) {
    const auto bytesToRead = TTmsAppDownloadTestAccess::BytesToRead;
    EXPECT_EQ(bytesToRead(4, 0, 10), 4);
    EXPECT_EQ(bytesToRead(4, 8, 10), 2);
    EXPECT_EQ(bytesToRead(4, 6, 10), 4);
    EXPECT_EQ(bytesToRead(4, 10, 10), 0);
    EXPECT_EQ(bytesToRead(0, 0, 10), 0);
    EXPECT_EQ(bytesToRead(-1, 0, 10), -1);
    EXPECT_EQ(bytesToRead(4, 0, -1), -1);
    EXPECT_EQ(bytesToRead(2147483647, 0, 2147483647), 2147483647);
}

TEST_F(AppDownload, CutsAFileIntoBlocksWithTheirPlaces) {
    File("a", "0123456789");
    const std::string strOpened = Opened('D', "0000000A", "a");
    EXPECT_THAT(Sent({"a"}, 4), ElementsAre(strOpened, Block("0123", 0), Block("4567", 4),
                                            Block("89", 8), kClose, kSuccess));
    EXPECT_THAT(Log(),
                ElementsAre("Filename=a, FileSize=10", "FilePosition=0, lCharstoRead=4",
                            "FilePosition=4, lCharstoRead=4", "FilePosition=8, lCharstoRead=2",
                            "FilePosition=10, lCharstoRead=0"));
    EXPECT_THAT(Sent({"a"}, 5),
                ElementsAre(strOpened, Block("01234", 0), Block("56789", 5), kClose, kSuccess));
    EXPECT_THAT(Sent({"a"}, 10), ElementsAre(strOpened, Block("0123456789"), kClose, kSuccess));
    EXPECT_THAT(Sent({"a"}, 2147483647),
                ElementsAre(strOpened, Block("0123456789"), kClose, kSuccess));
    EXPECT_EQ(Sent({"a"}, 1).size(), 13u);
}

TEST_F(AppDownload, SendsAnyByte) {
    std::string strBytes;
    for (int32_t lByte = 0; lByte < 256; ++lByte)
        strBytes += static_cast<char>(lByte);
    File("a", strBytes);
    EXPECT_THAT(Sent({"a"}, 128),
                ElementsAre(Opened('D', "00000100", "a"), Block(strBytes.substr(0, 128)),
                            Block(strBytes.substr(128), 128), kClose, kSuccess));
}

TEST_F(AppDownload, SendsNoDataInBlocksOfNothing) {
    File("a", "0123");
    File("b", "");
    EXPECT_THAT(Sent({"a", "b"}, 0), ElementsAre(Opened('D', "00000004", "a"), kClose,
                                                 Opened('D', "00000000", "b"), kClose, kSuccess));
    EXPECT_THAT(Log(), ElementsAre("Filename=a, FileSize=4", "FilePosition=0, lCharstoRead=0",
                                   "Filename=b, FileSize=0"));
}

TEST_F(AppDownload, FailsOnBlocksOfLessThanNothing) {
    File("a", "0123");
    List({"*A=1", "a", "*B=2"});
    EXPECT_EQ(Run(-1), 1);
    ExpectFailure(1000000, "TTmsAppDownload.Download() Failed - Invalid procedure call");
    EXPECT_THAT(device.Payloads(), ElementsAre(Variable("*A", "1"), Opened('D', "00000004", "a")));
    EXPECT_THAT(Log(), ElementsAre("Filename=*A=1, FileSize=0", "Filename=a, FileSize=4",
                                   "FilePosition=0, lCharstoRead=-1"));
}

TEST_F(AppDownload, NeedsNoBlocksForFilesWithoutContent) {
    File("a", "");
    EXPECT_THAT(Sent({"a", "SETGROUP.1", "*A=1"}, -1),
                ElementsAre(Opened('D', "00000000", "a"), kClose,
                            Opened('D', "00000000", "SETGROUP.1"), kClose, Variable("*A", "1"),
                            kSuccess));
}

TEST_F(AppDownload, SendsTheLargestBlockThatAPacketHolds) {
    config.lCharTimeout(10);
    const std::string strContent(65536, 'x');
    File("a", strContent);
    const Lines sent = Sent({"a"}, 65535);
    ASSERT_EQ(sent.size(), 5u);
    EXPECT_EQ(sent[1], "W\xFF\xFF\x00\x00\x00\x00"s + strContent.substr(1));
    EXPECT_EQ(sent[2], "W\x00\x01\x00\x00\xFF\xFFx"s);
}

TEST_F(AppDownload, FailsOnABlockThatNoPacketHolds) {
    File("a", std::string(65536, 'x'));
    List({"a"});
    EXPECT_EQ(Run(65536), 1);
    EXPECT_EQ(download.lErrorCode(), 1000000);
    EXPECT_EQ(download.strErrorMessage().substr(0, 46),
              "TBrennikPacket.BuildCloseFilePacket() Failed -"); // the packet's own text
    EXPECT_THAT(device.Payloads(), ElementsAre(Opened('D', "00010000", "a")));
    File("a", std::string(65535, 'x'));
    EXPECT_EQ(Sent({"a"}, 65536).size(), 4u) << "what is less than a block is sent as it is";
}

// ---- Files that change or are missing.

// Meant: the loop has no other end than the link. The device sees its blocks go empty.
TEST_F(AppDownload, SendsEmptyBlocksOfAFileThatShrankUntilTheDeviceGivesUp) {
    File("a", "0123456789");
    List({"a", "*B=2"});
    int32_t lEmpty = 0;
    device.onHeard = [&](const std::string& strWhat) {
        if (strWhat[1] == 'O')
            File("a", "012345");
        else if (strWhat == "[" + Block("", 6) + "]" && ++lEmpty == 50)
            device.Always("[]", "");
    };
    EXPECT_EQ(Run(4), 1);
    ExpectFailure(1000011, kTimedOut);
    Lines expected = {Opened('D', "0000000A", "a"), Block("0123", 0), Block("45", 4)};
    expected.insert(expected.end(), 50, Block("", 6));
    EXPECT_EQ(device.Payloads(), expected);
    const Lines lines = Log();
    ASSERT_EQ(lines.size(), 53u);
    EXPECT_EQ(lines[3], "FilePosition=6, lCharstoRead=4");
    EXPECT_EQ(lines[52], "FilePosition=6, lCharstoRead=4");
}

TEST_F(AppDownload, SendsAFileThatGrewUpToTheListedSize) {
    File("a", "0123");
    List({"a"});
    device.onHeard = [&](const std::string& strWhat) {
        if (strWhat[1] == 'O')
            File("a", "abcdefgh");
    };
    EXPECT_EQ(Run(3), 0);
    EXPECT_THAT(device.Payloads(), ElementsAre(Opened('D', "00000004", "a"), Block("abc", 0),
                                               Block("d", 3), kClose, kSuccess));
}

TEST_F(AppDownload, OpensAMissingFileOnTheDeviceBeforeItFails) {
    for (const char* strEntry : {"missing.txt", "folder"}) {
        device.Forget();
        host.files.MakeFolder("/tms/folder");
        StartAt(12, 0, 0);
        List({strEntry, "*B=2"});
        TTmsAppDownload fresh;
        EXPECT_EQ(fresh.Download(link, config, 1024, log), 1);
        host.RunFor(10 * kMillisecond);
        EXPECT_EQ(fresh.lErrorCode(), 1000031);
        EXPECT_EQ(fresh.strErrorMessage(),
                  "Failed opening TMS file for download [C:\\tms\\\\"s + strEntry + "]");
        EXPECT_THAT(device.Payloads(), ElementsAre(Opened('D', "FFFFFFFF", strEntry)));
        EXPECT_EQ(Log().back(), "Filename="s + strEntry + ", FileSize=-1");
    }
}

TEST_F(AppDownload, FailsOnAFileThatIsGoneByThen) {
    File("a", "0123");
    List({"a"});
    device.onHeard = [&](const std::string&) { host.files.Remove("/tms/a"); };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Failed opening TMS file for download [C:\\tms\\\\a]");
    EXPECT_THAT(device.Payloads(), ElementsAre(Opened('D', "00000004", "a")));
}

TEST_F(AppDownload, FailsOnAFileWhoseSizeCouldNotBeRead) {
    File("a", "0123");
    List({"a"});
    host.FailNext(Op::GetFileSize);
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000000, "TTmsAppDownload.Download() Failed - Invalid procedure call");
    EXPECT_THAT(device.Payloads(), ElementsAre(Opened('D', "FFFFFFFF", "a")));
}

TEST_F(AppDownload, SendsAnEmptyBlockForAReadThatFails) {
    File("a", "0123");
    List({"a"});
    host.FailNext(Op::StreamRead, {}, 1,
                  3); // behind the end test, the line and the end of the list
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(device.Payloads(), ElementsAre(Opened('D', "00000004", "a"), Block(""),
                                               Block("0123"), kClose, kSuccess));
}

// ---- The list itself.

TEST_F(AppDownload, FailsWithoutAList) {
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Failed opening TMS application list file");
    EXPECT_THAT(Log(), ElementsAre("Failed reading tms client list file"));
    EXPECT_EQ(device.Bytes(), "");
    ExpectLink(2, false); // the link stays as it was
}

TEST_F(AppDownload, FailsOnAnEmptyList) {
    for (const Lines& lines : {Lines{}, Lines{"", "   ", ""}}) {
        List(lines);
        EXPECT_EQ(Run(), 1);
        ExpectFailure(1000032, "No files found from list file");
        EXPECT_EQ(Log().back(), "Failed reading tms client list file");
        EXPECT_EQ(device.Bytes(), "");
        ExpectLink(2, false);
    }
}

TEST_F(AppDownload, FailsOnAListThatCantBeOpened) {
    List({"*A=1"});
    host.FailNext(Op::OpenText);
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Failed opening TMS application list file");
}

TEST_F(AppDownload, SendsWhatItCouldReadOfTheList) {
    List({"*A=1", "*B=2", "*C=3"});
    host.FailNext(Op::StreamRead, {}, 1, 3); // the second line, behind two end tests and a line
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(device.Payloads(), ElementsAre(Variable("*A", "1"), kSuccess));
}

// Meant: two backslashes, as written; a path minds no more than one.
TEST_F(AppDownload, CompletesTheFolderByTwoBackslashesAndKeepsItInTheProfile) {
    struct {
        const char* strFolder;
        const char* strKept;
    } const cases[] = {
        {"C:\\tms", "C:\\tms\\\\"},     {"C:\\tms\\", "C:\\tms\\\\\\"},
        {"C:\\tms\\\\", "C:\\tms\\\\"}, {"C:\\tms\\\\\\", "C:\\tms\\\\\\"},
        {"/tms", "/tms\\\\"},           {"/tms/", "/tms/\\\\"},
    };
    File("a", "A");
    for (const auto& c : cases) {
        config.strTmsAppFolder(c.strFolder);
        EXPECT_EQ(Sent({"a"}).size(), 4u) << c.strFolder;
        EXPECT_EQ(config.strTmsAppFolder(), c.strKept);
    }
}

TEST_F(AppDownload, KeepsTheCompletedFolderWhereTheListIsMissing) {
    config.strTmsAppFolder("C:\\nowhere");
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(config.strTmsAppFolder(), "C:\\nowhere\\\\");
}

TEST_F(AppDownload, LooksForTheListInTheCurrentFolderWithoutAFolder) {
    config.strTmsAppFolder("");
    host.files.Put("/home/user/download.txt", "*A=1\r\n");
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(config.strTmsAppFolder(), "");
    EXPECT_THAT(device.Payloads(), ElementsAre(Variable("*A", "1"), kSuccess));
}

} // namespace
} // namespace passthru
} // namespace brennik
