// The worked examples of docs/wire-format.md: the reader of its blocks.
// Plain text work; the test of the document plays what it reads against the code.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::lint {

/// One line of an example: its key, and the rest without a comment.
struct WireLine {
    std::string strKey;
    std::string strRest;
};

/// One block. What is asked for and isn't there, or is no hexadecimal, fails the test at hand.
struct WireExample {
    std::string strName;
    std::vector<WireLine> lines;

    std::vector<std::string> All(std::string_view strKey) const;

    /// The bytes of all lines with the key. There must be some.
    std::string Bytes(std::string_view strKey) const;

    /// The named values of a key, as "gives lDataSize 5", without the quotes of a text.
    std::map<std::string, std::string> Values(std::string_view strKey) const;

    /// One of them. It must be there.
    std::string NamedValue(std::string_view strKey, const std::string& strValueName) const;
};

/// The examples of a document: its blocks fenced with "```wire NAME".
std::vector<WireExample> WireExamplesOf(std::string_view strText);

/// What one side sends at one point of a conversation.
struct WireTurn {
    bool bClient;
    std::string strBytes;
};

/// The turns of an example; neighbouring lines of one side are one turn.
std::vector<WireTurn> WireTurnsOf(const WireExample& example);

/// A whole number; anything else fails the test at hand.
int32_t ToNumber(std::string_view strText, int32_t lBase = 10);

} // namespace brennik::lint
