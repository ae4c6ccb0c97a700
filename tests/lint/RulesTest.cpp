// The rig of the lint: every rule finds its bad example and leaves the good one alone.
#include "tests/lint/Rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

using lint::Findings;
using lint::SourceFiles;
using testing::ElementsAre;
using testing::IsEmpty;

struct IncludeCase {
    const char* strPath;
    const char* strIncluded;
    bool bAllowed;
};

/// A tree in which the included file exists.
SourceFiles TreeWithInclude(const IncludeCase& c) {
    const std::string strIncluded = c.strIncluded;
    const std::string strHome =
        strIncluded.starts_with("sim/") || strIncluded.starts_with("tests/") ? "" : "src/";
    return {{c.strPath, "// one\n#include \"" + strIncluded + "\"\n"},
            {strHome + strIncluded, "// nothing\n"}};
}

TEST(RoomTableRule, HoldsTheTable) {
    const IncludeCase cases[] = {
        {"src/platform/A.cpp", "platform/B.h", true},
        {"src/platform/A.cpp", "support/B.h", false},
        {"src/support/A.cpp", "platform/B.h", true},
        {"src/support/A.cpp", "config/B.h", false},
        {"src/config/A.cpp", "support/B.h", true},
        {"src/config/A.cpp", "link/B.h", false},
        {"src/link/A.cpp", "platform/B.h", true},
        {"src/link/A.cpp", "config/B.h", false},
        {"src/link/A.cpp", "session/B.h", false},
        {"src/session/A.cpp", "link/B.h", true},
        {"src/session/A.cpp", "config/B.h", true},
        {"src/session/A.cpp", "passthru/B.h", false},
        {"src/session/A.cpp", "shell/B.h", false},
        {"src/session/A.cpp", "generated/Version.h", true},
        {"src/link/A.cpp", "generated/Version.h", false},
        {"src/passthru/A.cpp", "session/B.h", true},
        {"src/passthru/A.cpp", "shell/B.h", false},
        {"src/shell/A.cpp", "passthru/B.h", true},
        {"src/shell/A.cpp", "generated/Version.h", true},
        {"src/shell/A.cpp", "dialogs/B.h", false},
        {"src/shell/frmA.cpp", "dialogs/B.h", true},
        {"src/shell/A.cpp", "sim/B.h", false},
        {"src/shell/A.cpp", "tests/world/B.h", false},
        {"src/dialogs/A.cpp", "config/B.h", true},
        {"src/dialogs/A.cpp", "link/CommParms.h", true},
        {"src/dialogs/A.cpp", "link/TSerial.h", false},
        {"src/dialogs/A.cpp", "shell/BrennikClnt.h", true},
        {"src/dialogs/A.cpp", "shell/SetControlEnabled.h", true},
        {"src/dialogs/A.cpp", "shell/CommandLine.h", false},
        {"src/dialogs/A.cpp", "session/B.h", false},
        {"sim/A.cpp", "sim/B.h", true},
        {"sim/A.cpp", "platform/B.h", true},
        {"sim/A.cpp", "support/B.h", false},
        {"sim/A.cpp", "link/B.h", false},
        {"sim/host/A.cpp", "session/B.h", false},
        {"sim/host/A.cpp", "passthru/B.h", false},
        {"sim/host/A.cpp", "generated/Version.h", true},
        {"tests/link/ATest.cpp", "sim/B.h", true},
        {"tests/link/ATest.cpp", "tests/world/B.h", true},
    };
    for (const IncludeCase& c : cases) {
        const Findings findings = lint::CheckRoomTable(TreeWithInclude(c));
        if (c.bAllowed) {
            EXPECT_THAT(findings, IsEmpty()) << c.strPath;
        } else {
            EXPECT_THAT(findings, ElementsAre(std::string(c.strPath) + ":2: may not include " +
                                              c.strIncluded));
        }
    }
}

TEST(RoomTableRule, RefusesPathsThatStartAtNoRoot) {
    EXPECT_THAT(lint::CheckRoomTable({{"src/link/A.cpp", "#include \"B.h\"\n"},
                                      {"src/link/B.h", ""},
                                      {"src/link/C.cpp", "# include \"../link/B.h\"\n"}}),
                ElementsAre("src/link/A.cpp:1: no such file from a root: B.h",
                            "src/link/C.cpp:1: no such file from a root: ../link/B.h"));
}

TEST(RoomTableRule, PassesOverIncludesInCommentsAndTexts) {
    EXPECT_THAT(lint::CheckRoomTable(
                    {{"src/link/A.cpp", "/*\n#include \"shell/B.h\"\n*/\n"
                                        "const char* s = R\"(\n#include \"shell/B.h\"\n)\";\n"}}),
                IsEmpty());
}

struct HeaderCase {
    const char* strPath;
    const char* strHeader;
    bool bAllowed;
};

TEST(SystemHeadersRule, KnowsWhatEachRoomMayInclude) {
    const HeaderCase cases[] = {
        {"src/link/A.cpp", "vector", true},
        {"src/link/A.cpp", "cerrno", false},
        {"src/link/A.cpp", "chrono", false},
        {"src/link/A.cpp", "thread", false},
        {"src/support/A.cpp", "filesystem", false},
        {"src/support/A.cpp", "fstream", false},
        {"src/support/A.cpp", "ctime", false},
        {"src/support/A.cpp", "cctype", false},
        {"src/support/A.cpp", "sstream", false},
        {"src/session/A.h", "sys/types.h", false},
        {"src/shell/A.cpp", "unistd.h", false},
        {"src/shell/A.cpp", "QWidget", false},
        {"src/shell/A.cpp", "cstdio", false},
        {"src/shell/WindowsModule.cpp", "cstdio", true},
        {"src/shell/WindowsModule.cpp", "QWidget", false},
        {"src/shell/frmBrennikStatus.cpp", "QWidget", true},
        {"src/shell/SetControlEnabled.h", "QWidget", true},
        {"src/dialogs/A.cpp", "QDialog", true},
        {"src/platform/A.cpp", "QString", false},
        {"src/platform/A.cpp", "unistd.h", true},
        {"src/platform/A.cpp", "openssl/evp.h", true},
        {"src/link/A.cpp", "openssl/evp.h", false},
        {"sim/A.cpp", "sys/socket.h", false},
        {"sim/A.cpp", "gtest/gtest.h", false},
        {"sim/host/A.cpp", "sys/socket.h", true},
        {"bench/A.cpp", "benchmark/benchmark.h", true},
        {"fuzz/A.cpp", "unistd.h", false},
        {"tests/system/ATest.cpp", "chrono", true},
        {"tests/link/ATest.cpp", "gtest/gtest.h", true},
        {"tests/link/ATest.cpp", "sstream", true},
        {"tests/link/ATest.cpp", "chrono", false},
        {"tests/link/ATest.cpp", "thread", false},
        {"tests/link/ATest.cpp", "filesystem", false},
        {"tests/lint/SourceTree.cpp", "filesystem", true},
        {"tests/lint/SourceTree.cpp", "unistd.h", false},
    };
    for (const HeaderCase& c : cases) {
        const std::string strHeader = c.strHeader;
        const Findings findings =
            lint::CheckSystemHeaders({{c.strPath, "\n#include <" + strHeader + ">\n"}});
        if (c.bAllowed) {
            EXPECT_THAT(findings, IsEmpty()) << c.strPath;
        } else {
            EXPECT_THAT(findings, ElementsAre(std::string(c.strPath) + ":2: may not include <" +
                                              strHeader + ">"));
        }
    }
}

struct CallCase {
    const char* strPath;
    const char* strCode;
    const char* strFinding; ///< nothing: allowed
};

TEST(CallsRule, KeepsEachCallInItsRoom) {
    const CallCase cases[] = {
        {"src/link/A.cpp", "std::this_thread::sleep_for(d);", "a sleep"},
        {"src/link/A.cpp", "usleep(10);", "a sleep"},
        {"src/link/A.cpp", "sleep (1);", "a sleep"},
        {"src/link/A.cpp", "std::string sleep = strSleep;", nullptr},
        {"src/link/A.cpp", "Sleep(10);", nullptr},
        {"src/platform/A.cpp", "nanosleep(&t, nullptr);", nullptr},
        {"sim/A.cpp", "auto t = std::chrono::steady_clock::now();", "a system clock"},
        {"sim/host/A.cpp", "auto t = std::chrono::steady_clock::now();", nullptr},
        {"tests/link/ATest.cpp", "auto t = std::chrono::system_clock::now();", "a system clock"},
        {"tests/link/ATest.cpp", "srand(time(nullptr));", "a system clock"},
        {"src/support/A.cpp", "localtime_r(&t, &tm);", "a system clock"},
        {"src/link/A.cpp", "return errno;", "errno"},
        {"src/platform/A.cpp", "return errno;", nullptr},
        {"src/link/A.cpp", "return \"errno\"; // not errno", nullptr},
        {"src/session/A.cpp", "QMessageBox::warning(this, t, m);", "a message box"},
        {"src/session/A.cpp", "MessageBoxA(0, m, t, 0);", "a message box"},
        {"src/shell/frmA.cpp", "QMessageBox::warning(this, t, m);", nullptr},
        {"src/shell/A.cpp", "auto h = std::getenv(\"HOME\");",
         "the environment or another process"},
        {"tests/world/TestOptions.cpp", "auto h = std::getenv(n);", nullptr},
        {"tests/shell/ATest.cpp", "std::system(\"ls\");", "the environment or another process"},
        {"src/config/A.cpp", "c = std::toupper(c);", "a locale"},
        {"src/config/A.cpp", "n = std::stoi(s);", "a locale"},
        {"src/config/A.cpp", "s = std::to_string(n);", nullptr},
        {"src/config/A.cpp", "std::locale::global(l);", "a locale"},
        {"src/shell/A.cpp", "int locale = 0;", nullptr},
        {"src/shell/A.cpp", "execvp(p, a);", "the environment or another process"},
        {"src/shell/A.cpp", "int nForks = fork.size();", nullptr},
        {"src/link/A.cpp", "} catch (...) {", "a catch by hand"},
        {"src/support/Failure.cpp", "} catch (...) {", nullptr},
    };
    for (const CallCase& c : cases) {
        const Findings findings =
            lint::CheckCallsInTheirRooms({{c.strPath, std::string(c.strCode) + "\n"}});
        if (c.strFinding == nullptr) {
            EXPECT_THAT(findings, IsEmpty()) << c.strCode;
        } else {
            EXPECT_THAT(findings, ElementsAre(std::string(c.strPath) + ":1: " + c.strFinding +
                                              " outside its room"));
        }
    }
}

TEST(RealWaitsRule, FindsRealWaitsInTests) {
    for (const char* strCode : {"std::this_thread::yield();", "t.sleep_for(1s);", "usleep(1);",
                                "nanosleep(&t, nullptr);", "future.wait_for(1s);", "sleep(1);"}) {
        EXPECT_THAT(lint::CheckRealWaits({{"tests/link/ATest.cpp", strCode}}),
                    ElementsAre("tests/link/ATest.cpp:1: a real wait outside its room"))
            << strCode;
        EXPECT_THAT(lint::CheckRealWaits({{"tests/system/ATest.cpp", strCode}}), IsEmpty());
    }
    EXPECT_THAT(lint::CheckRealWaits({{"tests/link/ATest.cpp", "host.clock.Sleep(5);"}}),
                IsEmpty());
}

TEST(SkippedTestsRule, FindsTestsThatDoNotRun) {
    EXPECT_THAT(
        lint::CheckSkippedTests({{"tests/link/ATest.cpp", "TEST(A, DISABLED_Works) {}\n"
                                                          "TEST(DISABLED_A, Works) {}\n"
                                                          "TEST(A, Fine) {\n    GTEST_SKIP();\n}\n"
                                                          "const char* s = \"GTEST_SKIP\";\n"}}),
        ElementsAre("tests/link/ATest.cpp:1: a test that doesn't run",
                    "tests/link/ATest.cpp:2: a test that doesn't run",
                    "tests/link/ATest.cpp:4: a test that doesn't run"));
}

TEST(LeftoversRule, FindsNotesOfWorkLeftOver) {
    // The words are put together here, so that this file has none of them.
    const std::string strFirst = "int a; // TO";
    const std::string strSecond = "/* FIX";
    EXPECT_THAT(lint::CheckLeftovers({{"src/link/A.cpp", strFirst + "DO: later\n" + strSecond +
                                                             "ME */\nint b; // XX" + "X\n"}}),
                ElementsAre("src/link/A.cpp:1: work left over", "src/link/A.cpp:2: work left over",
                            "src/link/A.cpp:3: work left over"));
    EXPECT_THAT(lint::CheckLeftovers({{"src/link/A.cpp", "s = \"XXXXXXXX\"; // the XXXXXXXX\n"
                                                         "t = \"TODO\";\n"}}),
                IsEmpty());
}

TEST(TestsAreBuiltRule, FindsTestsThatNoBuildTakesIn) {
    const char* const strList = "foreach(room link\n  config)\n  brennik_tests(${room})\n";
    const char* const strTest = "TEST(A, Works) {}\n";
    EXPECT_THAT(lint::CheckTestsAreBuilt({{"tests/link/ATest.cpp", strTest},
                                          {"tests/config/BTest.cpp", strTest},
                                          {"tests/link/Fixture.cpp", "// TEST(A, B)\n"}},
                                         strList),
                IsEmpty());
    EXPECT_THAT(
        lint::CheckTestsAreBuilt({{"tests/link/deeper/ATest.cpp", strTest},
                                  {"tests/other/ATest.cpp", strTest},
                                  {"tests/ATest.cpp", strTest},
                                  {"tests/link/Checks.cpp", "  TEST_F(A, Works) {}\n"},
                                  {"tests/link/EmptyTest.cpp", "// TEST(A, Works)\n"}},
                                 strList),
        ElementsAre("tests/link/deeper/ATest.cpp: lies in no folder that the build takes in",
                    "tests/other/ATest.cpp: lies in no folder that the build takes in",
                    "tests/ATest.cpp: lies in no folder that the build takes in",
                    "tests/link/Checks.cpp: holds tests and isn't called *Test.cpp",
                    "tests/link/EmptyTest.cpp: holds no test"));
}

TEST(HeaderCommentsRule, FindsHeadersThatSayTooLittle) {
    EXPECT_THAT(lint::CheckHeaderComments({{"src/link/A.h", "// One.\n// Two.\n#pragma once\n"},
                                           {"src/link/A.cpp", "int a;\n"},
                                           {"tests/link/A.h", "#pragma once\n"}}),
                IsEmpty());
    EXPECT_THAT(lint::CheckHeaderComments({{"src/link/A.h", "// One.\n#pragma once\n"},
                                           {"sim/B.h", "#pragma once\n// One.\n// Two.\n"},
                                           {"src/link/C.h", "// One.\n// Two.\n"}}),
                ElementsAre("src/link/A.h: doesn't open with two lines of comment",
                            "sim/B.h: doesn't open with two lines of comment",
                            "src/link/C.h: may be included twice"));
}

TEST(FileLengthsRule, FindsFilesBeyond700Lines) {
    std::string strText;
    for (int iLine = 0; iLine < 700; ++iLine) {
        strText += "int a;\n";
    }
    EXPECT_THAT(lint::CheckFileLengths({{"src/link/A.cpp", strText}}), IsEmpty());
    EXPECT_THAT(lint::CheckFileLengths({{"src/link/A.cpp", strText + "int b;"}}),
                ElementsAre("src/link/A.cpp: 701 lines"));
}

TEST(BlankOutLiterals, LeavesCodeAndLineEndsAlone) {
    EXPECT_EQ(lint::BlankOutLiterals("a(\"b\\\"c\", 'd'); // e\nf;", false),
              "a(\"    \", ' ');     \nf;");
    EXPECT_EQ(lint::BlankOutLiterals("a(\"b\"); // e \"f\" don't\ng;", true),
              "a(\" \"); // e \"f\" don't\ng;");
    EXPECT_EQ(lint::BlankOutLiterals("/* a\nb */c", false), "    \n    c");
    EXPECT_EQ(lint::BlankOutLiterals("n = 1'000'000; e = 'x';", false), "n = 1'000'000; e = ' ';");
    EXPECT_EQ(lint::BlankOutLiterals("s = R\"x(a\n)\" b)x\"; c", false), "s =      \n       ; c");
}

} // namespace
} // namespace brennik
