#include "platform/ScriptLine.h"

#include "platform/PlainText.h"

namespace brennik {

namespace {

constexpr std::string_view kBlanks = " \t";

} // namespace

std::optional<ScriptInterpreter> InterpreterOf(std::string_view strBeginning) {
    if (strBeginning.substr(0, 2) != "#!") {
        return std::nullopt;
    }
    std::string_view strLine = strBeginning.substr(2, strBeginning.find('\n') - 2);
    if (!strLine.empty() && strLine.back() == '\r') {
        strLine.remove_suffix(1);
    }
    strLine = WithoutBlanks(strLine, kBlanks);
    if (strLine.empty() || strLine.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    const size_t nBlank = strLine.find_first_of(kBlanks);
    ScriptInterpreter interpreter;
    interpreter.strProgram = strLine.substr(0, nBlank);
    if (nBlank != std::string_view::npos) {
        interpreter.strArgument = WithoutBlanks(strLine.substr(nBlank), kBlanks);
    }
    return interpreter;
}

} // namespace brennik
