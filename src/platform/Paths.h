// From the system's texts to native paths, and back to drive form. Plain text work: what drives
// there are is handed in. LinuxFiles and its neighbours use it with the drives of the host file,
// the files in memory of the tests with a table of their own.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace brennik {

/// Drive letters (upper case) and the native folders they stand for, without a "/" at the end
/// unless it is the root itself.
using DriveTable = std::map<char, std::string>;

/// The table without a host file: one drive, C, which is the root.
DriveTable DefaultDrives();

/// True when there is a drive of that letter, in upper or lower case.
bool IsKnownDrive(char letter, const DriveTable& drives);

/// Maps a text to a native path. "X:\rest" is the folder of drive X, then the rest; "/" serves
/// as well behind the colon. Every other text has each "\" turned into "/". Nothing for an empty
/// text, a zero byte, an unknown drive, or a network path (two backslashes in front): these are
/// paths that don't exist.
std::optional<std::string> NativePath(std::string_view strText, const DriveTable& drives);

/// The text in drive form. A native path ("/" in front) goes to the drive whose folder holds it,
/// the deepest one where several do; under no drive it stays as it is. A text with a drive in front
/// has its "/" turned into "\". Every other text, relative or of a network, stays as it is.
std::string DriveForm(std::string_view strText, const DriveTable& drives);

/// A native path without any "/" at its end; the root stays.
std::string WithoutEndSeparators(std::string strNative);

} // namespace brennik
