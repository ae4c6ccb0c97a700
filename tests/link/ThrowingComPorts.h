// Serial ports whose every call fails as no port call does: with a run-time failure. For the
// catch-alls of the classes above them.
#pragma once

#include "platform/ComPorts.h"
#include "platform/RuntimeFailure.h"

#include <string>
#include <string_view>

namespace brennik {

class ThrowingComPorts final : public ComPorts {
  public:
    int32_t LastError() override { Throw(); }
    int32_t Open(const std::string&) override { Throw(); }
    bool Close(int32_t) override { Throw(); }
    bool Read(int32_t, char*, int32_t, int32_t&) override { Throw(); }
    bool Write(int32_t, std::string_view, int32_t&) override { Throw(); }
    void Purge(int32_t, int32_t) override { Throw(); }
    bool GetState(int32_t, DCB&) override { Throw(); }
    bool SetState(int32_t, const DCB&) override { Throw(); }
    bool SetTimeouts(int32_t, const CommTimeouts&) override { Throw(); }

  private:
    [[noreturn]] static void Throw() { throw RuntimeFailure(FailureKind::DeviceIoError); }
};

} // namespace brennik
