#include "tests/lint/WireExamples.h"

#include "tests/lint/SourceTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>

namespace brennik::lint {

namespace {

std::string Trimmed(std::string_view strText) {
    const size_t nFirst = strText.find_first_not_of(' ');
    if (nFirst == std::string_view::npos) {
        return {};
    }
    return std::string(strText.substr(nFirst, strText.find_last_not_of(' ') + 1 - nFirst));
}

/// The bytes of pairs of hexadecimal digits with blanks between them.
std::string FromHex(std::string_view strText) {
    std::string strBytes;
    while (!strText.empty()) {
        const size_t nBlank = std::min(strText.find(' '), strText.size());
        EXPECT_EQ(nBlank, 2u) << "no pair of digits: " << strText;
        strBytes += static_cast<char>(ToNumber(strText.substr(0, nBlank), 16));
        strText.remove_prefix(std::min(nBlank + 1, strText.size()));
    }
    return strBytes;
}

/// A text in double quotes, or a number, as the text that it stands for.
std::string Unquoted(std::string_view strText) {
    if (strText.empty() || strText.front() != '"') {
        return std::string(strText);
    }
    EXPECT_TRUE(strText.size() >= 2 && strText.back() == '"') << strText;
    std::string strValue;
    for (size_t i = 1; i + 1 < strText.size(); ++i) {
        if (strText[i] != '\\') {
            strValue += strText[i];
            continue;
        }
        const char c = strText[++i];
        strValue += c == 'r' ? '\r' : c == 'n' ? '\n' : c;
    }
    return strValue;
}

} // namespace

int32_t ToNumber(std::string_view strText, int32_t lBase) {
    int32_t lValue = 0;
    const char* end = strText.data() + strText.size();
    const auto parsed = std::from_chars(strText.data(), end, lValue, lBase);
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        ADD_FAILURE() << "no number: " << strText;
    }
    return lValue;
}

std::vector<std::string> WireExample::All(std::string_view strKey) const {
    std::vector<std::string> strRests;
    for (const WireLine& line : lines) {
        if (line.strKey == strKey) {
            strRests.push_back(line.strRest);
        }
    }
    return strRests;
}

std::string WireExample::Bytes(std::string_view strKey) const {
    std::string strBytes;
    for (const std::string& strRest : All(strKey)) {
        strBytes += FromHex(strRest);
    }
    EXPECT_FALSE(strBytes.empty()) << "no line \"" << strKey << "\"";
    return strBytes;
}

std::map<std::string, std::string> WireExample::Values(std::string_view strKey) const {
    std::map<std::string, std::string> values;
    for (const std::string& strRest : All(strKey)) {
        const size_t nBlank = std::min(strRest.find(' '), strRest.size());
        values[strRest.substr(0, nBlank)] = Unquoted(Trimmed(strRest.substr(nBlank)));
    }
    return values;
}

std::string WireExample::NamedValue(std::string_view strKey,
                                    const std::string& strValueName) const {
    const auto values = Values(strKey);
    const auto found = values.find(strValueName);
    EXPECT_NE(found, values.end()) << "no value " << strValueName;
    return found == values.end() ? std::string() : found->second;
}

std::vector<WireExample> WireExamplesOf(std::string_view strText) {
    constexpr std::string_view kFence = "```wire ";
    std::vector<WireExample> examples;
    bool bInside = false;
    for (const std::string& strLine : SplitLines(strText)) {
        if (!bInside && strLine.starts_with(kFence)) {
            examples.push_back({Trimmed(strLine.substr(kFence.size())), {}});
            bInside = true;
        } else if (strLine.starts_with("```")) {
            bInside = false;
        } else if (bInside) {
            const std::string strCode = strLine.substr(0, strLine.find(" | "));
            const size_t nBlank = std::min(strCode.find(' '), strCode.size());
            examples.back().lines.push_back(
                {strCode.substr(0, nBlank), Trimmed(strCode.substr(nBlank))});
        }
    }
    return examples;
}

std::vector<WireTurn> WireTurnsOf(const WireExample& example) {
    std::vector<WireTurn> turns;
    for (const WireLine& line : example.lines) {
        if (line.strKey != "client" && line.strKey != "service") {
            continue;
        }
        const bool bClient = line.strKey == "client";
        if (turns.empty() || turns.back().bClient != bClient) {
            turns.push_back({bClient, {}});
        }
        turns.back().strBytes += FromHex(line.strRest);
    }
    return turns;
}

} // namespace brennik::lint
