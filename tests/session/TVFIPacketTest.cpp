#include "session/TVFIPacket.h"

#include "platform/RuntimeFailure.h"
#include "tests/world/AllocationLimit.h"
#include "tests/world/SimHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using world::Op;
using Type = VfiPacketType;

const std::string kRequest = "VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1,REL,CFG";

/// More fields than 16 bits can count.
const std::string kSixtyThousandCommas = "VFI,VX520,XCDLF,F" + std::string(60000, ',');

/// Records that can't be split.
const std::vector<std::string>& Unsplittable() {
    static const std::vector<std::string> packets = {
        "",
        kSixtyThousandCommas,
        R"(VFI,VX520,XCDLF,F,APP,T1,"EPROM,1024,4096,PT1,,)",
        R"(VFI,VX520,XCDLF,F,"APP"x,T1,EPROM,1024,4096,PT1,,)",
        R"("VFI)",
    };
    return packets;
}

class TVFIPacketTest : public world::WorldTest {
  protected:
    using Edit = std::function<void(TVFIPacket&, std::string&)>;

    /// All edits, each with values of its own.
    static std::vector<std::pair<std::string, Edit>> Edits() {
        return {
            {"SubstituteDownloadType",
             [](TVFIPacket& packet, std::string& str) { packet.SubstituteDownloadType(str); }},
            {"SubstituteTerminalId",
             [](TVFIPacket& packet, std::string& str) { packet.SubstituteTerminalId("T9", str); }},
            {"SubsituteRelConfigTitle",
             [](TVFIPacket& packet, std::string& str) {
                 packet.SubsituteRelConfigTitle("R9", "C9", str);
             }},
            {"SubstituteApplicationId",
             [](TVFIPacket& packet, std::string& str) {
                 packet.SubstituteApplicationId("A9", str, true);
             }},
        };
    }

    Type TypeOf(const std::string& strPacket) {
        bLast = true;
        return packet.GetPacketType(strPacket, bLast);
    }
    std::string WithDownloadType(std::string strPacket) {
        packet.SubstituteDownloadType(strPacket);
        return strPacket;
    }
    std::string WithTerminal(const std::string& strTerminal, std::string strPacket) {
        packet.SubstituteTerminalId(strTerminal, strPacket);
        return strPacket;
    }
    std::string WithTitles(const std::string& strRelease, const std::string& strConfig,
                           std::string strPacket) {
        packet.SubsituteRelConfigTitle(strRelease, strConfig, strPacket);
        return strPacket;
    }
    std::string WithApplication(const std::string& strApplication, bool bOnPartial,
                                std::string strPacket) {
        packet.SubstituteApplicationId(strApplication, strPacket, bOnPartial);
        return strPacket;
    }
    std::string Copy() const { return host.files.Get("/opt/brennik/vfi.txt").value_or("no file"); }

    TVFIPacket packet;
    bool bLast = false;
};

// ---- IsVfiPacket and its copy.

TEST_F(TVFIPacketTest, KnowsARequestByTheThreeLettersAnywhere) {
    for (const char* strPacket :
         {"VFI", "VFI,VX520,XDL", "a,bVFIc,d", "xxVFI", R"("VFI)", "9,VFI,E"}) {
        EXPECT_TRUE(packet.IsVfiPacket(strPacket)) << strPacket;
    }
}

TEST_F(TVFIPacketTest, KnowsNothingElseAndTouchesNoFileThen) {
    for (const char* strPacket : {"", "V", "VF", "vfi,VX520", "Vfi", "V,F,I", "VF I", "3.9,TMS"}) {
        EXPECT_FALSE(packet.IsVfiPacket(strPacket)) << strPacket;
    }
    EXPECT_EQ(host.files.Tree(world::kProgramFolder), std::vector<std::string>{});
    EXPECT_EQ(host.nFailable(), 0) << "no call of the files";
}

TEST_F(TVFIPacketTest, LeavesTheRequestAsOneLineInTheProgramsFolder) {
    host.RecordCalls();
    EXPECT_TRUE(packet.IsVfiPacket(kRequest));
    EXPECT_EQ(Copy(), kRequest + "\r\n");
    EXPECT_THAT(host.ledger.trace,
                ElementsAre("OpenText /opt/brennik\\vfi.txt", "StreamWrite ", "StreamClose "));
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(TVFIPacketTest, CopiesAnyBytesAsTheyCame) {
    const std::string strPacket = "a\0VFI\r\n\xFF\"x"s;
    EXPECT_TRUE(packet.IsVfiPacket(strPacket));
    EXPECT_EQ(Copy(), strPacket + "\r\n");
}

TEST_F(TVFIPacketTest, ReplacesTheCopyWithEachRequestAndWithNothingElse) {
    EXPECT_TRUE(packet.IsVfiPacket(kRequest));
    EXPECT_TRUE(packet.IsVfiPacket("VFI,2"));
    EXPECT_EQ(Copy(), "VFI,2\r\n");
    EXPECT_FALSE(packet.IsVfiPacket("an enquiry"));
    EXPECT_EQ(Copy(), "VFI,2\r\n");
}

TEST_F(TVFIPacketTest, AddsNoBackslashToAProgramFolderThatEndsInOne) {
    host.files.MakeFolder("/pos");
    host.processes.SetProgramFolder("C:\\pos\\");
    host.RecordCalls();
    EXPECT_TRUE(packet.IsVfiPacket("VFI"));
    EXPECT_EQ(host.ledger.trace.at(0), "OpenText C:\\pos\\vfi.txt");
    EXPECT_EQ(host.files.Get("/pos/vfi.txt"), "VFI\r\n");
}

TEST_F(TVFIPacketTest, KnowsARequestWhoseCopyCantBeOpenedOrWritten) {
    host.FailNext(Op::OpenText);
    EXPECT_TRUE(packet.IsVfiPacket(kRequest));
    EXPECT_EQ(Copy(), "no file");
    host.FailNext(Op::StreamWrite);
    EXPECT_TRUE(packet.IsVfiPacket(kRequest));
    host.files.SetQuota(host.files.TotalBytes());
    EXPECT_TRUE(packet.IsVfiPacket(kRequest));
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

// Meant: this operation alone has no catch-all.
TEST_F(TVFIPacketTest, ThrowsACopyThatCantBeClosedToTheCaller) {
    host.FailNext(Op::StreamClose);
    try {
        static_cast<void>(packet.IsVfiPacket(kRequest));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const RuntimeFailure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::DeviceIoError);
    }
    EXPECT_EQ(host.files.nOpenStreams(), 0);
    host.FailNext(Op::StreamClose);
    EXPECT_FALSE(packet.IsVfiPacket("no request")) << "there is nothing to close";
}

// ---- Classification.

TEST_F(TVFIPacketTest, ClassifiesByKeywordAndKindOfDownload) {
    struct {
        const char* strPacket;
        Type type;
        bool bLast;
    } const cases[] = {
        // The test on "P" goes first, whatever the keyword.
        {"VFI,VX520,XDL,P", Type::Partial, false},
        {"VFI,VX520,XCDL,P", Type::Partial, false},
        {"VFI,VX520,XCDLF,P", Type::Partial, false},
        {"VFI,VX520,OTHER,P", Type::Partial, false},
        {"VFI,VX520,XDL, P ,APP", Type::Partial, false}, // plain fields are trimmed
        {"VFI,VX520,XDL,F", Type::Download, false},
        {"VFI,VX520,XDL,", Type::Download, false},
        {"VFI,VX520,XDL,p", Type::Download, false}, // exactly "P"
        {R"(VFI,VX520,XDL," P")", Type::Download, false},
        {"VFI,VX520,XCDL,F", Type::XcdlDownload, false},
        {"VFI,VX520,XCDLF,F", Type::XcdlDownload, true},
        {R"(VFI,VX520,"XCDLF","F")", Type::XcdlDownload, true},
        {"VFI,VX520,XCDLFF,F", Type::Other, false},
        {"VFI,VX520,xdl,F", Type::Other, false},
        {"VFI,VX520,xcdlf,F", Type::Other, false},
        {"VFI,VX520,XD,F", Type::Other, false},
        {"VFI,VX520,,F", Type::Other, false},
        {"VFI,VX520,PP,PP", Type::Other, false},
        {",,,", Type::Other, false},
        // Fewer than four fields, however the three look.
        {"VFI,VX520,XDL", Type::Partial, false},
        {"VFI,VX520,XCDLF", Type::Partial, false},
        {",,", Type::Partial, false},
        {"VFI", Type::Partial, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TypeOf(c.strPacket), c.type) << c.strPacket;
        EXPECT_EQ(bLast, c.bLast) << c.strPacket;
    }
}

TEST_F(TVFIPacketTest, TakesWhatCantBeSplitForAPartialRequest) {
    for (const std::string& strPacket : Unsplittable()) {
        EXPECT_EQ(TypeOf(strPacket), Type::Partial) << strPacket.substr(0, 60);
        EXPECT_FALSE(bLast);
        EXPECT_FALSE(packet.IsFullDownload(strPacket));
        EXPECT_EQ(packet.GetBlockSize(strPacket), 0);
        EXPECT_EQ(packet.GetPTid(strPacket), "");
    }
}

// The numbers are what the log and the callers speak of.
TEST_F(TVFIPacketTest, NumbersTheKindsOfRequests) {
    EXPECT_EQ(static_cast<int32_t>(Type::Download), 0);
    EXPECT_EQ(static_cast<int32_t>(Type::Partial), 1);
    EXPECT_EQ(static_cast<int32_t>(Type::Other), 2);
    EXPECT_EQ(static_cast<int32_t>(Type::XcdlDownload), 3);
}

TEST_F(TVFIPacketTest, TakesBothCasesOfTheFullDownloadLetter) {
    for (const char* strFull : {"VFI,VX520,XDL,F", "VFI,VX520,XDL,f", "a,b,c, F ,", ",,,f"}) {
        EXPECT_TRUE(packet.IsFullDownload(strFull)) << strFull;
    }
    for (const char* strOther : {"VFI,VX520,XDL,P", "VFI,VX520,XDL,", "VFI,VX520,XDL,FF",
                                 "VFI,VX520,F", "F", R"(a,b,c," F")"}) {
        EXPECT_FALSE(packet.IsFullDownload(strOther)) << strOther;
    }
}

TEST_F(TVFIPacketTest, ReadsTheBlockSizeOfTheEighthField) {
    struct {
        const char* strField;
        int32_t lSize;
    } const cases[] = {
        {"1024", 1024},    {"0", 0},
        {"-1", -1}, // which a device can send
        {"65536", 65536},  {"2147483647", 2147483647},
        {"2147483648", 0}, {"-2147483648", -2147483647 - 1},
        {" 512 ", 512},    {"\" 512 \"", 512},
        {"1,024", 1}, // the field ends at the comma
        {"\"1,024\"", 0},  {"", 0},
        {"abc", 0},        {"10a", 0},
        {"1.5", 0},        {"0x10", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(packet.GetBlockSize("VFI,VX520,XDL,F,APP,T1,EPROM,"s + c.strField), c.lSize)
            << c.strField;
        EXPECT_EQ(packet.GetBlockSize("VFI,VX520,XDL,F,APP,T1,EPROM,"s + c.strField + ",77"),
                  c.lSize)
            << c.strField;
    }
}

TEST_F(TVFIPacketTest, HasNoBlockSizeInSevenFields) {
    EXPECT_EQ(packet.GetBlockSize("VFI,VX520,XDL,F,APP,T1,1024"), 0);
    EXPECT_EQ(packet.GetBlockSize("VFI"), 0);
}

TEST_F(TVFIPacketTest, ReadsThePTidOfTheTenthField) {
    EXPECT_EQ(packet.GetPTid(kRequest), "PT1");
    EXPECT_EQ(packet.GetPTid("a,b,c,d,e,f,g,h,i, PT 2 "), "PT 2");
    EXPECT_EQ(packet.GetPTid(R"(a,b,c,d,e,f,g,h,i," P,T ")"), " P,T ");
    EXPECT_EQ(packet.GetPTid("a,b,c,d,e,f,g,h,i,"), "");
}

TEST_F(TVFIPacketTest, HasNoPTidInNineFields) {
    EXPECT_EQ(packet.GetPTid("a,b,c,d,e,f,g,h,i"), "");
    EXPECT_EQ(packet.GetPTid("VFI"), "");
}

// ---- Edits.

TEST_F(TVFIPacketTest, HidesTheLastOfASeries) {
    const std::string strEdited = WithDownloadType("VFI,VX520,XCDLF,F,APP");
    EXPECT_EQ(strEdited, "VFI,VX520,XCDL,F,APP");
    EXPECT_EQ(TypeOf(strEdited), Type::XcdlDownload);
    EXPECT_FALSE(bLast);
    EXPECT_EQ(WithDownloadType("VFI,VX520,XCDLF,P"), "VFI,VX520,XCDL,P");
}

TEST_F(TVFIPacketTest, KeepsEveryOtherKeyword) {
    for (const char* strKeyword : {"XDL", "XCDL", "xcdlf", "XCDLFF", "", "OTHER"}) {
        const std::string strPacket = "VFI,XCDLF,"s + strKeyword + ",XCDLF";
        EXPECT_EQ(WithDownloadType(strPacket), strPacket);
    }
}

TEST_F(TVFIPacketTest, RebuildsARequestEvenWhenItsKeywordStays) {
    EXPECT_EQ(WithDownloadType(R"( VFI,  VX520 ,"XDL",F, " A ",""" B",C"D,"E,F" ,)"),
              R"(VFI,VX520,XDL,F,A,""" B",C"D,"E,F",)");
}

TEST_F(TVFIPacketTest, SubstitutesTheTerminalInAnyRequest) {
    EXPECT_EQ(WithTerminal("T9", kRequest), "VFI,VX520,XDL,F,APP,T9,EPROM,1024,4096,PT1,REL,CFG");
    EXPECT_EQ(WithTerminal("T9", "VFI,VX520,XDL,P,APP,"), "VFI,VX520,XDL,P,APP,T9");
    EXPECT_EQ(WithTerminal("T9", ",,,,,,"), ",,,,,T9,");
    EXPECT_EQ(WithTerminal("", "VFI,VX520,OTHER,F,APP,T1"), "VFI,VX520,OTHER,F,APP,");
}

TEST_F(TVFIPacketTest, QuotesASubstituteThatHoldsACommaAndTrimsAnyOther) {
    EXPECT_EQ(WithTerminal("T,9", "a,b,c,d,e,f"), R"(a,b,c,d,e,"T,9")");
    EXPECT_EQ(WithTerminal("\"T9", "a,b,c,d,e,f"), R"(a,b,c,d,e,"""T9")");
    EXPECT_EQ(WithTerminal("  T9 ", "a,b,c,d,e,f"), "a,b,c,d,e,T9");
}

TEST_F(TVFIPacketTest, RebuildsTheFieldsBesideTheEditedOne) {
    EXPECT_EQ(WithTerminal("T1", R"("VFI", VX520 ,XDL," F ",APP,T1," 10,24 ")"),
              R"(VFI,VX520,XDL,F,APP,T1," 10,24 ")");
    EXPECT_EQ(WithApplication("APP", false, R"("VFI", VX520 ,XDL,F,APP,T1)"),
              "VFI,VX520,XDL,F,APP,T1");
    EXPECT_EQ(WithTitles("R", "C", R"("VFI", VX520 ,XDL)"), "VFI,VX520,XDL");
}

TEST_F(TVFIPacketTest, FillsTitlesThatTheDeviceSentEmpty) {
    const std::string strTen = "VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1";
    EXPECT_EQ(WithTitles("R9", "C9", strTen + ",,"), strTen + ",R9,C9");
    EXPECT_EQ(WithTitles("R9", "C9", strTen + ",REL,"), strTen + ",REL,C9");
    EXPECT_EQ(WithTitles("R9", "C9", strTen + ",,CFG"), strTen + ",R9,CFG");
    EXPECT_EQ(WithTitles("R9", "C9", strTen + ",REL,CFG"), strTen + ",REL,CFG");
    EXPECT_EQ(WithTitles("R9", "C9", strTen + R"(,"",  )"), strTen + ",R9,C9");
    EXPECT_EQ(WithTitles("R9", "", strTen + ",,"), strTen + ",R9,");
    EXPECT_EQ(WithTitles("", "C9", strTen + ",,"), strTen + ",,C9");
    EXPECT_EQ(WithTitles("R,9", "C9", strTen + ",,"), strTen + ",\"R,9\",C9");
    // A title of blanks alone was sent, in quotes; it is no empty one, and the rebuild trims it.
    EXPECT_EQ(WithTitles("R9", "C9", strTen + R"(,"  ",)"), strTen + ",,C9");
}

// Meant: a device that knows no titles gets none, and the other fields stay in their number.
TEST_F(TVFIPacketTest, AddsNoTitlesToARequestWithoutThem) {
    EXPECT_EQ(WithTitles("R9", "C9", "VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1"),
              "VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1");
    EXPECT_EQ(WithTitles("R9", "C9", "a,b,c,d,e,f,g,h,i,j,"), "a,b,c,d,e,f,g,h,i,j,R9")
        << "eleven fields have the first title alone";
    EXPECT_EQ(WithTitles("R9", "C9", "a,b,c,d,e,f,g,h,i,j,,,"), "a,b,c,d,e,f,g,h,i,j,R9,C9,")
        << "thirteen fields stay thirteen";
}

TEST_F(TVFIPacketTest, SubstitutesTheApplicationByTheKindOfRequest) {
    struct {
        const char* strPacket;
        bool bOnPartial;
        bool bEdited;
    } const cases[] = {
        {"VFI,VX520,XDL,F,APP,T1", false, true},    {"VFI,VX520,XDL,F,APP,T1", true, true},
        {"VFI,VX520,XCDL,F,APP,T1", false, true},   {"VFI,VX520,XCDLF,F,APP,T1", false, true},
        {"VFI,VX520,XDL,P,APP,T1", true, true},     {"VFI,VX520,XCDLF,P,APP,T1", true, true},
        {"VFI,VX520,XDL,P,APP,T1", false, false},   {"VFI,VX520,XCDLF,P,APP,T1", false, false},
        {"VFI,VX520,OTHER,F,APP,T1", false, false}, {"VFI,VX520,OTHER,F,APP,T1", true, false},
    };
    for (const auto& c : cases) {
        const std::string strPacket = c.strPacket;
        std::string strEdited = strPacket;
        strEdited.replace(strEdited.find("APP"), 3, "A9");
        EXPECT_EQ(WithApplication("A9", c.bOnPartial, strPacket), c.bEdited ? strEdited : strPacket)
            << strPacket << (c.bOnPartial ? " on partial" : "");
    }
}

TEST_F(TVFIPacketTest, LeavesARequestThatKeepsItsApplicationUntouchedToTheBlank) {
    for (const char* strPacket :
         {R"( VFI , "VX520",OTHER,F,"APP",T1 )", R"( VFI , "VX520",XDL,P,"APP",T1 )"}) {
        EXPECT_EQ(WithApplication("A9", false, strPacket), strPacket);
    }
}

TEST_F(TVFIPacketTest, EditsExactlyEnoughFieldsAndCountsNoSpareOne) {
    EXPECT_EQ(WithTerminal("T9", " a,b,c,d,e"), " a,b,c,d,e");
    EXPECT_EQ(WithTerminal("T9", " a,b,c,d,e,f"), "a,b,c,d,e,T9");
    EXPECT_EQ(WithApplication("A9", false, " a,b,XDL,F"), " a,b,XDL,F");
    EXPECT_EQ(WithApplication("A9", false, " a,b,XDL,F,e"), "a,b,XDL,F,A9");
    EXPECT_EQ(WithApplication("A9", true, " a,b"), " a,b") << "a partial one by its want of fields";
    EXPECT_EQ(WithDownloadType(" a,b"), " a,b");
    EXPECT_EQ(WithDownloadType(" a,b,XCDLF"), "a,b,XCDL");
}

TEST_F(TVFIPacketTest, TakesTheThreeLettersAloneForAPartialRequestThatNoEditChanges) {
    EXPECT_TRUE(packet.IsVfiPacket("VFI"));
    EXPECT_EQ(TypeOf("VFI"), Type::Partial);
    for (const auto& [strName, edit] : Edits()) {
        std::string strPacket = "VFI";
        edit(packet, strPacket);
        EXPECT_EQ(strPacket, "VFI") << strName;
    }
}

TEST_F(TVFIPacketTest, LeavesWhatCantBeSplitAsItWas) {
    for (const std::string& strUnsplittable : Unsplittable()) {
        for (const auto& [strName, edit] : Edits()) {
            std::string strPacket = strUnsplittable;
            edit(packet, strPacket);
            EXPECT_EQ(strPacket, strUnsplittable) << strName;
        }
    }
}

TEST_F(TVFIPacketTest, EditsAsManyFieldsAsCanBeCounted) {
    const std::string strMost = "VFI,VX520,XCDLF,F,APP,T1" + std::string(32767 - 6, ',');
    std::string strPacket = strMost;
    for (const auto& [strName, edit] : Edits())
        edit(packet, strPacket);
    EXPECT_EQ(strPacket, "VFI,VX520,XCDL,F,A9,T9,,,,,R9,C9" + std::string(32767 - 12, ','));
    strPacket = strMost + ",";
    for (const auto& [strName, edit] : Edits())
        edit(packet, strPacket);
    EXPECT_EQ(strPacket, strMost + ",");
}

TEST_F(TVFIPacketTest, EndsQuietlyWithTheFirstValuesWhenMemoryIsShort) {
    // Fields that need memory of their own.
    const std::string strPacket = "VFI,VX520,XCDLF,f," + std::string(2000, 'a') + "," +
                                  std::string(2000, 't') + ",EPROM,1024,4096," +
                                  std::string(2000, 'p') + ",,";
    ASSERT_EQ(TypeOf(strPacket), Type::XcdlDownload);
    Type type = Type::Other;
    bool bFull = true;
    int32_t lBlockSize = 7;
    std::string strPTid = "old";
    {
        world::AllocationLimit limit(1000);
        type = TypeOf(strPacket);
        bFull = packet.IsFullDownload(strPacket);
        lBlockSize = packet.GetBlockSize(strPacket);
        strPTid = packet.GetPTid(strPacket);
    }
    EXPECT_EQ(type, Type::Partial);
    EXPECT_FALSE(bLast);
    EXPECT_FALSE(bFull);
    EXPECT_EQ(lBlockSize, 0);
    EXPECT_EQ(strPTid, "");
    for (const auto& [strName, edit] : Edits()) {
        std::string strEdited = strPacket;
        {
            world::AllocationLimit limit(1000);
            edit(packet, strEdited);
        }
        EXPECT_EQ(strEdited, strPacket) << strName;
    }
}

} // namespace
} // namespace brennik
