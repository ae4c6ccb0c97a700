// A folder on disk as the tree that a service serves: files directly in it are served without
// drive and group, its folders are drives, their folders are groups.
// Tests of the service itself fill a ServedTree in memory instead.
#pragma once

#include "sim/ServedTree.h"

#include <string>

namespace brennik::sim {

/// Adds what stands in a folder, in the order of the names, as it is at this moment; the files are
/// opened when a session comes to them. False, with the reason in strError, when something there
/// can't be served: a deeper folder, anything but files and folders, a file of 4 GiB or more, or a
/// name that a client would not store as it stands.
bool AddFolder(ServedTree& tree, const std::string& strFolder, std::string& strError);

} // namespace brennik::sim
