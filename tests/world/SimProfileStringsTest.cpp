#include "tests/world/SimProfileStrings.h"

#include "tests/world/SimHost.h"

namespace brennik::world {
namespace {

class SimProfileStringsTest : public WorldTest {
  protected:
    SimProfileStrings& strings = host.profileStrings;

    std::string Read(const std::string& strKey, int32_t lBufferSize = 1000) {
        return strings.GetPrivateProfileString("GENERAL", strKey, "none", lBufferSize, "C:\\b.ini");
    }
    int32_t Write(const std::string& strKey, const std::string& strValue) {
        return strings.WritePrivateProfileString("GENERAL", strKey, strValue, "C:\\b.ini");
    }
};

TEST_F(SimProfileStringsTest, ReadsValuesAndDefaults) {
    EXPECT_EQ(Read("Name"), "none");
    EXPECT_FALSE(host.files.Exists("/b.ini"));
    host.files.Put("/b.ini", "; x\n[general]\nNAME = \"a b\" \n");
    EXPECT_EQ(Read("Name"), "a b");
    EXPECT_EQ(Read("Other"), "none");
    host.files.Put("/b.ini", "[general]\nname=changed\n");
    EXPECT_EQ(Read("Name"), "changed");
}

TEST_F(SimProfileStringsTest, CutsToTheBuffer) {
    host.files.Put("/b.ini", "[GENERAL]\nName=abcdef\n");
    EXPECT_EQ(Read("Name", 7), "abcdef");
    EXPECT_EQ(Read("Name", 6), "abcde");
    EXPECT_EQ(Read("Name", 1), "");
    EXPECT_EQ(Read("Name", 0), "");
    EXPECT_EQ(Read("Other", 3), "no");
}

TEST_F(SimProfileStringsTest, WritesOneLineAndKeepsTheRest) {
    EXPECT_EQ(Write("Name", "a"), 1);
    EXPECT_EQ(host.files.Get("/b.ini"), "[GENERAL]\r\nName=a\r\n");
    EXPECT_EQ(Write("Name", "b"), 1);
    EXPECT_EQ(host.files.Get("/b.ini"), "[GENERAL]\r\nName=b\r\n");
    EXPECT_EQ(strings.writes,
              (std::vector<ProfileWrite>{{"GENERAL", "Name", "a", "C:\\b.ini", true},
                                         {"GENERAL", "Name", "b", "C:\\b.ini", true}}));
}

TEST_F(SimProfileStringsTest, AValueThatIsThereIsNoWrite) {
    EXPECT_EQ(Write("Name", "a"), 1);
    const int64_t nWrites = host.files.nWrites();
    EXPECT_EQ(Write("Name", "a"), 1);
    EXPECT_EQ(host.files.nWrites(), nWrites);
}

TEST_F(SimProfileStringsTest, AWriteThatCantBeMadeLeavesTheOldFileWhole) {
    EXPECT_EQ(Write("Name", "a"), 1);
    const auto strOld = host.files.Get("/b.ini");
    host.files.SetReadOnly("/b.ini", true);
    EXPECT_EQ(Write("Name", "b"), 0);
    host.files.SetReadOnly("/b.ini", false);
    host.files.DenyWrites("/b.ini");
    EXPECT_EQ(Write("Name", "b"), 0);
    host.files.Allow("/b.ini");
    host.files.SetQuota(25); // the new file stands beside the old one
    EXPECT_EQ(Write("Name", "b"), 0);
    host.files.SetQuota(std::nullopt);
    for (const std::string& strValue :
         {std::string("x\ny"), std::string("x\r"), std::string(1, '\0')}) {
        EXPECT_EQ(Write("Name", strValue), 0);
    }
    EXPECT_EQ(strings.WritePrivateProfileString("A", "b", "c", "C:\\none\\b.ini"), 0);
    host.FailNext(Op::WriteProfileString);
    EXPECT_EQ(Write("Name", "b"), 0);
    EXPECT_EQ(host.files.Get("/b.ini"), strOld);
    EXPECT_FALSE(strings.writes.back().bSucceeded);
}

TEST_F(SimProfileStringsTest, AFailedReadGivesTheDefault) {
    EXPECT_EQ(Write("Name", "a"), 1);
    host.FailNext(Op::ReadProfileString);
    EXPECT_EQ(Read("Name"), "none");
    EXPECT_EQ(Read("Name"), "a");
    host.files.Deny("/b.ini");
    EXPECT_EQ(Read("Name"), "none");
}

} // namespace
} // namespace brennik::world
