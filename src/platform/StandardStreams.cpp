#include "platform/StandardStreams.h"

#include "platform/Descriptor.h"

#include <cstdio>
#include <cstdlib>
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

void EndProcess() {
    static_cast<void>(std::fflush(nullptr)); // there is nowhere left to tell of a failure
    std::_Exit(0);
}

} // namespace brennik
