// Where a device puts the files that it is sent, and how their paths come about.
// For real a folder on disk stands behind it (sim/host/FolderStore); tests keep the files in
// memory.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace brennik::sim {

/// One file at a time is open. Paths are made by StoredPath.
class DeviceStore {
  public:
    virtual ~DeviceStore() = default;

    /// Opens a file, made when it isn't there, and keeps its first nKeep bytes, or all of them.
    /// False when that can't be.
    virtual bool Open(const std::string& strPath, std::optional<size_t> nKeep) = 0;

    /// Puts bytes behind all that the open file has. False when that can't be.
    virtual bool Write(std::string_view strBytes) = 0;

    /// Puts bytes behind all that another file has, made when it isn't there; the open one stays
    /// open. False when that can't be.
    virtual bool Append(const std::string& strPath, std::string_view strBytes) = 0;

    /// Closes the file; without an open one it does nothing.
    virtual void Close() = 0;
};

class MemoryStore : public DeviceStore {
  public:
    bool Open(const std::string& strPath, std::optional<size_t> nKeep) override;
    bool Write(std::string_view strBytes) override;
    bool Append(const std::string& strPath, std::string_view strBytes) override;
    void Close() override { open_ = nullptr; }

    /// All files by their paths; a test may put some there.
    std::map<std::string, std::string>& Files() { return files_; }

  private:
    std::map<std::string, std::string> files_;
    std::string* open_ = nullptr;
};

/// The path of a file below the root of a store: the parts of folder and name, which "/" and "\"
/// set apart, with "/" between them. Parts that are empty, "." or ".." are left out, so that no
/// name leads out of the store; a zero byte becomes "_", and so does a name without any part.
std::string StoredPath(std::string_view strFolder, std::string_view strName);

} // namespace brennik::sim
