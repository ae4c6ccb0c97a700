#include "platform/IniText.h"

#include "platform/PlainText.h"

#include <algorithm>
#include <utility>

namespace brennik {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kNewLineEnd = "\r\n";

bool SameName(std::string_view strLeft, std::string_view strRight) {
    return std::equal(strLeft.begin(), strLeft.end(), strRight.begin(), strRight.end(),
                      [](char left, char right) { return UpperAscii(left) == UpperAscii(right); });
}

std::string_view WithoutQuotes(std::string_view strValue) {
    if (strValue.size() >= 2 && strValue.front() == strValue.back() &&
        (strValue.front() == '"' || strValue.front() == '\'')) {
        return strValue.substr(1, strValue.size() - 2);
    }
    return strValue;
}

struct Line {
    std::string_view strText; ///< without its end
    std::string_view strEnd;  ///< "\r\n", "\n", or nothing at the end of the content
    size_t nBegin = 0;
    size_t nNext = 0; ///< where the following line begins
};

/// The line that begins at nBegin, which must lie inside the content.
Line LineAt(std::string_view strContent, size_t nBegin) {
    Line line;
    line.nBegin = nBegin;
    const size_t nFeed = strContent.find('\n', nBegin);
    if (nFeed == std::string_view::npos) {
        line.strText = strContent.substr(nBegin);
        line.nNext = strContent.size();
        return line;
    }
    const bool bReturn = nFeed > nBegin && strContent[nFeed - 1] == '\r';
    const size_t nEnd = bReturn ? nFeed - 1 : nFeed;
    line.strText = strContent.substr(nBegin, nEnd - nBegin);
    line.strEnd = strContent.substr(nEnd, nFeed + 1 - nEnd);
    line.nNext = nFeed + 1;
    return line;
}

size_t FirstLineOf(std::string_view strContent) {
    return strContent.substr(0, kByteOrderMark.size()) == kByteOrderMark ? kByteOrderMark.size()
                                                                         : 0;
}

/// A section line without its closing bracket still opens a section, so that the keys behind it
/// never fall to the section before.
std::optional<std::string_view> SectionNameOf(std::string_view strLine) {
    std::string_view strTrimmed = WithoutBlanks(strLine);
    if (strTrimmed.empty() || strTrimmed.front() != '[') {
        return std::nullopt;
    }
    strTrimmed.remove_prefix(1);
    return WithoutBlanks(strTrimmed.substr(0, strTrimmed.find(']')));
}

/// The position of the "=" of a key line, or npos.
size_t EqualsOf(std::string_view strLine) {
    const size_t nFirst = strLine.find_first_not_of(' ');
    if (nFirst == std::string_view::npos || strLine[nFirst] == ';') {
        return std::string_view::npos;
    }
    return strLine.find('=');
}

struct Body {
    size_t nHeader = 0; ///< the section's own line
    size_t nBegin = 0;  ///< the line behind it
    size_t nEnd = 0;    ///< the next section's line or the end of the content
};

/// Calls visit(name, body) for each section; visit ends the walk by giving true.
template <class Visit>
void VisitSections(std::string_view strContent, Visit&& visit) {
    std::optional<std::string_view> strName;
    Body body;
    for (size_t nAt = FirstLineOf(strContent); nAt < strContent.size();) {
        const Line line = LineAt(strContent, nAt);
        if (const auto strNext = SectionNameOf(line.strText)) {
            body.nEnd = line.nBegin;
            if (strName && visit(*strName, body)) {
                return;
            }
            strName = strNext;
            body = Body{line.nBegin, line.nNext, 0};
        }
        nAt = line.nNext;
    }
    body.nEnd = strContent.size();
    if (strName) {
        static_cast<void>(visit(*strName, body)); // the walk is over either way
    }
}

std::optional<Body> FindSection(std::string_view strContent, std::string_view strSection) {
    std::optional<Body> found;
    VisitSections(strContent, [&](std::string_view strName, const Body& body) {
        if (SameName(strName, WithoutBlanks(strSection))) {
            found = body;
        }
        return found.has_value();
    });
    return found;
}

std::optional<Line> FindKeyLine(std::string_view strContent, size_t nBegin, size_t nEnd,
                                std::string_view strKey) {
    const std::string_view strWanted = WithoutBlanks(strKey);
    for (size_t nAt = nBegin; nAt < nEnd;) {
        const Line line = LineAt(strContent, nAt);
        const size_t nEquals = EqualsOf(line.strText);
        if (nEquals != std::string_view::npos &&
            SameName(WithoutBlanks(line.strText.substr(0, nEquals)), strWanted)) {
            return line;
        }
        nAt = line.nNext;
    }
    return std::nullopt;
}

/// The name on a key line.
std::string_view NameOf(std::string_view strLine) {
    return WithoutBlanks(strLine.substr(0, EqualsOf(strLine)));
}

bool NameBefore(std::string_view strLeft, std::string_view strRight) {
    return std::lexicographical_compare(
        strLeft.begin(), strLeft.end(), strRight.begin(), strRight.end(),
        [](char left, char right) { return UpperAscii(left) < UpperAscii(right); });
}

/// Where the key lines of a section begin, in the order of their names; of one name in the order of
/// the text.
std::vector<size_t> SortedKeyLines(std::string_view strContent, size_t nBegin, size_t nEnd) {
    std::vector<size_t> lines;
    for (size_t nAt = nBegin; nAt < nEnd;) {
        const Line line = LineAt(strContent, nAt);
        if (EqualsOf(line.strText) != std::string_view::npos) {
            lines.push_back(nAt);
        }
        nAt = line.nNext;
    }
    std::stable_sort(lines.begin(), lines.end(), [&](size_t nLeft, size_t nRight) {
        return NameBefore(NameOf(LineAt(strContent, nLeft).strText),
                          NameOf(LineAt(strContent, nRight).strText));
    });
    return lines;
}

/// The value of a key line, trimmed, its quotes still on it.
std::string_view RawValueOf(std::string_view strLine) {
    return WithoutBlanks(strLine.substr(EqualsOf(strLine) + 1));
}

std::string ValueOf(std::string_view strLine) {
    return std::string(WithoutQuotes(RawValueOf(strLine)));
}

std::string WithChangedLine(std::string_view strContent, const Line& line,
                            std::string_view strValue) {
    const std::string_view strRaw = RawValueOf(line.strText);
    if (strRaw == WithoutBlanks(strValue) || WithoutQuotes(strRaw) == strValue) {
        return std::string(strContent);
    }
    // What stands up to the value is the user's: the name's spelling and the blanks around "=".
    size_t nValue = EqualsOf(line.strText) + 1;
    const size_t nText = line.strText.find_first_not_of(' ', nValue);
    nValue = nText == std::string_view::npos ? nValue : nText;
    std::string strResult(strContent.substr(0, line.nBegin + nValue));
    strResult += strValue;
    strResult += line.strEnd;
    strResult += strContent.substr(line.nNext);
    return strResult;
}

std::string WithAddedLine(std::string_view strContent, const Body& body,
                          const std::string& strLine) {
    Line last = LineAt(strContent, body.nHeader);
    for (size_t nAt = body.nBegin; nAt < body.nEnd;) {
        const Line line = LineAt(strContent, nAt);
        if (!WithoutBlanks(line.strText).empty()) {
            last = line;
        }
        nAt = line.nNext;
    }
    std::string strResult(strContent.substr(0, last.nNext));
    if (last.strEnd.empty()) {
        strResult += kNewLineEnd;
    }
    strResult += strLine;
    strResult += last.strEnd.empty() ? kNewLineEnd : last.strEnd;
    strResult += strContent.substr(last.nNext);
    return strResult;
}

std::string WithAddedSection(std::string_view strContent, std::string_view strSection,
                             const std::string& strLine) {
    std::string_view strEnd = kNewLineEnd;
    std::string strResult(strContent);
    if (strContent.size() > FirstLineOf(strContent)) {
        if (strContent.back() != '\n') {
            strResult += kNewLineEnd;
        } else if (strContent.size() < 2 || strContent[strContent.size() - 2] != '\r') {
            strEnd = "\n";
        }
    }
    strResult += '[';
    strResult += strSection;
    strResult += ']';
    strResult += strEnd;
    strResult += strLine;
    strResult += strEnd;
    return strResult;
}

} // namespace

std::optional<std::string> FindIniValue(std::string_view strContent, std::string_view strSection,
                                        std::string_view strKey) {
    const auto body = FindSection(strContent, strSection);
    const auto line =
        body ? FindKeyLine(strContent, body->nBegin, body->nEnd, strKey) : std::nullopt;
    return line ? std::optional(ValueOf(line->strText)) : std::nullopt;
}

bool HasIniSection(std::string_view strContent, std::string_view strSection) {
    return FindSection(strContent, strSection).has_value();
}

std::string WithIniValue(std::string_view strContent, std::string_view strSection,
                         std::string_view strKey, std::string_view strValue) {
    const auto body = FindSection(strContent, strSection);
    if (body) {
        if (const auto line = FindKeyLine(strContent, body->nBegin, body->nEnd, strKey)) {
            return WithChangedLine(strContent, *line, strValue);
        }
    }
    std::string strLine(WithoutBlanks(strKey));
    strLine += '=';
    strLine += strValue;
    return body ? WithAddedLine(strContent, *body, strLine)
                : WithAddedSection(strContent, WithoutBlanks(strSection), strLine);
}

bool CanStandOnOneLine(std::string_view strText) {
    return strText.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

IniIndex::IniIndex(std::string strContent) : strContent_(std::move(strContent)) {
    VisitSections(strContent_, [this](std::string_view strName, const Body& body) {
        sections_.try_emplace(UpperAscii(strName), Section{body.nBegin, body.nEnd, {}});
        return false;
    });
}

std::optional<std::string> IniIndex::Find(std::string_view strSection, std::string_view strKey) {
    const auto found = sections_.find(UpperAscii(WithoutBlanks(strSection)));
    if (found == sections_.end()) {
        return std::nullopt;
    }
    Section& section = found->second;
    if (!section.keyLines) {
        section.keyLines = SortedKeyLines(strContent_, section.nBegin, section.nEnd);
    }
    const auto textAt = [&](size_t nLine) { return LineAt(strContent_, nLine).strText; };
    const std::string_view strWanted = WithoutBlanks(strKey);
    const auto line = std::lower_bound(section.keyLines->begin(), section.keyLines->end(),
                                       strWanted, [&](size_t nLine, std::string_view strName) {
                                           return NameBefore(NameOf(textAt(nLine)), strName);
                                       });
    if (line == section.keyLines->end() || !SameName(NameOf(textAt(*line)), strWanted)) {
        return std::nullopt;
    }
    return ValueOf(textAt(*line));
}

} // namespace brennik
