#include "passthru/ManagementMessages.h"

#include "tests/passthru/DeviceWorld.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik::passthru {
namespace {

using namespace std::string_literals;

class ManagementMessages : public world::WorldTest {
  protected:
    std::string Transfer(const std::string& strPlatform, int32_t lPassThruType,
                         int32_t lUploadFileType = 3) {
        config.strPlatformName(strPlatform);
        config.lPassThruType(lPassThruType);
        config.lUploadFileType(lUploadFileType);
        return BuildTransferCommandMessage(config);
    }
    std::string Query(const std::string& strPlatform) {
        config.strPlatformName(strPlatform);
        return BuildStatusQueryMessage(config);
    }

    TBrennikClientConfig config;
};

TEST_F(ManagementMessages, SayWhatTheDeviceIsToDo) {
    EXPECT_EQ(Transfer("P400PLUS", 0), "5.8,2,U,Q,0,0,,,T,");
    EXPECT_EQ(Transfer("VX520", 0), "3.9,2,U,Q,0,0,,,T,");
    EXPECT_EQ(Transfer("P400PLUS", 2), "5.8,2,U,Q,0,0,,,F,");
    EXPECT_EQ(Transfer("VX520", 2), "3.9,2,U,Q,0,0,,,F,");
    EXPECT_EQ(Transfer("P400PLUS", 1), "5.8,3,U,Q,0,0,,,U,3");
    EXPECT_EQ(Transfer("VX520", 1), "3.9,3,U,Q,0,0,,,U,3");
}

TEST_F(ManagementMessages, CallAnyOtherTypeAnUpload) {
    for (const int32_t lType : {3, 4, -1, 2147483647})
        EXPECT_EQ(Transfer("VX520", lType), "3.9,3,U,Q,0,0,,,U,3") << lType;
}

TEST_F(ManagementMessages, CountTheBytesOfTheirDataWithItsComma) {
    struct {
        int32_t lFileType;
        const char* strMessage;
    } const cases[] = {
        {0, "3.9,3,U,Q,0,0,,,U,0"},   {9, "3.9,3,U,Q,0,0,,,U,9"},
        {10, "3.9,4,U,Q,0,0,,,U,10"}, {12345678, "3.9,10,U,Q,0,0,,,U,12345678"},
        {-1, "3.9,4,U,Q,0,0,,,U,-1"}, {2147483647, "3.9,12,U,Q,0,0,,,U,2147483647"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Transfer("VX520", 1, c.lFileType), c.strMessage);
}

TEST_F(ManagementMessages, AskForTheState) {
    EXPECT_EQ(Query("P400PLUS"), "5.8,0,LS,Q,0,0,,,");
    EXPECT_EQ(Query("VX520"), "3.9,0,LS,Q,0,0,,,");
    config.lPassThruType(1);
    EXPECT_EQ(Query("VX520"), "3.9,0,LS,Q,0,0,,,") << "whatever the run is for";
}

TEST_F(ManagementMessages, HaveTheNewVersionForOnePlatformAlone) {
    for (const char* strPlatform : {"P400PLUS", "p400plus", "P400Plus"}) {
        EXPECT_EQ(Query(strPlatform).substr(0, 4), "5.8,") << strPlatform;
        EXPECT_EQ(Transfer(strPlatform, 0).substr(0, 4), "5.8,") << strPlatform;
    }
    for (const char* strPlatform : {"", "P400", "P400PLUS ", " P400PLUS", "P400PLUS2", "VX820"}) {
        EXPECT_EQ(Query(strPlatform).substr(0, 4), "3.9,") << strPlatform;
        EXPECT_EQ(Transfer(strPlatform, 0).substr(0, 4), "3.9,") << strPlatform;
    }
}

TEST_F(ManagementMessages, AreAuthorisedByTOrUWithAnA) {
    for (const char* strReply :
         {"3.9,1,T,Q,0,0,,,A", "5.8,1,U,Q,0,0,,,A", ",,T,,,,,,A", "a,b,U,d,e,f,g,h,A,j,k",
          " , , T , , , , , , A ", R"("","","U","","","","","","A")", ",,T,,,,,,A,"}) {
        EXPECT_TRUE(IsTransferAuthorisedReply(strReply)) << strReply;
    }
    for (const char* strReply :
         {"", "A", "3.9,1,T,Q,0,0,,A", "3.9,1,T,Q,0,0,,,a", "3.9,1,t,Q,0,0,,,A",
          "3.9,1,u,Q,0,0,,,A", "3.9,1,E,Q,0,0,,,A", "3.9,1,LS,Q,0,0,,,A", "3.9,1,TU,Q,0,0,,,A",
          "3.9,1,T,Q,0,0,,,", "3.9,1,T,Q,0,0,,,AA", "3.9,1,T,Q,0,0,,,R", "3.9,1,T,Q,0,0,,,,A",
          "3.9,1,,Q,0,0,,,A", "T,,,,,,,,A", R"(,,T,,,,,,"A)", R"(,,T,,,,,," A")",
          R"(,,T,,,,,,"A"x)"}) {
        EXPECT_FALSE(IsTransferAuthorisedReply(strReply)) << strReply;
    }
}

TEST_F(ManagementMessages, FindADeviceReadyByItsR) {
    for (const char* strReply : {"3.9,1,LS,Q,0,0,,,R", ",,,,,,,,R", "a,b,c,d,e,f,g,h,R,j",
                                 ",,T,,,,,, R ", R"(,,,,,,,,"R")"}) {
        EXPECT_TRUE(IsDeviceReadyReply(strReply)) << strReply;
    }
    for (const char* strReply : {"", "R", ",,,,,,,R", ",,,,,,,,r", ",,,,,,,,RR", ",,,,,,,,A",
                                 ",,,,,,,,", ",,R,,,,,,", ",,,,,,,,,R", R"(,,,,,,,,"R)"}) {
        EXPECT_FALSE(IsDeviceReadyReply(strReply)) << strReply;
    }
}

TEST_F(ManagementMessages, FindAnErrorByTheE) {
    for (const char* strReply : {"3.9,1,E,Q,0,0,,,R", ",,E,,,,,,", ",, E ,,,,,,x,", ",,E,,,,,,A"}) {
        EXPECT_TRUE(IsDeviceErrorReply(strReply)) << strReply;
    }
    for (const char* strReply : {"", "E", ",,E", ",,E,,,,,", ",,e,,,,,,", ",,EE,,,,,,", ",,,,,,,,E",
                                 ",E,,,,,,,", ",,LS,,,,,,R", R"(,,"E,,,,,,)"}) {
        EXPECT_FALSE(IsDeviceErrorReply(strReply)) << strReply;
    }
}

TEST_F(ManagementMessages, FindNothingInMoreFieldsThanCanBeCounted) {
    const std::string strCommas(60000, ',');
    EXPECT_FALSE(IsTransferAuthorisedReply(",,T,,,,,,A" + strCommas));
    EXPECT_FALSE(IsDeviceReadyReply(",,T,,,,,,R" + strCommas));
    EXPECT_FALSE(IsDeviceErrorReply(",,E,,,,,,A" + strCommas));
}

// ---- On the wire. The checks are the XOR of all bytes behind the start character, worked out by
// hand.

class ManagementMessagesOnTheWire : public DeviceTest {};

TEST_F(ManagementMessagesOnTheWire, AreFramesWithAnLrc) {
    struct {
        const char* strPlatform;
        int32_t lPassThruType;
        const char* strMessage;
        char cCheck;
    } const cases[] = {
        {"P400PLUS", 2, "5.8,2,U,Q,0,0,,,F,", 0x7C},
        {"VX520", 2, "3.9,2,U,Q,0,0,,,F,", 0x7B},
        {"P400PLUS", 1, "5.8,3,U,Q,0,0,,,U,3", 0x5D},
        {"VX520", 1, "3.9,3,U,Q,0,0,,,U,3", 0x5A},
    };
    config.lUploadFileType(3);
    for (const auto& c : cases) {
        config.strPlatformName(c.strPlatform);
        config.lPassThruType(c.lPassThruType);
        Connect();
        EXPECT_EQ(Handshake(), 1) << "nobody answers";
        EXPECT_EQ(device.Bytes(), "\x02"s + c.strMessage + '\x03' + c.cCheck);
        device.Forget();
        ASSERT_EQ(channel->Disconnect(), 0);
    }
}

TEST_F(ManagementMessagesOnTheWire, AreSentOnceMoreForEachNak) {
    config.lPassThruType(2);
    device.ExpectLrc(true);
    device.Always("[]", kNak);
    Connect();
    EXPECT_EQ(HandshakeForUpload(), 1);
    EXPECT_EQ(device.Texts(), Lines(3, "[3.9,2,U,Q,0,0,,,F,]"));
    ExpectError(0, "");
}

} // namespace
} // namespace brennik::passthru
