// How far the sending of one file has come, as the engine's getters show it while a local
// application download runs. That download stands behind it for real; tests put fixed values there.
#pragma once

#include <cstdint>
#include <string>

namespace brennik {

class DownloadProgress {
  public:
    virtual ~DownloadProgress() = default;

    virtual const std::string& strDownloadFileName() const = 0;
    virtual int32_t lDownloadFileSize() const = 0;    ///< bytes
    virtual int32_t lFileBytesDownloaded() const = 0; ///< bytes
};

} // namespace brennik
