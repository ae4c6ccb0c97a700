// Which folder is the program's own. The choice is plain text work over what the process knows of
// itself; tests hand in made-up values.
#pragma once

#include <string>

namespace brennik {

/// What the choice rests on; an empty text is a value that isn't set.
struct ProgramFolderSources {
    std::string strBrennikHome;      ///< the environment's BRENNIK_HOME
    std::string strExecutable;       ///< the file that runs, as a whole path
    std::string strInstalledProgram; ///< where the program stands once it is installed
    std::string strDataHome;         ///< the environment's XDG_DATA_HOME
    std::string strHome;
    std::string strCurrentFolder;
};

struct ProgramFolderChoice {
    std::string strFolder;
    bool bCreate = false; ///< to be made when it is first needed
};

/// BRENNIK_HOME; else, for a program run from its installed place, the user's data folder; else
/// the folder of the executable. Absolute, without a separator at its end.
ProgramFolderChoice ChooseProgramFolder(const ProgramFolderSources& sources);

/// The choice for this process, as things stand now.
ProgramFolderChoice CurrentProgramFolder();

/// The file that runs, as a whole path; empty when the system doesn't tell it.
std::string ExecutableFile();

} // namespace brennik
