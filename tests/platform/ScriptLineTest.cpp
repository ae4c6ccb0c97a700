#include "platform/ScriptLine.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

using namespace std::string_literals;

void ExpectInterpreter(const std::string& strBeginning, const char* strProgram,
                       const char* strArgument) {
    const auto interpreter = InterpreterOf(strBeginning);
    ASSERT_TRUE(interpreter.has_value()) << strBeginning;
    EXPECT_EQ(interpreter->strProgram, strProgram);
    EXPECT_EQ(interpreter->strArgument, strArgument);
}

TEST(ScriptLine, NamesAProgram) {
    ExpectInterpreter("#!/bin/sh\necho\n", "/bin/sh", "");
    ExpectInterpreter("#! \t/bin/sh \nrest", "/bin/sh", "");
    ExpectInterpreter("#!/bin/sh", "/bin/sh", "");
}

TEST(ScriptLine, HasAtMostOneArgument) {
    ExpectInterpreter("#!/bin/sh -e\n", "/bin/sh", "-e");
    ExpectInterpreter("#!/usr/bin/env  -S sh -e \t\n", "/usr/bin/env", "-S sh -e");
}

TEST(ScriptLine, MayEndInCrLf) {
    ExpectInterpreter("#!/bin/sh -e\r\necho\r\n", "/bin/sh", "-e");
    ExpectInterpreter("#!/bin/sh\r\n", "/bin/sh", "");
}

TEST(ScriptLine, IsMissing) {
    for (const std::string& strBeginning :
         {""s, "#"s, "echo\n"s, "#!"s, "#!\n"s, "#!  \r\n/bin/sh\n"s, " #!/bin/sh\n"s,
          "\n#!/bin/sh\n"s, "#!/bin/s\0h\n"s}) {
        EXPECT_FALSE(InterpreterOf(strBeginning).has_value()) << strBeginning;
    }
}

} // namespace
} // namespace brennik
