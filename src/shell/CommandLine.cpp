#include "shell/CommandLine.h"

#include "platform/PumpEvents.h"
#include "support/AsciiText.h"
#include "support/Failure.h"

namespace brennik {

namespace {

// Positions count from 1 here, as the rules of the search are told in them.
char CharacterAt(const std::string& strText, size_t lPos) {
    return strText[lPos - 1];
}

// Leaves the cursor on the last position when only blanks follow.
void SkipBlanks(const std::string& strCmdLine, size_t& lPos) {
    while (lPos <= strCmdLine.size() && CharacterAt(strCmdLine, lPos) == ' ')
        ++lPos;
    if (lPos > strCmdLine.size())
        lPos = strCmdLine.size();
}

int16_t ReadQuotedToken(const std::string& strCmdLine, std::string& strValue, size_t& lPos) {
    const size_t lLength = strCmdLine.size();
    strValue += CharacterAt(strCmdLine, lPos++);
    bool bClosed = false;
    while (!bClosed && lPos <= lLength) {
        PumpEvents();
        const char c = CharacterAt(strCmdLine, lPos);
        strValue += c;
        if (c == '"') {
            if (lPos < lLength && CharacterAt(strCmdLine, lPos + 1) == '"')
                ++lPos;
            else
                bClosed = true;
        }
        ++lPos;
    }
    if (!bClosed)
        return 1;
    if (lPos <= lLength && CharacterAt(strCmdLine, lPos) != ' ')
        return 1;
    strValue = strValue.substr(1, strValue.size() - 2);
    return 0;
}

int16_t ReadPlainToken(const std::string& strCmdLine, std::string& strValue, size_t& lPos,
                       const std::string& strDelimiter) {
    for (; lPos <= strCmdLine.size(); ++lPos) {
        const char c = CharacterAt(strCmdLine, lPos);
        // A delimiter behind a blank is the next option; inside a value it is a character.
        const bool bNextOption = !strDelimiter.empty() && c == strDelimiter.front() && lPos > 1 &&
                                 CharacterAt(strCmdLine, lPos - 1) == ' ';
        if (c == ' ' || bNextOption) {
            ++lPos;
            break;
        }
        strValue += c;
    }
    strValue = Trim(strValue);
    return 0;
}

} // namespace

int16_t GetCommandLineArg(const std::string& strName, std::string& strValue,
                          const std::string& strCmdLine) {
    strValue.clear();
    return Guarded(
        [&]() -> int16_t {
            const size_t nFound = strName.empty() ? std::string::npos : strCmdLine.find(strName);
            if (nFound == std::string::npos)
                return 1;
            size_t lPos = nFound + 1 + strName.size();
            // One trailing character behind the name isn't looked at: it is meant so.
            if (lPos >= strCmdLine.size())
                return 0;
            SkipBlanks(strCmdLine, lPos);
            if (CharacterAt(strCmdLine, lPos) == '"')
                return ReadQuotedToken(strCmdLine, strValue, lPos);
            return ReadPlainToken(strCmdLine, strValue, lPos, "-");
        },
        [](const std::string&) -> int16_t { return 1; });
}

std::string CommandLineFromArguments(const std::vector<std::string>& strArguments) {
    std::string strCmdLine;
    bool bFirst = true;
    for (const std::string& strArgument : strArguments) {
        if (!bFirst)
            strCmdLine += ' ';
        bFirst = false;
        const bool bQuote = strArgument.find(' ') != std::string::npos &&
                            strArgument.front() != '"' && strArgument.front() != '-';
        if (!bQuote) {
            strCmdLine += strArgument;
            continue;
        }
        strCmdLine += '"';
        for (char c : strArgument) {
            strCmdLine += c;
            if (c == '"')
                strCmdLine += '"';
        }
        strCmdLine += '"';
    }
    return strCmdLine;
}

} // namespace brennik
