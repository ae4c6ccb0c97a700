#include "tests/passthru/Device.h"

#include "sim/BlockCheck.h"

#include <algorithm>
#include <utility>

namespace brennik::passthru {

namespace {

constexpr char kStx = '\x02';
constexpr char kEtx = '\x03';

constexpr Microseconds kSilenceInFrame = 500 * world::kMillisecond;

/// The check over all behind the start character.
std::string CheckOf(std::string_view strCovered, bool bLrc) {
    if (bLrc) {
        char cCheck = 0;
        for (const char c : strCovered)
            cCheck = static_cast<char>(cCheck ^ c);
        return {cCheck};
    }
    const uint16_t iCheck = sim::BlockCheck(strCovered);
    return {static_cast<char>(iCheck >> 8), static_cast<char>(iCheck & 0xFF)};
}

} // namespace

std::string LrcFrame(std::string_view strPayload) {
    const std::string strCovered = std::string(strPayload) + kEtx;
    return kStx + strCovered + CheckOf(strCovered, true);
}

std::string CrcFrame(std::string_view strPayload) {
    const std::string strCovered =
        strPayload.starts_with('W') ? std::string(strPayload) : std::string(strPayload) + kEtx;
    return kStx + strCovered + CheckOf(strCovered, false);
}

std::vector<std::string> Device::Texts() const {
    std::vector<std::string> texts;
    for (const Heard& heard : heard_)
        texts.push_back(heard.strWhat);
    return texts;
}

int64_t Device::Count(std::string_view strWhat) const {
    return std::ranges::count(heard_, strWhat, &Heard::strWhat);
}

std::vector<std::string> Device::Payloads() const {
    std::vector<std::string> payloads;
    for (const Heard& heard : heard_) {
        if (heard.strWhat.front() == '[')
            payloads.push_back(heard.strWhat.substr(1, heard.strWhat.size() - 2));
    }
    return payloads;
}

void Device::Forget() {
    heard_.clear();
    strBytes_.clear();
}

void Device::Say(Saying saying) {
    if (saying.delay == 0) {
        wire_->Send(saying.strBytes);
    } else {
        timeline_.At(saying.delay, [this, saying] { wire_->Send(saying.strBytes); });
    }
}

void Device::Connected(sim::Wire& wire, sim::Microseconds) {
    wire_ = &wire;
}

void Device::Received(sim::Wire&, sim::Microseconds now, std::string_view strBytes) {
    strBytes_ += strBytes;
    for (const char cByte : strBytes)
        Hear(cByte);
    deadline_.reset();
    if (!strFrame_.empty())
        deadline_ = now + kSilenceInFrame;
}

void Device::Elapsed(sim::Wire&, sim::Microseconds) {
    deadline_.reset();
    strFrame_.clear();
    Note("part");
}

void Device::Hear(char cByte) {
    if (!strFrame_.empty() || cByte == kStx) {
        HearFrameByte(cByte);
        return;
    }
    switch (cByte) {
    case '\x05':
        return Note("ENQ");
    case '\x06':
        return Note("ACK");
    case '\x15':
        return Note("NAK");
    default:
        return Note("noise");
    }
}

void Device::HearFrameByte(char cByte) {
    strFrame_ += cByte;
    const std::string_view strBehind = std::string_view(strFrame_).substr(1);
    const size_t nCheck = bLrc_ ? 1 : 2;
    size_t nCovered = strBehind.find(kEtx) + 1;
    size_t nPayload = nCovered - 1;
    if (strBehind.starts_with('W')) {
        if (strBehind.size() < 7)
            return;
        nCovered = nPayload = size_t{7} + static_cast<unsigned char>(strBehind[1]) * size_t{256} +
                              static_cast<unsigned char>(strBehind[2]);
    }
    if (nCovered == 0 || strBehind.size() < nCovered + nCheck)
        return;
    const bool bGood = strBehind.substr(nCovered) == CheckOf(strBehind.substr(0, nCovered), bLrc_);
    std::string strWhat = (bGood ? "[" : "bad[") + std::string(strBehind.substr(0, nPayload)) + "]";
    strFrame_.clear();
    Note(std::move(strWhat));
}

void Device::Note(std::string strWhat) {
    heard_.push_back({timeline_.Now(), strWhat});
    if (onHeard)
        onHeard(strWhat);
    const auto laidOut = on_.find(strWhat);
    if (laidOut != on_.end() && !laidOut->second.empty()) {
        const Saying saying = std::move(laidOut->second.front());
        laidOut->second.pop_front();
        Say(saying);
        return;
    }
    auto each = always_.find(strWhat);
    if (each == always_.end() && strWhat.front() == '[')
        each = always_.find("[]");
    if (each != always_.end())
        Say(each->second);
}

} // namespace brennik::passthru
