#include "platform/Wildcards.h"

#include "platform/PlainText.h"

namespace brennik {

bool HasWildcard(std::string_view strPattern) {
    return strPattern.find_first_of("*?") != std::string_view::npos;
}

bool MatchesWildcard(std::string_view strName, std::string_view strPattern) {
    if (strPattern == "*.*") {
        return true;
    }
    size_t nName = 0;
    size_t nPattern = 0;
    // Where the last "*" stands and how far its run reaches: no other one is ever gone back to.
    size_t nStar = std::string_view::npos;
    size_t nRunEnd = 0;
    while (nName < strName.size()) {
        if (nPattern < strPattern.size() && strPattern[nPattern] == '*') {
            nStar = nPattern++;
            nRunEnd = nName;
        } else if (nPattern < strPattern.size() &&
                   (strPattern[nPattern] == '?' ||
                    UpperAscii(strPattern[nPattern]) == UpperAscii(strName[nName]))) {
            ++nPattern;
            ++nName;
        } else if (nStar != std::string_view::npos) {
            nPattern = nStar + 1;
            nName = ++nRunEnd;
        } else {
            return false;
        }
    }
    return strPattern.find_first_not_of('*', nPattern) == std::string_view::npos;
}

std::string UpperCasedName(std::string_view strName) {
    return UpperAscii(strName);
}

} // namespace brennik
