// What a service serves: configuration variables, messages, and files in drives and groups.
// For real it is read from a folder (sim/host/FolderTree); tests fill it in memory. Files are read
// piece by piece through a function, so that a file of any size takes no memory.
#pragma once

#include "platform/DateTime.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::sim {

/// Reads nCount bytes at an offset into the buffer and gives the number read; fewer is a failure.
using ReadAt = std::function<size_t(int64_t lOffset, char* buffer, size_t nCount)>;

struct ServedFile {
    std::string strName;
    int64_t lSize = 0; ///< bytes, below 2^32: offsets on the wire have 32 bits
    DateTime modified{2015, 5, 22, 11, 0, 0};

    /// Opens the file for one session; the reader holds what it needs. An empty function means
    /// that the file can't be opened.
    std::function<ReadAt()> open;
};

/// One thing of a session, in the order in which a service sends them.
struct ServedItem {
    enum class Kind { Variable, Message, Drive, Group, File };

    Kind kind;
    const std::string* strText; ///< the variable, message, drive or group; null for a file
    const ServedFile* file;     ///< null for all but a file
};

class ServedTree {
  public:
    /// A configuration variable as "name=value".
    void AddVariable(std::string strLine);
    void AddMessage(std::string strText);

    /// A drive, or a group in a drive, with no file yet. Names that are there already stay where
    /// they are; the order of first mention is the order of sending.
    void AddDrive(const std::string& strDrive);
    void AddGroup(const std::string& strDrive, const std::string& strGroup);

    /// A file; without drive and group it goes to the root, without a group directly into the
    /// drive. A group without a drive is an invalid procedure call (RuntimeFailure).
    void AddFile(const std::string& strDrive, const std::string& strGroup, ServedFile file);

    /// A file whose bytes are kept in memory.
    void AddFile(const std::string& strDrive, const std::string& strGroup, std::string strName,
                 std::string strBytes);

    /// All that is served, in this order: the variables; the messages; the files of the root; each
    /// drive that holds files of its own or nothing at all, with these files; then again each
    /// drive that has groups, and in it each group with its files. The pointers live as long as
    /// the tree stays unchanged.
    ///
    /// Files directly in drives come before the first group because a client that has once been
    /// told a group keeps it when the drive changes: from then on no file reaches a drive folder
    /// itself any more.
    std::vector<ServedItem> Sequence() const;

  private:
    struct Group {
        std::string strName;
        std::vector<ServedFile> files;
    };
    struct Drive {
        std::string strName;
        std::vector<ServedFile> files;
        std::vector<Group> groups;
    };

    Drive& DriveOf(const std::string& strDrive);
    Group& GroupOf(const std::string& strDrive, const std::string& strGroup);

    std::vector<std::string> variables_;
    std::vector<std::string> messages_;
    std::vector<ServedFile> files_;
    std::vector<Drive> drives_;
};

} // namespace brennik::sim
