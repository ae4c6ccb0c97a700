#include "shell/CommandLine.h"

#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

class CommandLine : public world::WorldTest {
  protected:
    /// The result of the search, and the value where the result is 0.
    std::string Find(const std::string& strName, const std::string& strCmdLine) {
        std::string strValue = "left over";
        const int16_t iResult = GetCommandLineArg(strName, strValue, strCmdLine);
        return iResult == 0 ? "[" + strValue + "]" : "absent";
    }
};

TEST_F(CommandLine, FindsAnOptionAndItsValue) {
    struct Case {
        const char* strCmdLine;
        const char* strExpected;
    };
    // Looked for: -name
    for (const Case& c : std::vector<Case>{{"-name value", "[value]"},
                                           {"-other x -name value -more y", "[value]"},
                                           {"-name    value", "[value]"},
                                           {"-name value-with-dashes", "[value-with-dashes]"},
                                           {"-name=value", "[=value]"},
                                           {"-namevalue", "[value]"},
                                           {"x-name value", "[value]"},
                                           {"", "absent"},
                                           {"-nam e", "absent"},
                                           {"-NAME value", "absent"},
                                           {"-other -nam", "absent"},
                                           {"-other value", "absent"},
                                           {"-name", "[]"},
                                           {"-name ", "[]"},
                                           {"-nameX", "[]"},
                                           {"-name  ", "[]"},
                                           {"-name     ", "[]"},
                                           {"-name -other x", "[]"},
                                           {"-name    -other x", "[]"},
                                           {"-name a -b", "[a]"},
                                           {"-name -", "[]"},
                                           {"-name \"two words\"", "[two words]"},
                                           {"-name \"two words\" -other x", "[two words]"},
                                           {"-name \"say \"\"hi\"\" now\"", "[say \"hi\" now]"},
                                           {"-name \"\"", "[]"},
                                           {"-name \"\" -other", "[]"},
                                           {"-name \"-leading dash\"", "[-leading dash]"},
                                           {"-name \"open", "absent"},
                                           {"-name \"closed\"behind", "absent"},
                                           {"-name \"ends with two\"\"", "absent"},
                                           {"-name \"three\"\"\"", "[three\"]"},
                                           {"-name va\"lue", "[va\"lue]"},
                                           {"-other \"holds -name inside\"", "[inside\"]"}}) {
        EXPECT_EQ(Find("-name", c.strCmdLine), c.strExpected) << c.strCmdLine;
    }
}

TEST_F(CommandLine, DoesNotFindAnEmptyName) {
    EXPECT_EQ(Find("", "-name value"), "absent");
}

TEST_F(CommandLine, GivesAnEmptyComPortInFrontOfTheNextOption) {
    EXPECT_EQ(Find("-comport", "-comport -profileid 1"), "[]");
    EXPECT_EQ(Find("-profileid", "-comport -profileid 1"), "[1]");
}

TEST_F(CommandLine, PumpsEventsForEachCharacterInsideQuotes) {
    ASSERT_EQ(Find("-name", "-name \"abc\""), "[abc]");
    EXPECT_EQ(host.nPumps(), 4) << "three characters and the closing quote";
}

TEST_F(CommandLine, EndsAsAbsentWhenSomethingFailsInside) {
    host.OnPump([] { throw RuntimeFailure(FailureKind::Internal); });
    EXPECT_EQ(Find("-name", "-name \"abc\""), "absent");
}

TEST_F(CommandLine, IsJoinedFromTheArgumentsByOneBlank) {
    using Arguments = std::vector<std::string>;
    EXPECT_EQ(CommandLineFromArguments({}), "");
    EXPECT_EQ(CommandLineFromArguments(Arguments{"-help"}), "-help");
    EXPECT_EQ(CommandLineFromArguments({"-configfiledir", "/srv/pos", "-profileid", "1"}),
              "-configfiledir /srv/pos -profileid 1");
    EXPECT_EQ(CommandLineFromArguments({"-comport", "", "-profileid", "1"}),
              "-comport  -profileid 1");
}

TEST_F(CommandLine, PutsQuotesBackThatAShellHasTakenAway) {
    EXPECT_EQ(CommandLineFromArguments({"-configfiledir", "/srv/two words"}),
              "-configfiledir \"/srv/two words\"");
    EXPECT_EQ(CommandLineFromArguments({"say \"hi\""}), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(CommandLineFromArguments({"\"has quotes\""}), "\"has quotes\"");
    EXPECT_EQ(CommandLineFromArguments({"-profileid 1"}), "-profileid 1");
    EXPECT_EQ(CommandLineFromArguments({" x"}), "\" x\"");
    EXPECT_EQ(CommandLineFromArguments({"no-blank\"quote"}), "no-blank\"quote");
    EXPECT_EQ(Find("-d", CommandLineFromArguments({"-d", "a \"b\" c", "-e"})), "[a \"b\" c]");
}

} // namespace
} // namespace brennik
