#include "sim/ScriptText.h"

#include "sim/Codec.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

namespace brennik::sim {

namespace {

constexpr size_t kMostBytes = size_t{16} << 20;
constexpr int64_t kLongestMs = int64_t{24} * 60 * 60 * 1000; ///< a day

constexpr std::pair<std::string_view, char> kNamedBytes[] = {
    {"STX", kStx}, {"ETX", kEtx}, {"EOT", kEot}, {"ENQ", kEnq},
    {"ACK", kAck}, {"DLE", kDle}, {"NAK", kNak}, {"FS", kSeparator}};

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

std::optional<char> HexByte(std::string_view strDigits) {
    const int high = strDigits.size() < 2 ? -1 : HexDigit(strDigits[0]);
    const int low = strDigits.size() < 2 ? -1 : HexDigit(strDigits[1]);
    if (high < 0 || low < 0) {
        return std::nullopt;
    }
    return static_cast<char>(high * 16 + low);
}

std::string Quoted(std::string_view strText) {
    return "\"" + std::string(strText) + "\"";
}

// Reads the escape that begins at strText[n], a backslash, and leaves n on its last character.
char Escaped(std::string_view strText, size_t& n) {
    constexpr std::pair<char, char> kEscapes[] = {{'\\', '\\'}, {'"', '"'},  {'r', '\r'},
                                                  {'n', '\n'},  {'t', '\t'}, {'0', '\0'}};
    const char c = n + 1 < strText.size() ? strText[n + 1] : ' ';
    for (const auto& [letter, byte] : kEscapes) {
        if (c == letter) {
            ++n;
            return byte;
        }
    }
    const auto byte = c == 'x' ? HexByte(strText.substr(n + 2)) : std::nullopt;
    if (!byte) {
        throw ScriptProblem{"unknown escape; there are \\\\ \\\" \\r \\n \\t \\0 and \\xHH"};
    }
    n += 3;
    return *byte;
}

// Reads a quoted text that begins at strLine[n] and leaves n behind its closing quote.
std::string QuotedText(std::string_view strLine, size_t& n) {
    std::string strText;
    for (++n; n < strLine.size(); ++n) {
        if (strLine[n] == '"') {
            ++n;
            return strText;
        }
        strText.push_back(strLine[n] == '\\' ? Escaped(strLine, n) : strLine[n]);
    }
    throw ScriptProblem{"a quoted text has no closing quote"};
}

std::string_view PlainText(std::string_view strLine, size_t& n) {
    const size_t nStart = n;
    while (n < strLine.size() && !IsBlank(strLine[n]) && strLine[n] != '#' && strLine[n] != '*' &&
           strLine[n] != '"') {
        ++n;
    }
    return strLine.substr(nStart, n - nStart);
}

std::string HexBytes(std::string_view strDigits) {
    std::string strBytes;
    for (size_t n = 0; n < strDigits.size(); n += 2) {
        const auto byte = HexByte(strDigits.substr(n));
        if (!byte) {
            throw ScriptProblem{Quoted(strDigits) +
                                " is neither a quoted text, nor pairs of hexadecimal digits, nor"
                                " one of STX ETX EOT ENQ ACK DLE NAK FS"};
        }
        strBytes.push_back(*byte);
    }
    return strBytes;
}

std::string BytesOf(const ScriptWord& word) {
    if (word.bQuoted) {
        return word.strText;
    }
    for (const auto& [strName, byte] : kNamedBytes) {
        if (word.strText == strName) {
            return std::string(1, byte);
        }
    }
    return HexBytes(word.strText);
}

} // namespace

std::vector<ScriptWord> SplitScriptLine(std::string_view strLine) {
    std::vector<ScriptWord> words;
    for (size_t n = 0; n < strLine.size();) {
        if (IsBlank(strLine[n])) {
            ++n;
            continue;
        }
        if (strLine[n] == '#') {
            break;
        }
        ScriptWord word;
        word.bQuoted = strLine[n] == '"';
        word.strText = word.bQuoted ? QuotedText(strLine, n) : std::string(PlainText(strLine, n));
        if (n < strLine.size() && strLine[n] == '*') {
            ++n;
            word.lRepeat = ScriptNumber(PlainText(strLine, n), "a repetition", 0, kMostBytes);
        }
        if (n < strLine.size() && !IsBlank(strLine[n]) && strLine[n] != '#') {
            throw ScriptProblem{"a blank is missing behind " + Quoted(word.strText)};
        }
        words.push_back(std::move(word));
    }
    return words;
}

std::string ScriptBytes(const std::vector<ScriptWord>& words, size_t nFirst) {
    if (words.size() <= nFirst) {
        throw ScriptProblem{"bytes are missing at the end of the line"};
    }
    std::string strBytes;
    for (size_t n = nFirst; n < words.size(); ++n) {
        const std::string strOnce = BytesOf(words[n]);
        const auto nRepeat = static_cast<size_t>(words[n].lRepeat);
        if (strBytes.size() + strOnce.size() * nRepeat > kMostBytes) {
            throw ScriptProblem{"more than 16 MiB in one line"};
        }
        if (strOnce.size() == 1) {
            strBytes.append(nRepeat, strOnce.front());
            continue;
        }
        for (size_t nTime = 0; nTime < nRepeat && !strOnce.empty(); ++nTime) {
            strBytes += strOnce;
        }
    }
    return strBytes;
}

int64_t ScriptNumber(std::string_view strText, std::string_view strWhat, int64_t lLeast,
                     int64_t lMost) {
    int64_t lValue = 0;
    const char* end = strText.data() + strText.size();
    const auto parsed = std::from_chars(strText.data(), end, lValue);
    if (parsed.ec != std::errc() || parsed.ptr != end || lValue < lLeast || lValue > lMost) {
        throw ScriptProblem{std::string(strWhat) + " must be a whole number from " +
                            std::to_string(lLeast) + " to " + std::to_string(lMost) + ", not " +
                            Quoted(strText)};
    }
    return lValue;
}

const std::string& ScriptLine::Word(const char* strWhat) {
    const std::string& strText = Text(strWhat);
    if (words_[nWord_ - 1].bQuoted) {
        throw ScriptProblem{std::string(strWhat) + " is expected in place of " + Quoted(strText)};
    }
    return strText;
}

const std::string& ScriptLine::Text(const char* strWhat) {
    if (!bMore()) {
        throw ScriptProblem{std::string(strWhat) + " is missing at the end of the line"};
    }
    const ScriptWord& word = words_[nWord_++];
    if (word.lRepeat != 1) {
        throw ScriptProblem{std::string(strWhat) + " is expected in place of " +
                            Quoted(word.strText)};
    }
    return word.strText;
}

int64_t ScriptLine::Number(const char* strWhat, int64_t lLeast, int64_t lMost) {
    return ScriptNumber(Word(strWhat), strWhat, lLeast, lMost);
}

Microseconds ScriptLine::Time() {
    return Number("a time in milliseconds", 0, kLongestMs) * 1000;
}

std::string ScriptLine::RestAsBytes() {
    const size_t nFirst = std::exchange(nWord_, words_.size());
    return ScriptBytes(words_, nFirst);
}

void ScriptLine::End() const {
    if (bMore()) {
        throw ScriptProblem{"nothing more is expected at " + Quoted(words_[nWord_].strText)};
    }
}

std::optional<ScriptFrames> ReadFrames(const std::string& strFirstWord, ScriptLine& line) {
    if (strFirstWord == "frame") {
        const int64_t lFrame = line.Number("a frame number", 1, kMostTimes);
        return ScriptFrames{lFrame, lFrame};
    }
    if (strFirstWord == "frames") {
        const std::string_view strRange = line.Word("a range of frames");
        const size_t nDash = std::min(strRange.find('-'), strRange.size());
        const int64_t lFirst =
            ScriptNumber(strRange.substr(0, nDash), "the first frame", 1, kMostTimes);
        return ScriptFrames{lFirst,
                            ScriptNumber(strRange.substr(std::min(nDash + 1, strRange.size())),
                                         "the last frame", lFirst, kMostTimes)};
    }
    if (strFirstWord == "every" && line.Word("frame") == "frame") {
        return ScriptFrames{1, std::numeric_limits<int64_t>::max()};
    }
    return std::nullopt;
}

bool ReadScript(std::string_view strText, const std::function<void(ScriptLine&)>& readLine,
                std::string& strError) {
    int64_t lLine = 0;
    try {
        while (!strText.empty()) {
            ++lLine;
            const size_t nEnd = std::min(strText.find('\n'), strText.size());
            ScriptLine line(strText.substr(0, nEnd));
            if (line.bMore()) {
                readLine(line);
                line.End();
            }
            strText.remove_prefix(std::min(nEnd + 1, strText.size()));
        }
    } catch (const ScriptProblem& problem) {
        strError = "line " + std::to_string(lLine) + ": " + problem.strReason;
        return false;
    }
    return true;
}

} // namespace brennik::sim
