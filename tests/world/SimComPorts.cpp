#include "tests/world/SimComPorts.h"

#include "platform/LineSettings.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace brennik::world {

namespace {

constexpr std::string_view kDevicePrefix = "\\\\.\\";

/// A write comes back when what is still to leave takes no longer than this.
constexpr Microseconds kStillToLeave = 10 * kMillisecond;

/// When a call with these two limits is over; both 0 mean never.
Microseconds EndOf(Microseconds now, int32_t lConstant, int32_t lMultiplier, size_t nBytes) {
    const int64_t lLimit = int64_t{lConstant} + int64_t{lMultiplier} * static_cast<int64_t>(nBytes);
    return lConstant == 0 && lMultiplier == 0 ? kNever : now + lLimit * kMillisecond;
}

} // namespace

SimLine& SimComPorts::AddLine(const std::string& strPort) {
    const auto [entry, bAdded] = lines_.try_emplace(strPort, std::make_unique<SimLine>(timeline_));
    if (!bAdded) {
        throw std::logic_error("There is a line behind " + strPort + " already.");
    }
    return *entry->second;
}

ScriptedPeer& SimComPorts::AddPeer(const std::string& strPort) {
    peers_.push_back(std::make_unique<ScriptedPeer>(timeline_));
    ScriptedPeer& peer = *peers_.back();
    AddLine(strPort).ServeEachOpening([&peer] { return peer.MakeFarEnd(); });
    return peer;
}

SimLine* SimComPorts::Find(int32_t hPort) {
    const auto found = open_.find(hPort);
    return found == open_.end() ? nullptr : found->second;
}

bool SimComPorts::Fail(int32_t lError) {
    lLastError_ = lError;
    return false;
}

void SimComPorts::Note(std::string strCall) {
    if (!bRecording_) {
        return;
    }
    if (ledger_.Recording()) {
        ledger_.Record(strCall);
    }
    calls.push_back(std::move(strCall));
}

SimLine* SimComPorts::Enter(Op op, int32_t hPort, const Fault** fault) {
    const Fault* met = ledger_.Enter(op);
    if (fault != nullptr && met != nullptr && met->lResult) {
        *fault = met;
    } else if (met != nullptr) {
        Fail(met->lLastError);
        return nullptr;
    }
    SimLine* line = Find(hPort);
    if (line == nullptr) {
        Fail(comerror::kNoHandle);
    }
    return line;
}

int32_t SimComPorts::LastError() {
    ledger_.Enter();
    return lLastError_;
}

int32_t SimComPorts::Open(const std::string& strPort) {
    Note("Open " + strPort);
    if (const Fault* fault = ledger_.Enter(Op::ComOpen)) {
        Fail(fault->lLastError);
        return kNoComPort;
    }
    const bool bPrefixed = strPort.starts_with(kDevicePrefix);
    const auto found = lines_.find(strPort.substr(bPrefixed ? kDevicePrefix.size() : 0));
    if (found == lines_.end() || found->second->bDown_) {
        Fail(comerror::kMissing);
        return kNoComPort;
    }
    if (found->second->IsOpen()) {
        Fail(comerror::kBusy);
        return kNoComPort;
    }
    open_[lNextHandle_] = found->second.get();
    found->second->Open();
    return lNextHandle_++;
}

bool SimComPorts::Close(int32_t hPort) {
    Note("Close");
    SimLine* line = Enter(Op::ComClose, hPort);
    if (line == nullptr) {
        return false;
    }
    open_.erase(hPort);
    line->CloseByProgram();
    return true;
}

bool SimComPorts::Read(int32_t hPort, char* buffer, int32_t lCount, int32_t& lRead) {
    Note("Read " + std::to_string(lCount));
    lRead = 0;
    SimLine* line = Enter(Op::ComRead, hPort);
    if (line == nullptr) {
        return false;
    }
    const size_t nCount = static_cast<size_t>(std::max(lCount, 0));
    const CommTimeouts& limits = line->Timeouts();
    const Microseconds end = EndOf(timeline_.Now(), limits.ReadTotalTimeoutConstant,
                                   limits.ReadTotalTimeoutMultiplier, nCount);
    while (line->nWaiting() < nCount && timeline_.Now() < end) {
        timeline_.Step(end);
    }
    if (line->nWaiting() == 0 && line->Dead()) {
        return Fail(comerror::kHungUp);
    }
    const std::string strTaken = line->Take(nCount);
    strTaken.copy(buffer, strTaken.size());
    lRead = static_cast<int32_t>(strTaken.size());
    return true;
}

bool SimComPorts::Write(int32_t hPort, std::string_view strData, int32_t& lWritten) {
    Note("Write " + std::to_string(strData.size()));
    if (bRecording_) {
        writes.emplace_back(strData);
    }
    lWritten = 0;
    const Fault* fault = nullptr;
    SimLine* line = Enter(Op::ComWrite, hPort, &fault);
    if (line == nullptr) {
        return false;
    }
    if (fault != nullptr) {
        strData = strData.substr(0, static_cast<size_t>(*fault->lResult));
    }
    const CommTimeouts& limits = line->Timeouts();
    const Microseconds end = EndOf(timeline_.Now(), limits.WriteTotalTimeoutConstant,
                                   limits.WriteTotalTimeoutMultiplier, strData.size());
    if (line->Dead()) {
        return Fail(comerror::kHungUp);
    }
    const int64_t nLeftBefore = line->nLeft();
    line->Write(strData);
    const auto bStillMany = [&] {
        return static_cast<Microseconds>(line->nUnsent()) * line->ByteTime() > kStillToLeave ||
               !line->strHeld_.empty();
    };
    while (!line->Dead() && bStillMany() && timeline_.Now() < end) {
        timeline_.Step(end);
    }
    if (line->Dead()) {
        return Fail(comerror::kHungUp);
    }
    lWritten = static_cast<int32_t>(strData.size());
    if (bStillMany() && line->nLeft() == nLeftBefore) {
        lWritten -= static_cast<int32_t>(std::min(line->nUnsent(), strData.size()));
        line->DropUnsent();
    }
    return true;
}

void SimComPorts::Purge(int32_t hPort, int32_t lFlags) {
    Note("Purge " + std::to_string(lFlags));
    ledger_.Enter();
    SimLine* line = Find(hPort);
    if (line == nullptr) {
        return;
    }
    if ((lFlags & purgeflag::kRxClear) != 0) {
        static_cast<void>(line->Take(line->nWaiting()));
    }
    if ((lFlags & purgeflag::kTxClear) != 0) {
        line->DropUnsent();
    }
}

bool SimComPorts::GetState(int32_t hPort, DCB& dcb) {
    Note("GetState");
    SimLine* line = Enter(Op::ComGetState, hPort);
    if (line == nullptr) {
        return false;
    }
    dcb = line->near_;
    return true;
}

bool SimComPorts::SetState(int32_t hPort, const DCB& dcb) {
    Note("SetState");
    SimLine* line = Enter(Op::ComSetState, hPort);
    if (line == nullptr) {
        return false;
    }
    if (line->Dead()) {
        return Fail(comerror::kHungUp);
    }
    if (!LineSettingsOf(dcb)) {
        return Fail(comerror::kInvalid);
    }
    line->near_ = dcb;
    return true;
}

bool SimComPorts::SetTimeouts(int32_t hPort, const CommTimeouts& timeouts) {
    Note("SetTimeouts");
    SimLine* line = Enter(Op::ComSetTimeouts, hPort);
    if (line == nullptr) {
        return false;
    }
    line->timeouts_ = timeouts;
    return true;
}

} // namespace brennik::world
