// A walk over a folder and all that is below it, deepest entries first on the way back. It needs
// three descriptors and a small stack however deep the tree is, and never follows a symbolic link.
// Room-internal: deleting, measuring and copying folders stand on it.
#pragma once

#include "platform/Descriptor.h"

#include <string>
#include <sys/stat.h>
#include <vector>

namespace brennik {

/// What is done on a walk. Whatever these throw ends it.
class FolderVisitor {
  public:
    virtual ~FolderVisitor() = default;

    /// An entry of the folder at hand, a folder too, before anything below it. strBelow is the
    /// path from the root of the walk to the folder at hand, empty or with a "/" at its end.
    virtual void Entry(int nFolder, const std::string& strBelow, const std::string& strName,
                       const struct stat& status) = 0;

    /// A folder whose content has been walked; nParent is the folder that holds it.
    virtual void Left(int nParent, const std::string& strName) = 0;
};

/// Walks the folder, whose entries are read as a whole before the first is visited, so that a
/// visitor may remove them. Throws a RuntimeFailure when something can't be read, or when the tree
/// is being moved about meanwhile.
void WalkFolder(Descriptor folder, FolderVisitor& visitor);

} // namespace brennik
