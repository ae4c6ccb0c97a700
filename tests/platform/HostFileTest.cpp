#include "platform/HostFile.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

TEST(HostFile, WithoutOneTheRootIsTheOnlyDrive) {
    EXPECT_EQ(HostFile("").Drives(), (DriveTable{{'C', "/"}}));
    EXPECT_EQ(HostFile("[PORTS]\r\nCOM1=/dev/ttyUSB0\r\nD=/x\r\n").Drives(),
              (DriveTable{{'C', "/"}}));
}

TEST(HostFile, ItsDrivesAreAllDrivesThereAre) {
    EXPECT_EQ(HostFile("[DRIVES]\r\nC=/\r\nD=/srv/data\r\n").Drives(),
              (DriveTable{{'C', "/"}, {'D', "/srv/data"}}));
    EXPECT_EQ(HostFile("[DRIVES]\nD=/srv/data\n").Drives(), (DriveTable{{'D', "/srv/data"}}));
    EXPECT_TRUE(HostFile("[DRIVES]\n").Drives().empty());
}

TEST(HostFile, LettersMatchInBothCasesAndSeparatorsAtTheEndAreDropped) {
    EXPECT_EQ(HostFile("[drives]\nd = \"/srv/data//\"\nz=///\n").Drives(),
              (DriveTable{{'D', "/srv/data"}, {'Z', "/"}}));
}

TEST(HostFile, WhatIsNoAbsoluteFolderOrNoLetterIsNoDrive) {
    EXPECT_TRUE(HostFile("[DRIVES]\nC=\nD=data\nE=C:\\x\nFF=/x\n1=/x\n:=/x\n").Drives().empty());
}

} // namespace
} // namespace brennik
