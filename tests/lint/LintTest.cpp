// The rules of the house over the whole tree.
#include "tests/lint/Rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace brennik {
namespace {

using testing::IsEmpty;

const lint::SourceFiles& Tree() {
    static const lint::SourceFiles files = lint::ReadSourceTree(BRENNIK_SOURCE_DIR);
    return files;
}

std::string TextOf(const std::string& strPath) {
    const auto file = std::ranges::find(Tree(), strPath, &lint::SourceFile::strPath);
    return file == Tree().end() ? std::string() : file->strText;
}

TEST(Lint, ReadsTheWholeTree) {
    EXPECT_THAT(TextOf("src/platform/Host.h"), testing::HasSubstr("class ScopedHost"));
    EXPECT_THAT(TextOf("src/config/ProfileKeys.cpp"), testing::HasSubstr("\"Profile"));
    EXPECT_THAT(TextOf("sim/FarEnd.h"), testing::HasSubstr("class FarEnd"));
    EXPECT_THAT(TextOf("tests/lint/LintTest.cpp"), testing::HasSubstr("ReadsTheWholeTree"));
}

TEST(Lint, RoomsStandOnlyOnRoomsBelow) {
    EXPECT_THAT(lint::CheckRoomTable(Tree()), IsEmpty());
}

TEST(Lint, SystemHeadersStandInTheirRooms) {
    EXPECT_THAT(lint::CheckSystemHeaders(Tree()), IsEmpty());
}

TEST(Lint, SystemCallsStandInTheirRooms) {
    EXPECT_THAT(lint::CheckCallsInTheirRooms(Tree()), IsEmpty());
}

TEST(Lint, NoTestWaitsForRealTime) {
    EXPECT_THAT(lint::CheckRealWaits(Tree()), IsEmpty());
}

TEST(Lint, NoTestIsSkipped) {
    EXPECT_THAT(lint::CheckSkippedTests(Tree()), IsEmpty());
}

TEST(Lint, NoWorkIsLeftOver) {
    EXPECT_THAT(lint::CheckLeftovers(Tree()), IsEmpty());
}

TEST(Lint, EveryTestFileIsBuilt) {
    const std::string strList = lint::ReadTextFile(BRENNIK_SOURCE_DIR, "tests/CMakeLists.txt");
    ASSERT_THAT(strList, testing::HasSubstr("brennik_tests"));
    EXPECT_THAT(lint::CheckTestsAreBuilt(Tree(), strList), IsEmpty());
}

TEST(Lint, EveryHeaderSaysWhatItIs) {
    EXPECT_THAT(lint::CheckHeaderComments(Tree()), IsEmpty());
}

TEST(Lint, NoFileIsTooLong) {
    EXPECT_THAT(lint::CheckFileLengths(Tree()), IsEmpty());
}

} // namespace
} // namespace brennik
