#include "platform/SharedObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using testing::ElementsAre;

std::vector<std::string> PlacesFor(const std::string& strExecutable) {
    return LibraryPlaces(
        {strExecutable, "bin", "lib/x86_64-linux-gnu", "/usr/lib/x86_64-linux-gnu"}, "libx.so");
}

TEST(SharedObject, IsBesideTheProgramOrWhereLibrariesAreInstalled) {
    EXPECT_THAT(PlacesFor("/home/user/build/program"),
                ElementsAre("/home/user/build/libx.so", "/usr/lib/x86_64-linux-gnu/libx.so"));
}

TEST(SharedObject, IsFoundBelowAnyPrefixThatTheProgramWasInstalledTo) {
    EXPECT_THAT(PlacesFor("/opt/pos/bin/program"),
                ElementsAre("/opt/pos/bin/libx.so", "/opt/pos/lib/x86_64-linux-gnu/libx.so",
                            "/usr/lib/x86_64-linux-gnu/libx.so"));
    EXPECT_THAT(PlacesFor("/bin/program"),
                ElementsAre("/bin/libx.so", "/lib/x86_64-linux-gnu/libx.so",
                            "/usr/lib/x86_64-linux-gnu/libx.so"));
}

TEST(SharedObject, IsNotLookedForBelowAFolderThatOnlyEndsLikeTheOneOfPrograms) {
    EXPECT_THAT(PlacesFor("/tmp/cabin/program"),
                ElementsAre("/tmp/cabin/libx.so", "/usr/lib/x86_64-linux-gnu/libx.so"));
}

TEST(SharedObject, IsNotLookedForBelowAPrefixWhenTheFoldersAreWholePaths) {
    EXPECT_THAT(LibraryPlaces({"/opt/pos/bin/program", "", "", "/srv/lib"}, "libx.so"),
                ElementsAre("/opt/pos/bin/libx.so", "/srv/lib/libx.so"));
}

TEST(SharedObject, IsNeverLookedForInTheCurrentFolder) {
    EXPECT_THAT(PlacesFor(""), ElementsAre("/usr/lib/x86_64-linux-gnu/libx.so"));
}

TEST(SharedObject, OfThisProcessIsFirstBesideItsExecutable) {
    const std::vector<std::string> places = LibraryPlaces("libx.so");
    EXPECT_THAT(places.front(), testing::EndsWith("/tests/libx.so"));
    EXPECT_THAT(places.back(), testing::EndsWith("/libx.so"));
    EXPECT_EQ(places.size(), 2u);
}

TEST(SharedObject, ThatIsNowhereGivesNoReason) {
    const SharedFunction found = FindSharedFunction({"/nowhere/libx.so"}, "Function");
    EXPECT_EQ(found.function, nullptr);
    EXPECT_EQ(found.strPath, "");
    EXPECT_EQ(found.strFailure, "");
}

} // namespace
} // namespace brennik
