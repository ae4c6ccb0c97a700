// The fixture of the tests of FileSystem: one object over the files in memory.
// Any call of these files can be made to fail.
#pragma once

#include "support/FileSystem.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {

using Names = std::vector<std::string>;

inline constexpr int16_t kRead = 0;
inline constexpr int16_t kWrite = 1;
inline constexpr int16_t kAppend = 2;

class FileSystemTest : public world::WorldTest {
  protected:
    void FailNext(world::Op op, FailureKind kind) { host.FailNext(op, {.kind = kind}); }

    int32_t Open(const std::string& strPath, int16_t iMode = kWrite) {
        const int32_t lHandle = files.OpenFile(strPath, iMode);
        EXPECT_GT(lHandle, 0) << files.strErrorMessage();
        return lHandle;
    }

    FileSystem files;
};

} // namespace brennik
