// A folder on disk as the store of a device.
// Tests of the device itself keep its files in memory instead.
#pragma once

#include "sim/DeviceStore.h"

#include <string>

namespace brennik::sim {

/// Names lead nowhere else: no link below the folder is followed, and what stands in the way of a
/// file or a folder is left alone.
class FolderStore : public DeviceStore {
  public:
    FolderStore() = default;
    ~FolderStore() override;
    FolderStore(const FolderStore&) = delete;
    FolderStore& operator=(const FolderStore&) = delete;

    /// Takes a folder, made when it isn't there. Once, before all else. False with the reason in
    /// strError.
    bool OpenFolder(const std::string& strFolder, std::string& strError);

    bool Open(const std::string& strPath, std::optional<size_t> nKeep) override;
    bool Write(std::string_view strBytes) override;
    bool Append(const std::string& strPath, std::string_view strBytes) override;
    void Close() override;

  private:
    int OpenAt(const std::string& strPath) const;

    int folder_ = -1;
    int file_ = -1;
};

} // namespace brennik::sim
