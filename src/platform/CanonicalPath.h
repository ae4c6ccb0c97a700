// Native paths without links, and which of two folders holds the other.
// Room-internal: what protects folders stands on it.
#pragma once

#include <optional>
#include <string>

namespace brennik {

/// The absolute path of what is there, without links and without ".."; nothing when it isn't there
/// or can't be reached.
std::optional<std::string> CanonicalPath(const std::string& strPath);

/// True when the second of two canonical paths is the first or lies below it.
bool IsOrHolds(const std::string& strOuter, const std::string& strInner);

} // namespace brennik
