// Texts between the system, which has bytes, and the windows, which have characters.
// Plain computation over the toolkit's strings; tests use it as it is.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace brennik {

/// Bytes to be shown in one line, as plain text: UTF-8; what isn't shows as the replacement mark.
/// Control characters, line ends among them, show as their pictures, and marks that would turn
/// the direction of what follows as the replacement mark.
QString LineText(std::string_view strBytes);

/// The same for texts of several lines: CR LF and LF stay line ends.
QString MessageText(std::string_view strBytes);

/// What the user typed, as UTF-8. A line end, which can only come with a pasted text, ends it: no
/// value of a file could hold one.
std::string BytesOf(const QString& strText);

} // namespace brennik
