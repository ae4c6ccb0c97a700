// The "#!" line of a script, read by the rules of the operating system for the case in which the
// system itself doesn't: a script without an executable bit. Plain text work.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brennik {

struct ScriptInterpreter {
    std::string strProgram;
    std::string strArgument; ///< everything behind the program as one argument; mostly empty
};

/// From the beginning of a file. Nothing without a "#!" line that names a program. A CR in front
/// of the line end belongs to the end.
std::optional<ScriptInterpreter> InterpreterOf(std::string_view strBeginning);

} // namespace brennik
