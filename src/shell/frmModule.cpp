#include "shell/WindowsEntry.h"
#include "shell/frmWindows.h"

// All that the module shows of itself.
extern "C" __attribute__((visibility("default"))) int32_t
BrennikOpenWindows(int32_t lVersion, int argc, char** argv) {
    return brennik::OpenWindows(lVersion, argc, argv);
}
