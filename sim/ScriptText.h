// The words of one line of a script: plain words, texts in double quotes, repetitions, numbers.
// Pure text work, for real and in tests alike; what the words mean is the business of the script.
#pragma once

#include "sim/FarEnd.h"

#include <cstddef>
#include <cstdint>
#include <functional>
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

/// The most of what a script may count: times, frames and the like.
inline constexpr int64_t kMostTimes = 1'000'000'000;

/// Reads the words of one line from the left to the right. strWhat names what is wanted in the
/// message of the ScriptProblem that is thrown when it isn't there.
class ScriptLine {
  public:
    /// Throws ScriptProblem as SplitScriptLine does.
    explicit ScriptLine(std::string_view strLine) : words_(SplitScriptLine(strLine)) {}

    /// There are words left.
    bool bMore() const { return nWord_ < words_.size(); }
    /// The next word is there, and in quotes.
    bool bQuotedNext() const { return bMore() && words_[nWord_].bQuoted; }

    /// A plain word.
    const std::string& Word(const char* strWhat);
    /// A plain word or a quoted text, each as it stands.
    const std::string& Text(const char* strWhat);
    int64_t Number(const char* strWhat, int64_t lLeast, int64_t lMost);
    /// A time in milliseconds, at most a day.
    Microseconds Time();
    /// The bytes that all words left stand for, as ScriptBytes gives them.
    std::string RestAsBytes();

    /// Throws ScriptProblem when there are words left.
    void End() const;

  private:
    std::vector<ScriptWord> words_;
    size_t nWord_ = 0;
};

/// Some frames of a session, counted from 1, both bounds included.
struct ScriptFrames {
    int64_t lFirst = 0;
    int64_t lLast = 0;

    bool bHolds(int64_t lFrame) const { return lFrame >= lFirst && lFrame <= lLast; }
};

/// The rest of a place whose first word has been read: "frame N", "frames N-M", "every frame".
/// Nothing when the word begins none of them.
std::optional<ScriptFrames> ReadFrames(const std::string& strFirstWord, ScriptLine& line);

/// Reads a script: hands each line that has words to a function, which reads all of them. False,
/// with "line N: " and the reason in strError, once a ScriptProblem was thrown.
bool ReadScript(std::string_view strText, const std::function<void(ScriptLine&)>& readLine,
                std::string& strError);

} // namespace brennik::sim
