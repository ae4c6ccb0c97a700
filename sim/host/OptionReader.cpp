#include "sim/host/OptionReader.h"

#include <algorithm>
#include <cstddef>

namespace brennik::sim {

void ReadOptions(const std::vector<std::string>& arguments, const std::vector<Option>& options) {
    for (size_t n = 0; n < arguments.size(); ++n) {
        const std::string& strArgument = arguments[n];
        if (strArgument.compare(0, 2, "--") != 0) {
            throw UsageProblem{"unexpected argument \"" + strArgument + "\""};
        }
        const size_t nEquals = std::min(strArgument.find('='), strArgument.size());
        const std::string strName = strArgument.substr(0, nEquals);
        const bool bJoined = nEquals < strArgument.size();
        const auto option = std::find_if(options.begin(), options.end(), [&](const Option& known) {
            return known.strName == strName;
        });
        if (option == options.end()) {
            throw UsageProblem{"unknown option " + strName};
        }
        if (!option->bTakesValue) {
            if (bJoined) {
                throw UsageProblem{"option " + strName + " takes no value"};
            }
            option->take({});
        } else if (bJoined) {
            option->take(strArgument.substr(nEquals + 1));
        } else if (n + 1 < arguments.size()) {
            option->take(arguments[++n]);
        } else {
            throw UsageProblem{"option " + strName + " needs a value"};
        }
    }
}

} // namespace brennik::sim
