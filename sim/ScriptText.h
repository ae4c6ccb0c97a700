// The words of one line of a script: plain words, texts in double quotes, repetitions, numbers.
// Pure text work, for real and in tests alike; what the words mean is the business of the script.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::sim {

/// What is wrong with a line; the reader of the whole script puts the line number in front.
struct ScriptProblem {
    std::string strReason;
};

struct ScriptWord {
    std::string strText; ///< for a quoted text the bytes that it stands for
    bool bQuoted = false;
    int64_t lRepeat = 1; ///< the N of a "*N" behind the word
};

/// Cuts a line into words. A "#" outside quotes begins a comment. In quotes \\ \" \r \n \t \0 and
/// \xHH stand for one byte each. Throws ScriptProblem.
std::vector<ScriptWord> SplitScriptLine(std::string_view strLine);

/// The bytes that words from nFirst on stand for, one after another: quoted texts, pairs of
/// hexadecimal digits, and the names STX ETX EOT ENQ ACK DLE NAK FS. At least one word, at most
/// 16 MiB in all. Throws ScriptProblem.
std::string ScriptBytes(const std::vector<ScriptWord>& words, size_t nFirst);

/// A whole number in decimal digits within the two bounds, both included. strWhat names it in the
/// message of the ScriptProblem thrown otherwise.
int64_t ScriptNumber(std::string_view strText, std::string_view strWhat, int64_t lLeast,
                     int64_t lMost);

} // namespace brennik::sim
