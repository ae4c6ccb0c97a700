#include "platform/Paths.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;

const DriveTable kTwoDrives = {{'C', "/"}, {'D', "/srv/data"}, {'E', ""}};

struct Row {
    const char* strText;
    const char* strNative; ///< null: a path that doesn't exist
};

class PathsOf : public testing::TestWithParam<Row> {};

TEST_P(PathsOf, AreMapped) {
    const auto strNative = NativePath(GetParam().strText, kTwoDrives);
    if (GetParam().strNative == nullptr) {
        EXPECT_FALSE(strNative.has_value()) << *strNative;
    } else {
        ASSERT_TRUE(strNative.has_value());
        EXPECT_EQ(*strNative, GetParam().strNative);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PathsOf,
    testing::Values(Row{"C:\\home\\pos\\downloads\\", "/home/pos/downloads/"},
                    Row{"c:\\home\\pos", "/home/pos"},                                         //
                    Row{"C:\\", "/"},                                                          //
                    Row{"C:", "/"},                                                            //
                    Row{"C:/home/pos", "/home/pos"},                                           //
                    Row{"D:\\in\\a.txt", "/srv/data/in/a.txt"}, Row{"d:\\in", "/srv/data/in"}, //
                    Row{"D:", "/srv/data"},                                                    //
                    Row{"D:\\", "/srv/data/"},                                                 //
                    Row{"E:\\x", nullptr},                                                     //
                    Row{"Q:\\x", nullptr},                                                     //
                    Row{"Q:", nullptr},                                                        //
                    Row{"/srv/pos", "/srv/pos"},                                               //
                    Row{"/srv\\pos/x", "/srv/pos/x"}, Row{"\\srv\\pos", "/srv/pos"},           //
                    Row{"\\", "/"},                                                            //
                    Row{"a\\b", "a/b"},                                                        //
                    Row{"..\\x", "../x"},                                                      //
                    Row{"\\\\server\\share\\x", nullptr}, Row{"\\\\", nullptr},                //
                    Row{"//srv/pos", "//srv/pos"},                                             //
                    Row{"1:\\x", "1:/x"},                                                      //
                    Row{"CC:\\x", "CC:/x"},                                                    //
                    Row{"C:x", "C:x"},                                                         //
                    Row{"\xC4:\\x", "\xC4:/x"},                                                //
                    Row{"/a\xFF\\b", "/a\xFF/b"},                                              //
                    Row{"@:\\x", "@:/x"},                                                      //
                    Row{"[:\\x", "[:/x"},                                                      //
                    Row{"/C:\\x", "/C:/x"},                                                    //
                    Row{"/srv/C:\\x", "/srv/C:/x"},                                            //
                    Row{"", nullptr}));

TEST(Paths, GoBackToDriveForm) {
    const DriveTable drives = {
        {'B', ""}, {'C', "/"}, {'D', "/srv/data"}, {'E', "/srv/data/deep"}, {'F', "/srv/data"}};
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"/home/pos", "C:\\home\\pos"},
        {"/home/pos/", "C:\\home\\pos\\"},
        {"/", "C:\\"},
        {"/srv", "C:\\srv"},
        {"/srv/data", "D:\\"}, // of two drives with one folder, the first
        {"/srv/data/", "D:\\"},
        {"/srv/data/in/a.txt", "D:\\in\\a.txt"},
        {"/srv/database/x", "C:\\srv\\database\\x"},
        {"/srv/data/deep/x", "E:\\x"},
        {"/srv/data/deeper", "D:\\deeper"},
        {"/a\xFF/b c", "C:\\a\xFF\\b c"},
        {"/srv\\data/x", "C:\\srv\\data\\x"},
        {"C:\\home\\pos\\", "C:\\home\\pos\\"},
        {"c:/home/pos", "c:\\home\\pos"},
        {"Q:/x", "Q:\\x"},
        {"C:", "C:"},
        {"C:x/y", "C:x/y"},
        {"\\srv\\pos", "\\srv\\pos"},
        {"\\\\server/share", "\\\\server/share"},
        {"a/b", "a/b"},
        {"..", ".."},
        {"", ""}};
    for (const auto& [strText, strDriveForm] : rows) {
        EXPECT_EQ(DriveForm(strText, drives), strDriveForm) << strText;
    }
}

TEST(Paths, StayNativeUnderNoDrive) {
    const DriveTable drives = {{'D', "/srv/data"}};
    for (const char* strText : {"/", "/srv", "/srv/database", "/home/pos/"}) {
        EXPECT_EQ(DriveForm(strText, drives), strText);
        EXPECT_EQ(DriveForm(strText, DriveTable{}), strText);
    }
    EXPECT_EQ(DriveForm("/srv/data/x", drives), "D:\\x");
}

TEST(Paths, InDriveFormLeadToTheSameFolder) {
    for (const char* strNative : {"/", "/home/pos", "/srv/data", "/srv/data/in", "/srv/database"}) {
        const auto strBack = NativePath(DriveForm(strNative, kTwoDrives), kTwoDrives);
        EXPECT_EQ(WithoutEndSeparators(strBack.value()), strNative);
    }
}

TEST(Paths, AZeroByteNeverCutsAPathShort) {
    EXPECT_FALSE(NativePath("/srv/pos\0.txt"s, kTwoDrives).has_value());
    EXPECT_FALSE(NativePath("C:\\x\0"s, kTwoDrives).has_value());
    EXPECT_FALSE(NativePath("\0"s, kTwoDrives).has_value());
}

TEST(Paths, WithoutAHostFileTheOnlyDriveIsTheRoot) {
    EXPECT_EQ(DefaultDrives(), (DriveTable{{'C', "/"}}));
}

TEST(Paths, KnowsDrivesInBothCases) {
    EXPECT_TRUE(IsKnownDrive('C', kTwoDrives));
    EXPECT_TRUE(IsKnownDrive('d', kTwoDrives));
    EXPECT_FALSE(IsKnownDrive('F', kTwoDrives));
    EXPECT_FALSE(IsKnownDrive('\\', kTwoDrives));
}

TEST(Paths, DropsSeparatorsAtTheEndOfANativePath) {
    EXPECT_EQ(WithoutEndSeparators("/srv/data//"), "/srv/data");
    EXPECT_EQ(WithoutEndSeparators("/srv"), "/srv");
    EXPECT_EQ(WithoutEndSeparators("//"), "/");
    EXPECT_EQ(WithoutEndSeparators("/"), "/");
}

} // namespace
} // namespace brennik
