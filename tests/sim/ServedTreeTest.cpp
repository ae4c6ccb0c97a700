#include "sim/ServedTree.h"

#include "platform/RuntimeFailure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using sim::ServedItem;
using sim::ServedTree;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Sequence(const ServedTree& tree) {
    std::vector<std::string> texts;
    for (const ServedItem& item : tree.Sequence()) {
        const char* kinds[] = {"variable ", "message ", "drive ", "group ", "file "};
        texts.push_back(kinds[static_cast<int>(item.kind)] +
                        (item.file != nullptr ? item.file->strName : *item.strText));
    }
    return texts;
}

TEST(ServedTree, ServesNothingAtFirst) {
    EXPECT_THAT(Sequence(ServedTree()), IsEmpty());
}

TEST(ServedTree, SendsVariablesThenMessagesThenFilesOfTheRoot) {
    ServedTree tree;
    tree.AddFile("", "", "b.txt", "b");
    tree.AddMessage("hello");
    tree.AddFile("", "", "a.txt", "a");
    tree.AddVariable("X=1");
    tree.AddVariable("A=2");
    EXPECT_THAT(Sequence(tree), ElementsAre("variable X=1", "variable A=2", "message hello",
                                            "file b.txt", "file a.txt"));
}

TEST(ServedTree, SendsFilesOfDrivesBeforeTheFirstGroup) {
    ServedTree tree;
    tree.AddFile("F", "1", "f1", "");
    tree.AddFile("F", "", "f", "");
    tree.AddFile("I", "2", "i2", "");
    tree.AddFile("I", "", "i", "");
    tree.AddFile("F", "2", "f2", "");
    EXPECT_THAT(Sequence(tree),
                ElementsAre("drive F", "file f", "drive I", "file i", "drive F", "group 1",
                            "file f1", "group 2", "file f2", "drive I", "group 2", "file i2"));
}

TEST(ServedTree, NamesADriveOnceWhenAllItsFilesStandInGroups) {
    ServedTree tree;
    tree.AddFile("F", "1", "f1", "");
    EXPECT_THAT(Sequence(tree), ElementsAre("drive F", "group 1", "file f1"));
}

TEST(ServedTree, TellsEmptyDrivesAndGroups) {
    ServedTree tree;
    tree.AddDrive("F");
    tree.AddGroup("I", "1");
    tree.AddGroup("I", "1");
    EXPECT_THAT(Sequence(tree), ElementsAre("drive F", "drive I", "group 1"));
}

TEST(ServedTree, RefusesAGroupWithoutADrive) {
    ServedTree tree;
    EXPECT_THROW(tree.AddFile("", "1", "x", ""), RuntimeFailure);
    EXPECT_THROW(tree.AddDrive(""), RuntimeFailure);
    EXPECT_THAT(Sequence(tree), IsEmpty());
}

TEST(ServedTree, ReadsFilesInMemoryAnywhere) {
    ServedTree tree;
    tree.AddFile("", "", "x", "0123456789");
    const auto items = tree.Sequence();
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].file->lSize, 10);
    const sim::ReadAt readAt = items[0].file->open();
    char buffer[8] = {};
    EXPECT_EQ(readAt(3, buffer, 4), 4U);
    EXPECT_STREQ(buffer, "3456");
    EXPECT_EQ(readAt(8, buffer, 4), 2U);
}

} // namespace
} // namespace brennik
