// Listing one native folder, and the times of its entries.
// Room-internal: LinuxFiles stands on it.
#pragma once

#include "platform/Files.h"

#include <string>
#include <vector>

namespace brennik {

/// The times of an open file.
std::optional<FileTimes> TimesOfDescriptor(int nDescriptor);

/// The entries of the folder (empty: the current one) that match the pattern, in the order of
/// their upper-cased names. A pattern without a wildcard is the exact name of one entry. Empty when
/// there is no such folder.
std::vector<FoundFile> ListMatching(const std::string& strFolder, const std::string& strPattern);

} // namespace brennik
