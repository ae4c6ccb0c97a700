#include "link/TConnectionInfo.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

TEST(TConnectionInfo, StartsNeutral) {
    const TConnectionInfo info;
    EXPECT_EQ(info.strComPort(), "");
    EXPECT_EQ(info.lBaudRate(), 0);
    EXPECT_EQ(info.lParity(), 0);
    EXPECT_EQ(info.lDatabits(), 0);
    EXPECT_EQ(info.lStopbit(), 0);
    EXPECT_EQ(info.lFlowControl(), 0);
    EXPECT_EQ(info.strIPAddress1(), "");
    EXPECT_EQ(info.strIPAddress2(), "");
    EXPECT_EQ(info.strIPAddress3(), "");
    EXPECT_EQ(info.lIPPortNo1(), 0);
    EXPECT_EQ(info.lIPPortNo2(), 0);
    EXPECT_EQ(info.lIPPortNo3(), 0);
    EXPECT_EQ(info.lConnectionAttempts(), 0);
    EXPECT_EQ(info.lConnectTimeout(), 0);
    EXPECT_EQ(info.lSendAttempts(), 0);
    EXPECT_EQ(info.lReadAttempts(), 0);
    EXPECT_FALSE(info.bDelayPackets());
    EXPECT_EQ(info.lAckTimeout(), 0);
    EXPECT_FALSE(info.bBlockedSocket());
    EXPECT_EQ(info.lMaxReadTimeout(), 0);
    EXPECT_FALSE(info.bIpToSerial());
}

TEST(TConnectionInfo, KeepsEachTextAndNumberApart) {
    TConnectionInfo info;
    info.strComPort("text 1");
    info.lBaudRate(2);
    info.lParity(3);
    info.lDatabits(4);
    info.lStopbit(5);
    info.lFlowControl(6);
    info.strIPAddress1("text 7");
    info.strIPAddress2("text 8");
    info.strIPAddress3("text 9");
    info.lIPPortNo1(10);
    info.lIPPortNo2(11);
    info.lIPPortNo3(12);
    info.lConnectionAttempts(13);
    info.lConnectTimeout(14);
    info.lSendAttempts(15);
    info.lReadAttempts(16);
    info.lAckTimeout(18);
    info.lMaxReadTimeout(20);
    EXPECT_EQ(info.strComPort(), "text 1");
    EXPECT_EQ(info.lBaudRate(), 2);
    EXPECT_EQ(info.lParity(), 3);
    EXPECT_EQ(info.lDatabits(), 4);
    EXPECT_EQ(info.lStopbit(), 5);
    EXPECT_EQ(info.lFlowControl(), 6);
    EXPECT_EQ(info.strIPAddress1(), "text 7");
    EXPECT_EQ(info.strIPAddress2(), "text 8");
    EXPECT_EQ(info.strIPAddress3(), "text 9");
    EXPECT_EQ(info.lIPPortNo1(), 10);
    EXPECT_EQ(info.lIPPortNo2(), 11);
    EXPECT_EQ(info.lIPPortNo3(), 12);
    EXPECT_EQ(info.lConnectionAttempts(), 13);
    EXPECT_EQ(info.lConnectTimeout(), 14);
    EXPECT_EQ(info.lSendAttempts(), 15);
    EXPECT_EQ(info.lReadAttempts(), 16);
    EXPECT_EQ(info.lAckTimeout(), 18);
    EXPECT_EQ(info.lMaxReadTimeout(), 20);
}

TEST(TConnectionInfo, KeepsEachFlagApart) {
    {
        TConnectionInfo info;
        info.bDelayPackets(true);
        EXPECT_EQ(info.bDelayPackets(), true);
        EXPECT_EQ(info.bBlockedSocket(), false);
        EXPECT_EQ(info.bIpToSerial(), false);
    }
    {
        TConnectionInfo info;
        info.bBlockedSocket(true);
        EXPECT_EQ(info.bDelayPackets(), false);
        EXPECT_EQ(info.bBlockedSocket(), true);
        EXPECT_EQ(info.bIpToSerial(), false);
    }
    {
        TConnectionInfo info;
        info.bIpToSerial(true);
        EXPECT_EQ(info.bDelayPackets(), false);
        EXPECT_EQ(info.bBlockedSocket(), false);
        EXPECT_EQ(info.bIpToSerial(), true);
    }
}

TEST(TConnectionInfo, ChecksNothing) {
    TConnectionInfo info;
    info.lConnectionAttempts(-5);
    info.lIPPortNo1(INT32_MAX);
    EXPECT_EQ(info.lConnectionAttempts(), -5);
    EXPECT_EQ(info.lIPPortNo1(), INT32_MAX);
}

} // namespace
} // namespace brennik
