// Matching of file names against patterns with "*" and "?". Plain text work, shared by the real
// files and the files in memory of the tests.
#pragma once

#include <string>
#include <string_view>

namespace brennik {

/// True when the text holds a "*" or a "?".
bool HasWildcard(std::string_view strPattern);

/// True when the whole name matches: "*" stands for any run of bytes, "?" for any one; letters
/// match without regard to case (ASCII). "*.*" matches every name, with a dot or without.
bool MatchesWildcard(std::string_view strName, std::string_view strPattern);

/// The name with its ASCII letters in upper case; folders are listed in the order of these.
std::string UpperCasedName(std::string_view strName);

} // namespace brennik
