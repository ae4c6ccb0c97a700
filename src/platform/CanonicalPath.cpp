#include "platform/CanonicalPath.h"

#include <cstdlib>
#include <memory>

namespace brennik {

std::optional<std::string> CanonicalPath(const std::string& strPath) {
    const std::unique_ptr<char, void (*)(void*)> found(::realpath(strPath.c_str(), nullptr),
                                                       std::free);
    return found ? std::optional<std::string>(found.get()) : std::nullopt;
}

bool IsOrHolds(const std::string& strOuter, const std::string& strInner) {
    const std::string strBelow = strOuter == "/" ? strOuter : strOuter + "/";
    return strInner == strOuter || strInner.compare(0, strBelow.size(), strBelow) == 0;
}

} // namespace brennik
