// Deleting a folder with all that is in it, and everything that forbids it. The decision by names
// is plain text work; the check of the tree and the removal stand on the operating system.
// Room-internal: LinuxFiles stands on it. Its tests run where even a wrong answer destroys nothing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brennik {

/// True when nothing forbids to delete the folder by its name: it must be an absolute path without
/// links, not the root, and neither be nor contain a protected folder or a mount point (all of
/// them canonical paths too).
bool MayDeleteByName(const std::string& strCanonical,
                     const std::vector<std::string>& protectedFolders,
                     const std::vector<std::string>& mountPoints);

/// The mount points in the text of the system's mount list.
std::vector<std::string> MountPointsIn(std::string_view strMountInfo);

/// Deletes the folder at a native path. Throws a RuntimeFailure before anything is gone when it is
/// protected, a link, or a mount point, or when an entry of the tree lies on another device, is one
/// of the protected folders under another name, or has no write bit.
void DeleteFolderTree(const std::string& strPath, const std::vector<std::string>& protectedFolders);

} // namespace brennik
