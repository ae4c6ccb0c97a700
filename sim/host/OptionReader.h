// Reads the options of one command: "--name value", "--name=value" and "--name" alone.
// Names are never shortened, so that a later option can't change what a command line means.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::sim {

/// What is wrong with a command line or with a file that it names, for one line on stderr.
struct UsageProblem {
    std::string strReason;
};

struct Option {
    std::string_view strName; ///< with the two dashes
    bool bTakesValue;
    std::function<void(const std::string& strValue)> take; ///< the value is empty for a flag
};

/// Hands each argument to its option, in order. Throws UsageProblem for an unknown option, a
/// missing or unwanted value, and anything that is no option.
void ReadOptions(const std::vector<std::string>& arguments, const std::vector<Option>& options);

} // namespace brennik::sim
