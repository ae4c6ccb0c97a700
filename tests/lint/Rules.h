// The rules of the house that a machine can check. Each takes source files and gives its findings,
// one line each: path, line where there is one, and what is wrong. No findings is a pass.
// They look at texts alone, so that each rule is itself tested with a bad example.
#pragma once

#include "tests/lint/SourceTree.h"

#include <string>
#include <string_view>
#include <vector>

namespace brennik::lint {

using Findings = std::vector<std::string>;
using SourceFiles = std::vector<SourceFile>;

/// Every #include "..." names a file of the tree from a root, of a room that the including room
/// may stand on.
Findings CheckRoomTable(const SourceFiles& files);

/// Every #include <...> is on the list of the room: plain C++ headers everywhere, system headers
/// only where the operating system is met, a window toolkit only in windows.
Findings CheckSystemHeaders(const SourceFiles& files);

/// No sleep, system clock, errno, message box, locale, or hand-written catch outside its room.
Findings CheckCallsInTheirRooms(const SourceFiles& files);

/// No test waits for real time to pass, but those on the real system.
Findings CheckRealWaits(const SourceFiles& files);

/// No test is switched off or skips itself.
Findings CheckSkippedTests(const SourceFiles& files);

/// No note of work left over.
Findings CheckLeftovers(const SourceFiles& files);

/// Every file with tests is called *Test.cpp and lies in a folder that the build takes in.
Findings CheckTestsAreBuilt(const SourceFiles& files, std::string_view strTestsCMakeLists);

/// Every header of src and sim opens with at least two lines of comment and is included once.
Findings CheckHeaderComments(const SourceFiles& files);

/// No file is longer than 700 lines.
Findings CheckFileLengths(const SourceFiles& files);

} // namespace brennik::lint
