#include "platform/HostFile.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;

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

// Ports.

TEST(HostFile, PortsThatNobodyMapsAreThoseOfTheSystemCountedFromZero) {
    for (const char* strText : {"", "[DRIVES]\nC=/\n", "[PORTS]\n", "[PORTS]\nCOM7=/dev/x\n"}) {
        const HostFile file(strText);
        EXPECT_EQ(file.PortPath("COM1"), "/dev/ttyS0");
        EXPECT_EQ(file.PortPath("COM9"), "/dev/ttyS8");
        EXPECT_EQ(file.PortPath("COM10"), "/dev/ttyS9");
        EXPECT_EQ(file.PortPath("COM256"), "/dev/ttyS255");
        EXPECT_EQ(file.PortPath("com10"), "/dev/ttyS9");
        EXPECT_EQ(file.PortPath("\\\\.\\COM10"), "/dev/ttyS9");
        EXPECT_EQ(file.PortPath("\\\\.\\Com1"), "/dev/ttyS0");
        EXPECT_EQ(file.PortPath(" COM2 "), "/dev/ttyS1");
        EXPECT_EQ(file.PortPath("COM2147483647"), "/dev/ttyS2147483646");
    }
}

TEST(HostFile, AMappedPortIsItsEntry) {
    const HostFile file("[PORTS]\r\nCOM1=/dev/serial/by-id/usb-x-port0\r\ncom10 = \"/dev/a b\"\r\n"
                        "LPT1=/dev/lp0\r\nCOM0=/dev/zero\r\nTill=/dev/till\r\n");
    EXPECT_EQ(file.PortPath("COM1"), "/dev/serial/by-id/usb-x-port0");
    EXPECT_EQ(file.PortPath("com1"), "/dev/serial/by-id/usb-x-port0");
    EXPECT_EQ(file.PortPath("\\\\.\\COM1"), "/dev/serial/by-id/usb-x-port0");
    EXPECT_EQ(file.PortPath("\\\\.\\COM10"), "/dev/a b");
    EXPECT_EQ(file.PortPath("LPT1"), "/dev/lp0");
    EXPECT_EQ(file.PortPath("COM0"), "/dev/zero");
    EXPECT_EQ(file.PortPath("TILL"), "/dev/till");
    EXPECT_EQ(file.PortPath("COM2"), "/dev/ttyS1") << "the others stay";
}

TEST(HostFile, OtherNamesAreNoPorts) {
    const HostFile file("[PORTS]\n=/dev/none\nCOM1=/dev/x\n[OTHER]\nLPT2=/dev/y\n");
    for (const std::string& strPort : {""s,
                                       " "s,
                                       "C"s,
                                       "CO"s,
                                       "COM"s,
                                       "COM0"s,
                                       "COM01"s,
                                       "COM-1"s,
                                       "COM+1"s,
                                       "COM 1"s,
                                       "COM1x"s,
                                       "COM1.5"s,
                                       "COM2147483648"s,
                                       "COM99999999999999999999"s,
                                       "COMA"s,
                                       "XCOM1"s,
                                       "LPT1"s,
                                       "LPT2"s,
                                       "/dev/ttyS0"s,
                                       "\\\\.\\"s,
                                       "\\\\.\\\\\\.\\COM1"s,
                                       "\\COM1"s,
                                       "COM1\0"s,
                                       "COM2\0"s,
                                       "COM\0002"s}) {
        EXPECT_EQ(file.PortPath(strPort), "") << strPort;
    }
}

TEST(HostFile, AnEntryThatIsNoAbsoluteNativePathIsNoPort) {
    const HostFile file("[PORTS]\nCOM1=\nCOM2=ttyS1\nCOM3=C:\\dev\\x\nCOM4=\"\"\nCOM5=/dev/\0x\n"
                        "COM6=\" /dev/x\"\n"s);
    for (const char* strPort : {"COM1", "COM2", "COM3", "COM4", "COM5", "COM6"}) {
        EXPECT_EQ(file.PortPath(strPort), "") << strPort;
    }
}

} // namespace
} // namespace brennik
