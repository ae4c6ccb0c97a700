#include "platform/StandardStreams.h"

#include "platform/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace brennik {

void OpenStandardStreams() {
    for (int nStandard = STDIN_FILENO; nStandard <= STDERR_FILENO; ++nStandard) {
        if (::fcntl(nStandard, F_GETFD) != -1) {
            continue;
        }
        // The lowest free number is the one that is missing. It stays open for what we start.
        static_cast<void>(Resumed([] { return ::open("/dev/null", O_RDWR); }));
    }
}

} // namespace brennik
