#include "shell/WindowsEntry.h"

// A module of another version, which has to refuse.
extern "C" __attribute__((visibility("default"))) int32_t BrennikOpenWindows(int32_t lVersion, int,
                                                                             char**) {
    return lVersion == brennik::kWindowsVersion + 1 ? brennik::kWindowsClosed
                                                    : brennik::kWindowsForeign;
}
