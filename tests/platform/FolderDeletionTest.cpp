#include "platform/FolderDeletion.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

const std::vector<std::string> kProtected = {"/home/pos", "/opt/brennik", "/", "/srv/data"};
const std::vector<std::string> kMounts = {"/", "/proc", "/mnt/usb stick"};

TEST(FolderDeletion, AnOrdinaryFolderMayGo) {
    EXPECT_TRUE(MayDeleteByName("/srv/data/downloads", kProtected, kMounts));
    EXPECT_TRUE(MayDeleteByName("/home/pos/downloads", kProtected, kMounts));
    EXPECT_TRUE(MayDeleteByName("/opt/brennik/work", kProtected, kMounts));
    EXPECT_TRUE(MayDeleteByName("/mnt/usb stick/work", kProtected, kMounts));
}

TEST(FolderDeletion, WhatIsNoPathFromTheRootIsRefused) {
    for (const char* strPath : {"", "/", "downloads", "."}) {
        EXPECT_FALSE(MayDeleteByName(strPath, {}, {})) << strPath;
    }
}

TEST(FolderDeletion, AProtectedFolderIsRefused) {
    for (const std::string& strFolder : kProtected) {
        EXPECT_FALSE(MayDeleteByName(strFolder, kProtected, {})) << strFolder;
    }
}

TEST(FolderDeletion, AMountPointIsRefused) {
    for (const std::string& strFolder : kMounts) {
        EXPECT_FALSE(MayDeleteByName(strFolder, {}, kMounts)) << strFolder;
    }
}

TEST(FolderDeletion, AFolderThatHoldsOneOfTheseIsRefused) {
    for (const char* strPath : {"/home", "/opt", "/srv"}) {
        EXPECT_FALSE(MayDeleteByName(strPath, kProtected, {})) << strPath;
        EXPECT_TRUE(MayDeleteByName(strPath, {}, kMounts)) << strPath;
    }
    EXPECT_FALSE(MayDeleteByName("/mnt", {}, kMounts));
}

TEST(FolderDeletion, ANameThatOnlyBeginsAlikeIsAnother) {
    EXPECT_TRUE(MayDeleteByName("/home/po", kProtected, kMounts));
    EXPECT_TRUE(MayDeleteByName("/home/pos2", kProtected, kMounts));
    EXPECT_TRUE(MayDeleteByName("/mnt/usb", kProtected, kMounts));
    EXPECT_TRUE(MayDeleteByName("/hom", kProtected, kMounts));
}

TEST(FolderDeletion, ReadsTheMountPointsOfTheMountList) {
    const char* strList =
        "22 27 0:21 / /proc rw,relatime - proc proc rw\n"
        "23 27 8:1 /sub /mnt/usb\\040stick rw,nosuid shared:1 master:2 - ext4 /dev/sda1 rw\n"
        "24 27 8:2 / /mnt/back\\134slash\\011tab rw - ext4 /dev/sda2 rw\n"
        "25 27 8:3 / /mnt/end\\04 rw - ext4 /dev/sda3 rw";
    EXPECT_EQ(MountPointsIn(strList),
              (std::vector<std::string>{"/proc", "/mnt/usb stick", "/mnt/back\\slash\ttab",
                                        "/mnt/end\\04"}));
}

TEST(FolderDeletion, ABrokenMountListNamesWhatItCan) {
    EXPECT_TRUE(MountPointsIn("").empty());
    EXPECT_TRUE(MountPointsIn("\n\n1 2 3\n").empty());
    EXPECT_EQ(MountPointsIn("1 2 3:4 / /a"), std::vector<std::string>{"/a"});
    EXPECT_EQ(MountPointsIn("1 2 3:4 / /a\\999 x"), std::vector<std::string>{"/a\\999"});
}

} // namespace
} // namespace brennik
