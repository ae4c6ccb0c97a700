#include "session/TTmsEnquiryPacket.h"

#include "platform/RuntimeFailure.h"
#include "tests/world/AllocationLimit.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

class TTmsEnquiryPacketTest : public world::WorldTest {
  protected:
    std::string WithTerminal(const std::string& strTerminal, std::string strPacket) {
        packet.SubstituteTerminalId(strTerminal, strPacket);
        return strPacket;
    }
    std::string WithApplication(const std::string& strApplication, std::string strPacket) {
        packet.SubstituteApplicationId(strApplication, strPacket);
        return strPacket;
    }

    TTmsEnquiryPacket packet;
};

TEST_F(TTmsEnquiryPacketTest, SubstitutesTheNinthFieldByTheTerminal) {
    EXPECT_EQ(WithTerminal("T9", "a,b,c,d,e,f,g,h,T1,j,APP"), "a,b,c,d,e,f,g,h,T9,j,APP");
    EXPECT_EQ(WithTerminal("", "a,b,c,d,e,f,g,h,T1"), "a,b,c,d,e,f,g,h,");
    EXPECT_EQ(WithTerminal("T,9", ",,,,,,,,"), R"(,,,,,,,,"T,9")");
}

TEST_F(TTmsEnquiryPacketTest, SubstitutesTheEleventhFieldByTheApplication) {
    EXPECT_EQ(WithApplication("A9", "a,b,c,d,e,f,g,h,T1,j,APP,l"), "a,b,c,d,e,f,g,h,T1,j,A9,l");
    EXPECT_EQ(WithApplication("", "a,b,c,d,e,f,g,h,T1,j,APP"), "a,b,c,d,e,f,g,h,T1,j,");
}

TEST_F(TTmsEnquiryPacketTest, RebuildsTheOtherFields) {
    EXPECT_EQ(WithTerminal("T1", R"("a", b ,"c,d",e,f,g,h,i, T1 ," j ")"),
              R"(a,b,"c,d",e,f,g,h,i,T1,j)");
    EXPECT_EQ(WithApplication("A", R"( a,b,c,d,e,f,g,h,i,j,"A")"), "a,b,c,d,e,f,g,h,i,j,A");
}

TEST_F(TTmsEnquiryPacketTest, LeavesPacketsOfTooFewFieldsToTheBlank) {
    EXPECT_EQ(WithTerminal("T9", " a,b,c,d,e,f,g,h"), " a,b,c,d,e,f,g,h");
    EXPECT_EQ(WithApplication("A9", " a,b,c,d,e,f,g,h,i,j"), " a,b,c,d,e,f,g,h,i,j");
    EXPECT_EQ(WithTerminal("T9", ""), "");
    EXPECT_EQ(WithApplication("A9", ""), "");
}

TEST_F(TTmsEnquiryPacketTest, GivesNineOrTenFieldsTheTerminalAndKeepsTheirApplication) {
    for (const char* strPacket : {" a,b,c,d,e,f,g,h,i", " a,b,c,d,e,f,g,h,i,j"}) {
        EXPECT_EQ(WithApplication("A9", strPacket), strPacket);
    }
    EXPECT_EQ(WithTerminal("T9", " a,b,c,d,e,f,g,h,i"), "a,b,c,d,e,f,g,h,T9");
    EXPECT_EQ(WithTerminal("T9", " a,b,c,d,e,f,g,h,i,j"), "a,b,c,d,e,f,g,h,T9,j");
}

TEST_F(TTmsEnquiryPacketTest, LeavesWhatCantBeSplitAsItWas) {
    for (const std::string& strPacket :
         {std::string(60000, ','), std::string(R"(a,b,c,d,e,f,g,h,"i,j,k)"),
          std::string(R"(a,b,c,d,e,f,g,h,i,j,"k"x)")}) {
        EXPECT_EQ(WithTerminal("T9", strPacket), strPacket);
        EXPECT_EQ(WithApplication("A9", strPacket), strPacket);
        EXPECT_FALSE(packet.IsErrorPacket(strPacket));
    }
}

TEST_F(TTmsEnquiryPacketTest, StaysQuietWhenMemoryIsShort) {
    const std::string strPacket = "a,b,c,d,e,f,g,h,i,j," + std::string(2000, 'k');
    std::string strTerminal = strPacket;
    std::string strApplication = strPacket;
    {
        world::AllocationLimit limit(1000);
        packet.SubstituteTerminalId("T9", strTerminal);
        packet.SubstituteApplicationId("A9", strApplication);
    }
    EXPECT_EQ(strTerminal, strPacket);
    EXPECT_EQ(strApplication, strPacket);
}

TEST_F(TTmsEnquiryPacketTest, TellsAnErrorReplyAndKeepsItsText) {
    EXPECT_EQ(packet.strErrorMessage(), "");
    EXPECT_TRUE(packet.IsErrorPacket("a,b,E,d,e,f,g,h,Unknown terminal"));
    EXPECT_EQ(packet.strErrorMessage(), "Unknown terminal");
    EXPECT_TRUE(packet.IsErrorPacket(R"(,, E ,,,,,," No, never ",j)"));
    EXPECT_EQ(packet.strErrorMessage(), " No, never ");
    EXPECT_TRUE(packet.IsErrorPacket("a,b,E,d,e,f,g,h,"));
    EXPECT_EQ(packet.strErrorMessage(), "");
}

TEST_F(TTmsEnquiryPacketTest, TakesNothingElseForAnErrorReplyAndKeepsTheLastText) {
    ASSERT_TRUE(packet.IsErrorPacket("a,b,E,d,e,f,g,h,old"));
    for (const char* strReply :
         {"a,b,e,d,e,f,g,h,new", "a,b,EE,d,e,f,g,h,new", "a,b,,d,e,f,g,h,new",
          "a,E,c,d,e,f,g,h,new", "a,E", "E", "", R"(a,b," E",d,e,f,g,h,new)"}) {
        EXPECT_FALSE(packet.IsErrorPacket(strReply)) << strReply;
        EXPECT_EQ(packet.strErrorMessage(), "old");
    }
}

// Meant: this operation has no catch-all, so that the caller's own tells the failure.
TEST_F(TTmsEnquiryPacketTest, ThrowsAnErrorReplyWithoutItsTextToTheCaller) {
    ASSERT_TRUE(packet.IsErrorPacket("a,b,E,d,e,f,g,h,old"));
    for (const char* strReply : {"a,b,E", "a,b,E,", "a,b,E,d,e,f,g,h"}) {
        try {
            static_cast<void>(packet.IsErrorPacket(strReply));
            ADD_FAILURE() << strReply;
        } catch (const RuntimeFailure& failure) {
            EXPECT_EQ(failure.Kind(), FailureKind::SubscriptOutOfRange) << strReply;
        }
        EXPECT_EQ(packet.strErrorMessage(), "old");
    }
}

} // namespace
} // namespace brennik
