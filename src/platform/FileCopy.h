// Copying and moving native files and folders.
// Room-internal: LinuxFiles stands on it.
#pragma once

#include <cstdint>
#include <string>

namespace brennik {

enum class Existing {
    Replace, ///< what is there is overwritten
    Refuse,  ///< what is there is FileAlreadyExists
};

/// Copies a regular file with its mode. A target that a failed copy has created is removed again.
void CopyFileTo(const std::string& strSource, const std::string& strTarget, Existing existing);

/// Moves a file, over a border between devices too; an existing target is FileAlreadyExists.
void MoveFileTo(const std::string& strSource, const std::string& strTarget);

/// Copies a folder with all that is in it into a folder that is there or is made; symbolic links
/// are copied as links. A target inside the source is refused.
void CopyFolderTo(const std::string& strSource, const std::string& strTarget, Existing existing);

/// Bytes of all regular files in a folder and below it.
int64_t SizeOfFolder(const std::string& strFolder);

} // namespace brennik
