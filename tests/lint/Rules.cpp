#include "tests/lint/Rules.h"

#include <algorithm>
#include <map>
#include <regex>
#include <set>

namespace brennik::lint {

namespace {

using Names = std::set<std::string, std::less<>>;
using Prefixes = std::vector<std::string_view>;

constexpr size_t kMostLines = 700;
constexpr size_t kLeastCommentLines = 2;

bool StartsWithOneOf(std::string_view strPath, const Prefixes& prefixes) {
    return std::ranges::any_of(
        prefixes, [&](std::string_view strPrefix) { return strPath.starts_with(strPrefix); });
}

std::string_view FileName(std::string_view strPath) {
    return strPath.substr(strPath.rfind('/') + 1);
}

/// A window, or what only windows use: the sources that may know a toolkit.
bool IsWindow(std::string_view strPath) {
    if (StartsWithOneOf(strPath, {"src/dialogs/", "tests/dialogs/", "tests/windows/"})) {
        return true;
    }
    const std::string_view strName = FileName(strPath);
    return StartsWithOneOf(strPath, {"src/shell/", "tests/shell/"}) &&
           (strName.starts_with("frm") || strName.starts_with("SetControlEnabled"));
}

/// "link" for src/link/TSerial.h, "tests" for everything below tests.
std::string RoomOf(std::string_view strPath) {
    if (strPath.starts_with("src/")) {
        strPath.remove_prefix(4);
    }
    return std::string(strPath.substr(0, strPath.find('/')));
}

const std::map<std::string, Names, std::less<>>& RoomTable() {
    static const std::map<std::string, Names, std::less<>> table = {
        {"platform", {}},
        {"support", {"platform"}},
        {"config", {"support", "platform"}},
        {"link", {"support", "platform"}},
        {"session", {"link", "config", "support", "platform", "generated"}},
        {"passthru", {"session", "link", "config", "support", "platform", "generated"}},
        {"shell", {"passthru", "session", "link", "config", "support", "platform", "generated"}},
        {"dialogs", {"config", "support", "platform", "generated"}},
        {"sim", {"platform"}},
    };
    return table;
}

bool MayInclude(std::string_view strPath, std::string_view strIncluded) {
    const std::string strRoom = RoomOf(strPath);
    const std::string strTarget = RoomOf(strIncluded);
    const auto entry = RoomTable().find(strRoom);
    if (entry == RoomTable().end()) { // tests, bench and fuzz look into every room
        return true;
    }
    if (strTarget == strRoom || entry->second.contains(strTarget)) {
        return true;
    }
    if (strRoom == "dialogs") {
        return strIncluded == "link/CommParms.h" || strIncluded == "shell/BrennikClnt.h" ||
               strIncluded == "shell/SetControlEnabled.h";
    }
    if (strPath.starts_with("sim/host/")) {
        return strTarget == "generated";
    }
    return strRoom == "shell" && strTarget == "dialogs" && IsWindow(strPath);
}

struct Include {
    size_t nLine;
    std::string strName;
    bool bOurs; ///< in quotes
};

std::vector<Include> IncludesOf(const SourceFile& file) {
    static const std::regex pattern(R"(^\s*#\s*include\s*(["<])([^">]*)[">].*)");
    std::vector<Include> includes;
    const std::vector<std::string> strLines = SplitLines(file.strText);
    // An include inside a raw string or a comment is none.
    const std::vector<std::string> strCode = SplitLines(BlankOutLiterals(file.strText, false));
    for (size_t nLine = 0; nLine < strLines.size(); ++nLine) {
        std::smatch match;
        if (strCode[nLine].find('#') != std::string::npos &&
            std::regex_match(strLines[nLine], match, pattern)) {
            includes.push_back({nLine + 1, match[2], match[1] == "\""});
        }
    }
    return includes;
}

std::string At(const SourceFile& file, size_t nLine, const std::string& strWhat) {
    return file.strPath + ":" + std::to_string(nLine) + ": " + strWhat;
}

/// Plain C++: computation, containers and texts, without a locale, a clock, a stream or a thread.
const Names& PlainHeaders() {
    static const Names headers = {"algorithm",     "any",           "array",
                                  "bit",           "bitset",        "cassert",
                                  "charconv",      "climits",       "cmath",
                                  "compare",       "concepts",      "cstddef",
                                  "cstdint",       "cstring",       "deque",
                                  "exception",     "functional",    "initializer_list",
                                  "iterator",      "limits",        "list",
                                  "map",           "memory",        "new",
                                  "numbers",       "numeric",       "optional",
                                  "queue",         "ranges",        "set",
                                  "span",          "stack",         "stdexcept",
                                  "string",        "string_view",   "system_error",
                                  "tuple",         "type_traits",   "typeinfo",
                                  "unordered_map", "unordered_set", "utility",
                                  "variant",       "vector",        "version"};
    return headers;
}

/// What tests use beside it, still without the system.
const Names& TestHeaders() {
    static const Names headers = {
        "cfloat", "cstdio", "cstdlib", "iomanip",       "iostream",          "ostream",
        "random", "regex",  "sstream", "gtest/gtest.h", "gtest/gtest-spi.h", "gmock/gmock.h"};
    return headers;
}

bool MayIncludeHeader(std::string_view strPath, const std::string& strHeader) {
    // Where the operating system is met.
    if (StartsWithOneOf(strPath, {"src/platform/", "sim/host/", "bench/", "tests/system/"})) {
        return strHeader[0] != 'Q';
    }
    if (strHeader[0] == 'Q') {
        return IsWindow(strPath);
    }
    if (PlainHeaders().contains(strHeader)) {
        return true;
    }
    // The line that a program without windows says instead of opening one.
    if (strPath == "src/shell/WindowsModule.cpp" && strHeader == "cstdio") {
        return true;
    }
    if (!strPath.starts_with("tests/")) {
        return false;
    }
    // The one place in which a test looks at its surroundings.
    if (strPath == "tests/world/TestOptions.cpp" && strHeader == "cstdlib") {
        return true;
    }
    // The lint reads the tree itself.
    return TestHeaders().contains(strHeader) ||
           (strPath.starts_with("tests/lint/") &&
            (strHeader == "filesystem" || strHeader == "fstream"));
}

/// A word of the code and what stands around it.
struct Word {
    size_t nLine;
    std::string strName;
    bool bStd;  ///< "std::" in front
    bool bCall; ///< "(" behind
};

bool IsWordCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

std::vector<Word> WordsOf(std::string_view strText) {
    std::vector<Word> words;
    size_t nLine = 1;
    for (size_t nAt = 0; nAt < strText.size();) {
        if (!IsWordCharacter(strText[nAt])) {
            nLine += strText[nAt] == '\n' ? 1 : 0;
            ++nAt;
            continue;
        }
        size_t nEnd = nAt;
        while (nEnd < strText.size() && IsWordCharacter(strText[nEnd])) {
            ++nEnd;
        }
        const size_t nBehind = strText.find_first_not_of(" \n", nEnd);
        words.push_back({nLine, std::string(strText.substr(nAt, nEnd - nAt)),
                         strText.substr(0, nAt).ends_with("std::"),
                         nBehind != std::string_view::npos && strText[nBehind] == '('});
        nAt = nEnd;
    }
    return words;
}

/// A pattern is a name, perhaps with "std::" in front, "*" for any rest, and "(" for a call.
bool Matches(const Word& word, std::string_view strPattern) {
    if (strPattern.starts_with("std::")) {
        strPattern.remove_prefix(5);
        if (!word.bStd) {
            return false;
        }
    }
    if (strPattern.ends_with('(')) {
        strPattern.remove_suffix(1);
        if (!word.bCall) {
            return false;
        }
    }
    if (strPattern.ends_with('*')) {
        strPattern.remove_suffix(1);
        return word.strName.starts_with(strPattern);
    }
    return word.strName == strPattern;
}

/// Words that stand nowhere but in their rooms.
struct Refusal {
    const char* strWhat;
    std::vector<std::string_view> strPatterns;
    Prefixes strWhere; ///< looked for only there
    Prefixes strButIn; ///< and not there
};

const std::vector<std::string_view> kSleeps = {"usleep",    "nanosleep",   "clock_nanosleep",
                                               "sleep_for", "sleep_until", "this_thread",
                                               "wait_for",  "wait_until",  "sleep("};

const std::vector<Refusal>& CallRefusals() {
    const Prefixes systemRooms = {"src/platform/", "sim/host/", "bench/", "tests/system/"};
    const Prefixes everywhere = {""};
    static const std::vector<Refusal> refusals = {
        {"a sleep", kSleeps, {"src/", "sim/", "fuzz/"}, systemRooms},
        {"a system clock",
         {"system_clock", "steady_clock", "high_resolution_clock", "clock_gettime", "gettimeofday",
          "localtime", "localtime_r", "gmtime", "gmtime_r", "strftime", "mktime", "time("},
         everywhere,
         systemRooms},
        {"errno", {"errno", "strerror", "strerror_r", "perror"}, everywhere, systemRooms},
        {"a message box",
         {"QMessageBox", "MessageBox*"},
         everywhere,
         {"src/shell/", "src/dialogs/", "tests/shell/", "tests/dialogs/", "tests/windows/"}},
        {"the environment or another process",
         {"getenv(", "secure_getenv(", "setenv(", "popen(", "fork(", "vfork(", "posix_spawn*(",
          "execv*(", "execl*(", "std::system"},
         everywhere,
         // the seeds that a person may set for the tests
         {"src/platform/", "sim/host/", "bench/", "tests/system/", "tests/world/TestOptions."}},
        {"a locale",
         {"setlocale", "std::locale", "toupper",  "tolower", "isdigit", "isspace",
          "isalpha",   "isalnum",     "isxdigit", "atoi",    "atol",    "atof",
          "strtol",    "strtoul",     "strtod",   "stoi",    "stol",    "stoul",
          "stod",      "sprintf",     "snprintf", "sscanf"},
         {"src/", "sim/"},
         {"src/platform/", "sim/host/"}},
        {"a catch by hand", {"catch("}, {"src/"}, {"src/platform/", "src/support/Failure."}},
    };
    return refusals;
}

void CollectRefusals(const SourceFiles& files, const std::vector<Refusal>& refusals,
                     Findings& findings) {
    for (const SourceFile& file : files) {
        const std::vector<Word> words = WordsOf(BlankOutLiterals(file.strText, false));
        for (const Refusal& refusal : refusals) {
            if (!StartsWithOneOf(file.strPath, refusal.strWhere) ||
                StartsWithOneOf(file.strPath, refusal.strButIn)) {
                continue;
            }
            size_t nLastLine = 0;
            for (const Word& word : words) {
                const bool bFound =
                    std::ranges::any_of(refusal.strPatterns, [&](std::string_view strPattern) {
                        return Matches(word, strPattern);
                    });
                if (bFound && word.nLine != nLastLine) {
                    nLastLine = word.nLine;
                    findings.push_back(
                        At(file, word.nLine, refusal.strWhat + std::string(" outside its room")));
                }
            }
        }
    }
}

/// The rooms that the build makes test programs of: the words of its one list.
Names BuiltTestRooms(std::string_view strTestsCMakeLists) {
    static const std::regex list(R"(foreach\s*\(\s*room\s+([^)]*)\))");
    static const std::regex word(R"(\S+)");
    Names rooms;
    const std::string strText(strTestsCMakeLists);
    std::smatch match;
    if (std::regex_search(strText, match, list)) {
        const std::string strWords = match[1];
        for (std::sregex_iterator i(strWords.begin(), strWords.end(), word), end; i != end; ++i) {
            rooms.insert(i->str());
        }
    }
    return rooms;
}

} // namespace

Findings CheckRoomTable(const SourceFiles& files) {
    Names strPaths;
    for (const SourceFile& file : files) {
        strPaths.insert(file.strPath);
    }
    Findings findings;
    for (const SourceFile& file : files) {
        for (const Include& include : IncludesOf(file)) {
            if (!include.bOurs) {
                continue;
            }
            if (!strPaths.contains(include.strName) &&
                !strPaths.contains("src/" + include.strName) &&
                RoomOf(include.strName) != "generated") {
                findings.push_back(
                    At(file, include.nLine, "no such file from a root: " + include.strName));
            } else if (!MayInclude(file.strPath, include.strName)) {
                findings.push_back(At(file, include.nLine, "may not include " + include.strName));
            }
        }
    }
    return findings;
}

Findings CheckSystemHeaders(const SourceFiles& files) {
    Findings findings;
    for (const SourceFile& file : files) {
        for (const Include& include : IncludesOf(file)) {
            if (!include.bOurs &&
                (include.strName.empty() || !MayIncludeHeader(file.strPath, include.strName))) {
                findings.push_back(
                    At(file, include.nLine, "may not include <" + include.strName + ">"));
            }
        }
    }
    return findings;
}

Findings CheckCallsInTheirRooms(const SourceFiles& files) {
    Findings findings;
    CollectRefusals(files, CallRefusals(), findings);
    return findings;
}

Findings CheckRealWaits(const SourceFiles& files) {
    static const std::vector<Refusal> refusals = {
        {"a real wait", kSleeps, {"tests/"}, {"tests/system/"}}};
    Findings findings;
    CollectRefusals(files, refusals, findings);
    return findings;
}

Findings CheckSkippedTests(const SourceFiles& files) {
    Findings findings;
    for (const SourceFile& file : files) {
        for (const Word& word : WordsOf(BlankOutLiterals(file.strText, false))) {
            if (word.strName.starts_with("GTEST_SKIP") ||
                word.strName.find("DISABLED_") != std::string::npos) {
                findings.push_back(At(file, word.nLine, "a test that doesn't run"));
            }
        }
    }
    return findings;
}

Findings CheckLeftovers(const SourceFiles& files) {
    static const Names marks = {"TODO", "FIXME", "XXX"};
    Findings findings;
    for (const SourceFile& file : files) {
        for (const Word& word : WordsOf(BlankOutLiterals(file.strText, true))) {
            if (marks.contains(word.strName)) {
                findings.push_back(At(file, word.nLine, "work left over"));
            }
        }
    }
    return findings;
}

Findings CheckTestsAreBuilt(const SourceFiles& files, std::string_view strTestsCMakeLists) {
    static const Names macros = {"TEST", "TEST_F", "TEST_P", "TYPED_TEST", "TYPED_TEST_P"};
    const Names rooms = BuiltTestRooms(strTestsCMakeLists);
    Findings findings;
    for (const SourceFile& file : files) {
        const bool bNamedTest = file.strPath.ends_with("Test.cpp");
        const std::vector<Word> words = WordsOf(BlankOutLiterals(file.strText, false));
        const bool bHoldsTests = std::ranges::any_of(
            words, [](const Word& word) { return word.bCall && macros.contains(word.strName); });
        if (!bNamedTest && bHoldsTests) {
            findings.push_back(file.strPath + ": holds tests and isn't called *Test.cpp");
        }
        if (!bNamedTest) {
            continue;
        }
        static const std::regex home("tests/([^/]+)/[^/]+");
        std::smatch match;
        if (!std::regex_match(file.strPath, match, home) || !rooms.contains(match[1].str())) {
            findings.push_back(file.strPath + ": lies in no folder that the build takes in");
        } else if (!bHoldsTests) {
            findings.push_back(file.strPath + ": holds no test");
        }
    }
    return findings;
}

Findings CheckHeaderComments(const SourceFiles& files) {
    Findings findings;
    for (const SourceFile& file : files) {
        if (!StartsWithOneOf(file.strPath, {"src/", "sim/"}) || !file.strPath.ends_with(".h")) {
            continue;
        }
        const std::vector<std::string> strLines = SplitLines(file.strText);
        const auto firstOther = std::ranges::find_if(
            strLines, [](const std::string& strLine) { return !strLine.starts_with("// "); });
        if (static_cast<size_t>(firstOther - strLines.begin()) < kLeastCommentLines) {
            findings.push_back(file.strPath + ": doesn't open with two lines of comment");
        }
        if (std::ranges::find(strLines, "#pragma once") == strLines.end()) {
            findings.push_back(file.strPath + ": may be included twice");
        }
    }
    return findings;
}

Findings CheckFileLengths(const SourceFiles& files) {
    Findings findings;
    for (const SourceFile& file : files) {
        const size_t nLines = SplitLines(file.strText).size();
        if (nLines > kMostLines) {
            findings.push_back(file.strPath + ": " + std::to_string(nLines) + " lines");
        }
    }
    return findings;
}

} // namespace brennik::lint
