// The one call between the program and the module of its windows, which share no other code or
// data: each holds its own copy of the engine. Both sides and their tests include this.
#pragma once

#include "generated/Version.h"

#include <cstdint>

namespace brennik {

/// The file of the module, and the one function that it exports.
inline constexpr const char* kWindowsModuleName = "libbrennikwindows.so";
inline constexpr const char* kWindowsFunctionName = "BrennikOpenWindows";

/// Program and module fit when they come from one version.
inline constexpr int32_t kWindowsVersion =
    kVersionMajor * 10000 + kVersionMinor * 100 + kVersionRevision;

/// What the function gives.
inline constexpr int32_t kWindowsClosed = 0;  ///< it has done all that the program is for
inline constexpr int32_t kWindowsForeign = 1; ///< it is of another version and has done nothing

extern "C" {
/// Runs the program with these arguments, those of main, in windows, until the last one is closed.
/// Without a display it says so, prints the usage if that is asked for, and ends the process.
using OpenWindowsFunction = int32_t(int32_t lVersion, int argc, char** argv);
}

} // namespace brennik
