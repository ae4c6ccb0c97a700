#include "link/CommsErrors.h"

#include <string>

namespace brennik {

void SetError(ErrorState& error, const CommsError& commsError, std::string_view strSuffix) {
    error.Set(commsError.lErrorCode, std::string(commsError.strText).append(strSuffix));
}

} // namespace brennik
