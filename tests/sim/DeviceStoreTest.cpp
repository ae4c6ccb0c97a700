#include "sim/DeviceStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace brennik {
namespace {

using namespace std::string_view_literals;
using sim::MemoryStore;
using sim::StoredPath;
using testing::ElementsAre;
using testing::Pair;

TEST(DeviceStore, MakesPathsThatStayBelowItsRoot) {
    const struct {
        std::string_view strFolder;
        std::string_view strName;
        std::string_view strPath;
    } cases[] = {
        {"I/1", "a.bin", "I/1/a.bin"},
        {"I/15", "sub\\a.bin", "I/15/sub/a.bin"},
        {"/home/usr1", "a", "home/usr1/a"},
        {"", "a", "a"},
        {"I/1", "../../etc/passwd", "I/1/etc/passwd"},
        {"I/..", "..\\..\\a", "I/a"},
        {"../..", "/a", "a"},
        {"I/1", "./a/./b", "I/1/a/b"},
        {"I//1\\", "a", "I/1/a"},
        {"I/1", "", "I/1/_"},
        {"I/1", "..", "I/1/_"},
        {"", "", "_"},
        {"I\0/1"sv, "a\0b"sv, "I_/1/a_b"},
        {"I/1", "...", "I/1/..."},
        {"I/1", "a..b", "I/1/a..b"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(StoredPath(row.strFolder, row.strName), row.strPath);
    }
}

TEST(DeviceStore, KeepsFilesInMemory) {
    MemoryStore store;
    EXPECT_FALSE(store.Write("nowhere"));
    EXPECT_TRUE(store.Open("a", 0));
    EXPECT_TRUE(store.Write("12"));
    EXPECT_TRUE(store.Append("config.sys", "A=B"));
    EXPECT_TRUE(store.Write("345"));
    store.Close();
    EXPECT_FALSE(store.Write("too late"));
    EXPECT_TRUE(store.Append("config.sys", ";C"));
    EXPECT_THAT(store.Files(), ElementsAre(Pair("a", "12345"), Pair("config.sys", "A=B;C")));
}

TEST(DeviceStore, KeepsAsMuchOfAFileAsItIsTold) {
    MemoryStore store;
    store.Files() = {{"a", "12345"}, {"b", "12345"}, {"c", "12345"}, {"d", "12"}};
    EXPECT_TRUE(store.Open("a", 0));
    EXPECT_TRUE(store.Open("b", 3));
    EXPECT_TRUE(store.Write("x"));
    EXPECT_TRUE(store.Open("c", std::nullopt));
    EXPECT_TRUE(store.Write("x"));
    EXPECT_TRUE(store.Open("d", 3));
    EXPECT_TRUE(store.Write("x"));
    EXPECT_THAT(store.Files(), ElementsAre(Pair("a", ""), Pair("b", "123x"), Pair("c", "12345x"),
                                           Pair("d", "12x")));
}

} // namespace
} // namespace brennik
