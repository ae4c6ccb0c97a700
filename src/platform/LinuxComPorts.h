// Serial lines on the terminals of the operating system, found by the host file. The last error is
// the plain errno; every descriptor is close-on-exec, interrupted calls resume.
// Tests above the seam put lines in memory of the simulated host in its place.
#pragma once

#include "platform/ComPorts.h"
#include "platform/HostFile.h"
#include "platform/SerialLine.h"

#include <memory>
#include <vector>

namespace brennik {

class LinuxComPorts : public ComPorts {
  public:
    explicit LinuxComPorts(HostFile hostFile);

    int32_t LastError() override;
    int32_t Open(const std::string& strPort) override;
    bool Close(int32_t hPort) override;
    bool Read(int32_t hPort, char* buffer, int32_t lCount, int32_t& lRead) override;
    bool Write(int32_t hPort, std::string_view strData, int32_t& lWritten) override;
    void Purge(int32_t hPort, int32_t lFlags) override;
    bool GetState(int32_t hPort, DCB& dcb) override;
    bool SetState(int32_t hPort, const DCB& dcb) override;
    bool SetTimeouts(int32_t hPort, const CommTimeouts& timeouts) override;

  private:
    /// The line of a handle; none, with errno set, when the handle is none.
    SerialLine* Line(int32_t hPort);
    bool Outcome(bool bDone);

    HostFile hostFile_;
    std::vector<std::unique_ptr<SerialLine>> lines_; ///< by handle, with gaps
    int32_t lLastError_ = 0;
};

} // namespace brennik
