#include "platform/LinuxComPorts.h"

#include "platform/SerialTerminal.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace brennik {

LinuxComPorts::LinuxComPorts(HostFile hostFile) : hostFile_(std::move(hostFile)) {
}

SerialLine* LinuxComPorts::Line(int32_t hPort) {
    SerialLine* line = hPort >= 0 && static_cast<size_t>(hPort) < lines_.size()
                           ? lines_[static_cast<size_t>(hPort)].get()
                           : nullptr;
    if (line == nullptr) {
        errno = EBADF;
    }
    return line;
}

bool LinuxComPorts::Outcome(bool bDone) {
    if (!bDone) {
        lLastError_ = errno;
    }
    return bDone;
}

int32_t LinuxComPorts::LastError() {
    return lLastError_;
}

int32_t LinuxComPorts::Open(const std::string& strPort) {
    // An empty path is one that doesn't exist.
    Descriptor terminal = OpenSerialTerminal(hostFile_.PortPath(strPort));
    if (!Outcome(terminal.IsOpen())) {
        return kNoComPort;
    }
    auto gap = std::find(lines_.begin(), lines_.end(), nullptr);
    if (gap == lines_.end()) {
        gap = lines_.emplace(gap);
    }
    *gap = std::make_unique<SerialLine>(std::move(terminal));
    return static_cast<int32_t>(gap - lines_.begin());
}

bool LinuxComPorts::Close(int32_t hPort) {
    SerialLine* line = Line(hPort);
    if (!Outcome(line != nullptr && line->Close())) {
        return false;
    }
    lines_[static_cast<size_t>(hPort)].reset();
    return true;
}

bool LinuxComPorts::Read(int32_t hPort, char* buffer, int32_t lCount, int32_t& lRead) {
    SerialLine* line = Line(hPort);
    return Outcome(line != nullptr && line->Read(buffer, lCount, lRead));
}

bool LinuxComPorts::Write(int32_t hPort, std::string_view strData, int32_t& lWritten) {
    SerialLine* line = Line(hPort);
    return Outcome(line != nullptr && line->Write(strData, lWritten));
}

void LinuxComPorts::Purge(int32_t hPort, int32_t lFlags) {
    if (SerialLine* line = Line(hPort)) {
        line->Purge(lFlags);
    }
}

bool LinuxComPorts::GetState(int32_t hPort, DCB& dcb) {
    const SerialLine* line = Line(hPort);
    if (line != nullptr) {
        dcb = line->State();
    }
    return Outcome(line != nullptr);
}

bool LinuxComPorts::SetState(int32_t hPort, const DCB& dcb) {
    SerialLine* line = Line(hPort);
    return Outcome(line != nullptr && line->SetState(dcb));
}

bool LinuxComPorts::SetTimeouts(int32_t hPort, const CommTimeouts& timeouts) {
    SerialLine* line = Line(hPort);
    return Outcome(line != nullptr && line->SetTimeouts(timeouts));
}

} // namespace brennik
