// The user's home folder, as the environment and as the system's list of users name it.
// Room-internal; it stands on HOME and the passwd entry of the process's user.
#pragma once

#include <string>
#include <vector>

namespace brennik {

/// HOME first, then the entry of the list; what is missing or no absolute path is left out.
std::vector<std::string> HomeFolders();

} // namespace brennik
