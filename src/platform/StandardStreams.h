// The three standard descriptors of the process, which a caller may have closed before the start.
// It stands on the operating system alone; its tests start processes with closed descriptors.
#pragma once

namespace brennik {

/// Opens each closed descriptor of 0 to 2 on /dev/null, so that no file or socket of ours ever
/// takes its number. To be called first of all.
void OpenStandardStreams();

/// Ends the process at once with status 0; only what was printed still goes out. For a library that
/// would otherwise end it with a crash.
[[noreturn]] void EndProcess();

} // namespace brennik
