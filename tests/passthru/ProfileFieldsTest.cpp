// The profile's values in a request that follows a refused enquiry, and a terminal that is taken
// over from another profile.

#include "platform/RuntimeFailure.h"
#include "tests/passthru/DeviceWorld.h"

namespace brennik::passthru {
namespace {

class ProfileFields : public DeviceTest {
  protected:
    std::string Edited(std::string strRequest) {
        access.SubstituteProfileFields(config, strRequest);
        return strRequest;
    }
    void FillProfile() {
        config.strTerminalId("T9");
        config.strApplicationID("A9");
        config.strReleaseTitle("R9");
        config.strConfigTitle("C9");
        config.bForceApplicationSwap(true); // has no say here
    }
};

TEST_F(ProfileFields, GoIntoAPartialRequest) {
    FillProfile();
    EXPECT_EQ(Edited("VFI,D,XDL,P,A,T,E,1,2,P,,"), "VFI,D,XDL,P,A,T9,E,1,2,P,R9,C9");
    EXPECT_EQ(Edited("VFI,D,XDL,P,A,T,E,1,2,P,R,"), "VFI,D,XDL,P,A,T9,E,1,2,P,R,C9");
    EXPECT_EQ(Edited("VFI,D,XDL,P,A,T,E,1,2,P"), "VFI,D,XDL,P,A,T9,E,1,2,P");
    EXPECT_EQ(Edited("VFI,D,XCDLF,P,A,T"), "VFI,D,XCDLF,P,A,T9") << "the keyword stays";
    EXPECT_EQ(Edited("VFI,D"), "VFI,D") << "partial for its want of fields, which no edit finds";
    EXPECT_EQ(strPTID, "old id");
}

TEST_F(ProfileFields, GoIntoNoOtherRequest) {
    FillProfile();
    for (const std::string strRequest : {" VFI,D,XDL,F,A,T,E,1,2,P,,", " VFI,D,XCDL,F,A,T",
                                         " VFI,D,XCDLF,F,A,T", " VFI,D,XUL,F,A,T"}) {
        EXPECT_EQ(Edited(strRequest), strRequest);
        EXPECT_EQ(VfiCopy(), strRequest + "\r\n") << "but it is copied";
    }
}

TEST_F(ProfileFields, GoIntoNothingWithoutTheThreeLetters) {
    FillProfile();
    EXPECT_EQ(Edited(" TMS,D,XDL,P,A,T,E,1,2,P,,"), " TMS,D,XDL,P,A,T,E,1,2,P,,");
    EXPECT_EQ(VfiCopy(), "no file");
}

TEST_F(ProfileFields, LeaveTheRequestToTheBlankWhereThereAreNone) {
    EXPECT_EQ(Edited(" VFI,D,XDL,P,A,T,E,1,2,P,,"), " VFI,D,XDL,P,A,T,E,1,2,P,,");
    config.strApplicationID("A9"); // which a partial request doesn't get
    EXPECT_EQ(Edited(" VFI,D,XDL,P,A,T,E,1,2,P,,"), " VFI,D,XDL,P,A,T,E,1,2,P,,");
    config.strReleaseTitle("R9");
    EXPECT_EQ(Edited(" VFI,D,XDL,P,A,T,E,1,2,P,,"), "VFI,D,XDL,P,A,T,E,1,2,P,R9,");
    config.strReleaseTitle("");
    config.strConfigTitle("C9");
    EXPECT_EQ(Edited(" VFI,D,XDL,P,A,T,E,1,2,P,,"), "VFI,D,XDL,P,A,T,E,1,2,P,,C9");
}

TEST_F(ProfileFields, LeaveAFailureOfTheCopyToTheCaller) {
    host.FailNext(Op::StreamClose);
    EXPECT_THROW(Edited("VFI,D,XDL,P"), RuntimeFailure);
}

// ---- The terminal of another profile.

TEST_F(ProfileFields, TakeTheTerminalOfTheSecondProfileOverIntoTheFirst) {
    host.files.Put(kConfigFile, "[PROFILE_1]\r\nTerminalID=ONE\r\nApplicationID=OLD\r\n"
                                "[PROFILE_2]\r\nTerminalID=TWO\r\nApplicationID=OTHER\r\n");
    config.strTerminalId("RUN");
    config.strApplicationID("RUNAPP");
    access.CopyTerminalIdFromProfile(config, kConfigFolder);
    EXPECT_EQ(config.strTerminalId(), "TWO");
    EXPECT_EQ(config.strApplicationID(), "RUNAPP") << "nothing else is copied";
    TBrennikClientConfig first;
    ASSERT_EQ(first.GetConfiguration(kConfigFolder, 1), 0);
    EXPECT_EQ(first.strTerminalId(), "TWO");
    EXPECT_EQ(first.strApplicationID(), "RUNAPP") << "the whole profile of the run is saved";
    TBrennikClientConfig second;
    ASSERT_EQ(second.GetConfiguration(kConfigFolder, 2), 0);
    EXPECT_EQ(second.strTerminalId(), "TWO");
    EXPECT_EQ(second.strApplicationID(), "OTHER");
}

} // namespace
} // namespace brennik::passthru
