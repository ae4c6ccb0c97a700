#include "platform/Paths.h"

#include "platform/PlainText.h"

#include <algorithm>

namespace brennik {

namespace {

bool IsSeparator(char character) {
    return character == '\\' || character == '/';
}

/// The upper-cased letter of a text in drive form, or a zero byte.
char DriveLetterOf(std::string_view strText) {
    if (strText.size() < 2 || strText[1] != ':') {
        return '\0';
    }
    if (strText.size() > 2 && !IsSeparator(strText[2])) {
        return '\0';
    }
    const char letter = UpperAscii(strText[0]);
    return letter >= 'A' && letter <= 'Z' ? letter : '\0';
}

std::string WithSlashes(std::string_view strText) {
    std::string strPath(strText);
    std::replace(strPath.begin(), strPath.end(), '\\', '/');
    return strPath;
}

} // namespace

DriveTable DefaultDrives() {
    return DriveTable{{'C', "/"}};
}

bool IsKnownDrive(char letter, const DriveTable& drives) {
    return drives.count(UpperAscii(letter)) != 0;
}

std::optional<std::string> NativePath(std::string_view strText, const DriveTable& drives) {
    if (strText.empty() || strText.find('\0') != std::string_view::npos ||
        strText.substr(0, 2) == "\\\\") {
        return std::nullopt;
    }
    const char letter = DriveLetterOf(strText);
    if (letter == '\0') {
        return WithSlashes(strText);
    }
    const auto drive = drives.find(letter);
    if (drive == drives.end() || drive->second.empty()) {
        return std::nullopt;
    }
    std::string strPath = drive->second == "/" ? std::string() : drive->second;
    strPath += WithSlashes(strText.substr(2));
    return strPath.empty() ? std::string("/") : strPath;
}

std::string WithoutEndSeparators(std::string strNative) {
    while (strNative.size() > 1 && strNative.back() == '/') {
        strNative.pop_back();
    }
    return strNative;
}

} // namespace brennik
