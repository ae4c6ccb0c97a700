#include "sim/DeviceScript.h"

#include "sim/Codec.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace brennik::sim {

namespace {

constexpr size_t kForm = 3;  ///< the field that says full or partial
constexpr size_t kBlock = 7; ///< the field that names the block size
constexpr size_t kDefaultBlock = 1024;

} // namespace

const DeviceAnswer* DeviceAnswers::Next(Microseconds now) {
    for (; nAnswer_ < answers_.size(); ++nAnswer_, lGiven_ = 0) {
        const DeviceAnswer& answer = answers_[nAnswer_];
        if (lGiven_ == 0) {
            begun_ = now;
        }
        const bool bTurn = answer.lTimes   ? lGiven_ < *answer.lTimes
                           : answer.length ? now - begun_ < *answer.length
                                           : true;
        if (bTurn) {
            ++lGiven_;
            return &answer;
        }
    }
    return nullptr;
}

std::string DeviceCall::strAsked() const {
    if (ask != Ask::Request) {
        return strRecord;
    }
    const auto end = strFields.begin() + static_cast<std::ptrdiff_t>(nFields);
    return JoinRecord({strFields.begin(), end});
}

std::optional<std::string> DeviceCall::strAskedInstead() const {
    if (!bFallsBack || strFallback) {
        return bFallsBack ? strFallback : std::nullopt;
    }
    DeviceCall partial;
    partial.strFields = strFields;
    partial.strFields[kForm].assign(1, 'P');
    partial.nFields = nFields;
    return partial.strAsked();
}

size_t DeviceCall::nBlock() const {
    const std::string& strField = strFields[kBlock];
    const char* end = strField.data() + strField.size();
    size_t nBlock = 0;
    const auto parsed = std::from_chars(strField.data(), end, nBlock);
    const bool bUsable =
        parsed.ec == std::errc() && parsed.ptr == end && nBlock >= 1 && nBlock <= kLargestBlock;
    return bUsable ? nBlock : kDefaultBlock;
}

std::vector<const DeviceAction*> DeviceCall::ActionsAt(DevicePlace place, int64_t lFrame) const {
    std::vector<const DeviceAction*> actions;
    for (const DeviceRule& rule : rules) {
        if (rule.place == place && (place != DevicePlace::Frame || rule.frames.bHolds(lFrame))) {
            actions.push_back(&rule.action);
        }
    }
    return actions;
}

} // namespace brennik::sim
