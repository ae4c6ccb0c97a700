#include "config/TTLIniFile.h"

#include "platform/RuntimeFailure.h"
#include "tests/world/SimHost.h"
#include "tests/world/SwappedHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using testing::ElementsAre;

constexpr const char* kFile = "/srv/pos/keys.ini";

class TTLIniFileTest : public world::WorldTest {
  protected:
    TTLIniFileTest() {
        ini.strIniFileDir("\\srv\\pos");
        ini.strIniFileName("keys.ini");
    }

    std::string Read(const std::string& strSection, const std::string& strKey) {
        return ini.GetINIString(strSection, strKey, "", kIniBufferSize);
    }

    TTLIniFile ini;
};

/// The list of a dialog, in memory.
class ListInMemory : public ListControl {
  public:
    explicit ListInMemory(std::vector<std::string> strStart = {}) : strItems(std::move(strStart)) {}
    void Clear() override { strItems.clear(); }
    void AddItem(const std::string& strItem) override { strItems.push_back(strItem); }

    std::vector<std::string> strItems;
};

/// A list that can't be filled.
class BrokenList : public ListControl {
  public:
    void Clear() override {}
    void AddItem(const std::string&) override {
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    }
};

/// Profile strings that fail by throwing.
class ThrowingProfileStrings : public ProfileStrings {
  public:
    std::string GetPrivateProfileString(const std::string&, const std::string&, const std::string&,
                                        int32_t, const std::string&) override {
        throw RuntimeFailure(FailureKind::DeviceIoError);
    }
    int32_t WritePrivateProfileString(const std::string&, const std::string&, const std::string&,
                                      const std::string&) override {
        throw RuntimeFailure(FailureKind::DiskFull);
    }
};

/// Profile strings whose writes succeed with a number of their own.
class FixedResult : public ThrowingProfileStrings {
  public:
    int32_t WritePrivateProfileString(const std::string&, const std::string&, const std::string&,
                                      const std::string&) override {
        return 7;
    }
};

TEST_F(TTLIniFileTest, StartsWithoutFolderAndName) {
    const TTLIniFile fresh;
    EXPECT_EQ(fresh.strIniFileDir(), "");
    EXPECT_EQ(fresh.strIniFileName(), "");
}

TEST_F(TTLIniFileTest, ReadsOneValue) {
    host.files.Put(kFile, "[A]\r\nk=v\r\n[B]\r\nk=w\r\n");
    EXPECT_EQ(Read("A", "k"), "v");
    EXPECT_EQ(Read("B", "k"), "w");
    EXPECT_EQ(Read("B", "other"), "");
    EXPECT_EQ(Read("C", "k"), "");
}

TEST_F(TTLIniFileTest, MatchesNamesWithoutRegardToCase) {
    host.files.Put(kFile, "[Encryption]\r\nKeyFile=v\r\n");
    EXPECT_EQ(Read("ENCRYPTION", "KEYFILE"), "v");
    EXPECT_NE(ini.SetINIString("encryption", "keyfile", "w"), 0);
    EXPECT_EQ(host.files.Get(kFile), "[Encryption]\r\nKeyFile=w\r\n");
}

TEST_F(TTLIniFileTest, MissingFileReadsAsEmptyAndIsNotCreated) {
    host.files.MakeFolder("/srv/pos");
    const auto tree = host.files.Tree();
    EXPECT_EQ(Read("A", "k"), "");
    EXPECT_EQ(host.files.Tree(), tree);
}

TEST_F(TTLIniFileTest, MissingValueReadsAsTheDefault) {
    EXPECT_EQ(ini.GetINIString("A", "k", "default", kIniBufferSize), "default");
    host.files.Put(kFile, "[A]\r\nempty=\r\n");
    EXPECT_EQ(ini.GetINIString("A", "k", "default", kIniBufferSize), "default");
    EXPECT_EQ(ini.GetINIString("A", "empty", "default", kIniBufferSize), "");
}

TEST_F(TTLIniFileTest, WritingCreatesFileSectionAndKey) {
    host.files.MakeFolder("/srv/pos");
    EXPECT_NE(ini.SetINIString("A", "k", "v"), 0);
    EXPECT_THAT(host.files.Lines(kFile), ElementsAre("[A]", "k=v"));
    EXPECT_EQ(Read("A", "k"), "v");
}

TEST_F(TTLIniFileTest, WritingReplacesOneValueAndLeavesAllOtherLines) {
    host.files.Put(kFile, "; mine\r\n[A]\r\nk=v\r\nl=w\r\n[B]\r\nk=x\r\n");
    EXPECT_NE(ini.SetINIString("A", "k", "new"), 0);
    EXPECT_EQ(host.files.Get(kFile), "; mine\r\n[A]\r\nk=new\r\nl=w\r\n[B]\r\nk=x\r\n");
}

TEST_F(TTLIniFileTest, FolderGainsItsBackslashAtTheFirstUseAndKeepsIt) {
    EXPECT_EQ(ini.strIniFileDir(), "\\srv\\pos");
    Read("A", "k");
    EXPECT_EQ(ini.strIniFileDir(), "\\srv\\pos\\");
    Read("A", "k");
    EXPECT_EQ(ini.strIniFileDir(), "\\srv\\pos\\");

    ini.strIniFileDir("C:\\pos");
    static_cast<void>(ini.SetINIString("A", "k", "v")); // the folder alone is of interest
    EXPECT_EQ(ini.strIniFileDir(), "C:\\pos\\");
    EXPECT_EQ(ini.strIniFileName(), "keys.ini");
}

TEST_F(TTLIniFileTest, FolderWithAndWithoutBackslashLeadsToTheSamePath) {
    host.files.MakeFolder("/srv/pos");
    for (const char* strFolder : {"\\srv\\pos", "\\srv\\pos\\", "C:\\srv\\pos", "/srv/pos"}) {
        ini.strIniFileDir(strFolder);
        static_cast<void>(ini.SetINIString("A", "k", strFolder)); // read back below
        EXPECT_EQ(Read("A", "k"), strFolder);
        EXPECT_THAT(host.files.Lines(kFile), ElementsAre("[A]", std::string("k=") + strFolder));
    }
    EXPECT_EQ(host.profileStrings.writes[0].strPath, "\\srv\\pos\\keys.ini");
    EXPECT_EQ(host.profileStrings.writes[1].strPath, "\\srv\\pos\\keys.ini");
    EXPECT_EQ(host.profileStrings.writes[3].strPath, "/srv/pos\\keys.ini");
}

TEST_F(TTLIniFileTest, RootOfADriveKeepsItsForm) {
    host.files.Put("/keys.ini", "[A]\r\nk=v\r\n");
    ini.strIniFileDir("C:\\");
    EXPECT_EQ(Read("A", "k"), "v");
    EXPECT_EQ(ini.strIniFileDir(), "C:\\");
}

TEST_F(TTLIniFileTest, EmptyFolderBecomesTheRoot) {
    host.files.Put("/keys.ini", "[A]\r\nk=v\r\n");
    ini.strIniFileDir("");
    EXPECT_EQ(Read("A", "k"), "v");
    EXPECT_EQ(ini.strIniFileDir(), "\\");
}

TEST_F(TTLIniFileTest, EmptyValueReadsBackAsEmpty) {
    host.files.MakeFolder("/srv/pos");
    EXPECT_NE(ini.SetINIString("A", "k", ""), 0);
    EXPECT_EQ(ini.GetINIString("A", "k", "default", kIniBufferSize), "");
    EXPECT_THAT(host.files.Lines(kFile), ElementsAre("[A]", "k="));
}

TEST_F(TTLIniFileTest, CutsAValueToWhatTheBufferHolds) {
    host.files.Put(kFile, "[A]\r\nk=abcdef\r\n");
    EXPECT_EQ(ini.GetINIString("A", "k", "", 8), "abcdef");
    EXPECT_EQ(ini.GetINIString("A", "k", "", 7), "abcdef");
    EXPECT_EQ(ini.GetINIString("A", "k", "", 6), "abcde");
    EXPECT_EQ(ini.GetINIString("A", "k", "", 1), "");
    EXPECT_EQ(ini.GetINIString("A", "k", "", 0), "");
    host.files.Put(kFile, "[A]\r\nk=" + std::string(12000, 'x') + "\r\n");
    EXPECT_EQ(Read("A", "k"), std::string(9999, 'x'));
}

TEST_F(TTLIniFileTest, NegativeBufferFailsBeforeTheFileIsTouched) {
    host.files.Put(kFile, "[A]\r\nk=v\r\n");
    EXPECT_EQ(ini.GetINIString("A", "k", "default", -1), "");
    EXPECT_EQ(ini.strIniFileDir(), "\\srv\\pos");
}

TEST_F(TTLIniFileTest, ValueBeyond16BitsOfLengthFailsAsEmpty) {
    host.files.Put(kFile, "[A]\r\nfits=" + std::string(32767, 'x') +
                              "\r\nlong=" + std::string(32768, 'x') + "\r\n");
    EXPECT_EQ(ini.GetINIString("A", "fits", "", 40000).size(), 32767U);
    EXPECT_EQ(ini.GetINIString("A", "long", "", 40000), "");
}

TEST_F(TTLIniFileTest, HandsBytesOverAsTheyStand) {
    host.files.Put(kFile, "[A]\r\nk=\" Gr\xFC\xDF\t \"\r\n");
    EXPECT_EQ(Read("A", "k"), " Gr\xFC\xDF\t ");
}

TEST_F(TTLIniFileTest, CachesNothing) {
    host.files.Put(kFile, "[A]\r\nk=v\r\n");
    EXPECT_EQ(Read("A", "k"), "v");
    host.files.Put(kFile, "[A]\r\nk=w\r\n");
    EXPECT_EQ(Read("A", "k"), "w");
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(TTLIniFileTest, FailingWriteShowsInItsResultAlone) {
    host.files.Put(kFile, "[A]\r\nk=v\r\n");
    host.files.DenyWrites(kFile);
    EXPECT_EQ(ini.SetINIString("A", "k", "w"), 0);
    EXPECT_EQ(host.files.Get(kFile), "[A]\r\nk=v\r\n");
}

TEST_F(TTLIniFileTest, HandsTheResultOfTheWriteBackAsItStands) {
    FixedResult profileStrings;
    Host fixed = world::Swapped(host.TheHost(), profileStrings);
    const ScopedHost scoped(fixed);
    EXPECT_EQ(ini.SetINIString("A", "k", "v"), 7);
}

TEST_F(TTLIniFileTest, NothingThrownLeavesIt) {
    ThrowingProfileStrings profileStrings;
    Host throwing = world::Swapped(host.TheHost(), profileStrings);
    const ScopedHost scoped(throwing);
    EXPECT_EQ(ini.GetINIString("A", "k", "default", kIniBufferSize), "");
    EXPECT_EQ(ini.SetINIString("A", "k", "v"), 0);
    EXPECT_EQ(ini.strIniFileDir(), "\\srv\\pos\\");
    ListInMemory box;
    EXPECT_EQ(ini.FillBoxWithMultiLineValues(box, "A", 3), 0);
}

struct SplitCase {
    const char* strLine;
    std::vector<std::string> strArray; ///< with the empty element behind the last value
};

TEST_F(TTLIniFileTest, SplitsALineAtOneCharacter) {
    const SplitCase cases[] = {
        {"a,,b,", {"a", "b", ""}},
        {"a", {"a", ""}},
        {",a", {"a", ""}},
        {",,,a,,,", {"a", ""}},
        {"one,two,three", {"one", "two", "three", ""}},
        {" a , b ", {" a ", " b ", ""}},
        {" , ", {" ", " ", ""}},
        {"a;b", {"a;b", ""}},
        {"", {}},
        {",", {}},
        {",,", {}},
    };
    for (const SplitCase& c : cases) {
        std::vector<std::string> strValues;
        const int16_t iExpected =
            c.strArray.empty() ? int16_t{0} : static_cast<int16_t>(c.strArray.size() - 1);
        EXPECT_EQ(ini.FillSingleLineValues(strValues, c.strLine, ','), iExpected) << c.strLine;
        EXPECT_EQ(strValues, c.strArray) << c.strLine;
    }
}

TEST_F(TTLIniFileTest, TakesAnyByteAsDelimiter) {
    std::vector<std::string> strValues;
    EXPECT_EQ(ini.FillSingleLineValues(strValues, std::string("a\0b", 3), 0), 2);
    EXPECT_THAT(strValues, ElementsAre("a", "b", ""));
    EXPECT_EQ(ini.FillSingleLineValues(strValues,
                                       "a\xFF"
                                       "c",
                                       255),
              2);
    EXPECT_THAT(strValues, ElementsAre("a", "c", ""));
    // No byte has one of these codes.
    EXPECT_EQ(ini.FillSingleLineValues(strValues,
                                       "a\xFF"
                                       "d",
                                       -1),
              1);
    EXPECT_THAT(strValues, ElementsAre("a\xFF"
                                       "d",
                                       ""));
    EXPECT_EQ(ini.FillSingleLineValues(strValues, "a,e", 256 + ','), 1);
    EXPECT_THAT(strValues, ElementsAre("a,e", ""));
}

TEST_F(TTLIniFileTest, EmptyLineLeavesTheArrayUntouched) {
    std::vector<std::string> strValues = {"x", "y"};
    EXPECT_EQ(ini.FillSingleLineValues(strValues, "", ','), 0);
    EXPECT_THAT(strValues, ElementsAre("x", "y"));
}

TEST_F(TTLIniFileTest, ResizesALongerArrayToOneElementMoreThanValues) {
    std::vector<std::string> strValues = {"u", "v", "w", "x", "y"};
    EXPECT_EQ(ini.FillSingleLineValues(strValues, "a", ','), 1);
    EXPECT_THAT(strValues, ElementsAre("a", ""));
}

TEST_F(TTLIniFileTest, CountsUpTo16Bits) {
    std::string strLine;
    for (int32_t lValue = 0; lValue < 32767; ++lValue) {
        strLine += "a,";
    }
    std::vector<std::string> strValues;
    EXPECT_EQ(ini.FillSingleLineValues(strValues, strLine, ','), 32767);
    EXPECT_EQ(strValues.size(), 32768U);
    EXPECT_EQ(ini.FillSingleLineValues(strValues, strLine + "a", ','), -1);
}

TEST_F(TTLIniFileTest, FillsABoxWithTheValuesOfALine) {
    ListInMemory box({"old"});
    EXPECT_EQ(ini.FillBoxWithLineValues(box, ":EP1::EP2:", ':'), 2);
    EXPECT_THAT(box.strItems, ElementsAre("EP1", "EP2"));
    EXPECT_EQ(ini.FillBoxWithLineValues(box, "EP3", ':'), 1);
    EXPECT_THAT(box.strItems, ElementsAre("EP3"));
}

TEST_F(TTLIniFileTest, LineWithoutValuesLeavesTheBoxAsItWas) {
    ListInMemory box({"old"});
    EXPECT_EQ(ini.FillBoxWithLineValues(box, "", ':'), 0);
    EXPECT_EQ(ini.FillBoxWithLineValues(box, ":::", ':'), 0);
    EXPECT_THAT(box.strItems, ElementsAre("old"));
}

TEST_F(TTLIniFileTest, LineWithTooManyValuesLeavesTheBoxAsItWas) {
    std::string strLine;
    for (int32_t lValue = 0; lValue < 32768; ++lValue) {
        strLine += "a:";
    }
    ListInMemory box({"old"});
    EXPECT_EQ(ini.FillBoxWithLineValues(box, strLine, ':'), -1);
    EXPECT_THAT(box.strItems, ElementsAre("old"));
}

TEST_F(TTLIniFileTest, AddsTheValuesOfNumberedKeysToABox) {
    host.files.Put(kFile, "[A]\r\n1=one\r\n3=three\r\n4=four\r\n");
    ListInMemory box({"old"});
    EXPECT_EQ(ini.FillBoxWithMultiLineValues(box, "A", 3), 2);
    EXPECT_THAT(box.strItems, ElementsAre("old", "one", "three"));
}

TEST_F(TTLIniFileTest, WritesKeyNumbersAsPlainDigits) {
    host.files.Put(kFile, "[A]\r\n9=nine\r\n10=ten\r\n11=eleven\r\n");
    ListInMemory box;
    EXPECT_EQ(ini.FillBoxWithMultiLineValues(box, "A", 12), 3);
    EXPECT_THAT(box.strItems, ElementsAre("nine", "ten", "eleven"));
}

TEST_F(TTLIniFileTest, NoLinesAddNothingToABox) {
    host.files.Put(kFile, "[A]\r\n0=zero\r\n1=one\r\n");
    ListInMemory box({"old"});
    EXPECT_EQ(ini.FillBoxWithMultiLineValues(box, "A", 0), 0);
    EXPECT_EQ(ini.FillBoxWithMultiLineValues(box, "A", -5), 0);
    EXPECT_EQ(ini.FillBoxWithMultiLineValues(box, "B", 5), 0);
    EXPECT_THAT(box.strItems, ElementsAre("old"));
}

TEST_F(TTLIniFileTest, CutsTheValuesOfNumberedKeysToTheBuffer) {
    host.files.Put(kFile, "[A]\r\n1=" + std::string(10000, 'x') + "\r\n");
    ListInMemory box;
    EXPECT_EQ(ini.FillBoxWithMultiLineValues(box, "A", 1), 1);
    EXPECT_THAT(box.strItems, ElementsAre(std::string(9999, 'x')));
}

TEST_F(TTLIniFileTest, BoxThatCanNotBeFilledCountsNothing) {
    host.files.Put(kFile, "[A]\r\n1=one\r\n");
    BrokenList box;
    EXPECT_EQ(ini.FillBoxWithLineValues(box, "a,b", ','), 0);
    EXPECT_EQ(ini.FillBoxWithMultiLineValues(box, "A", 1), 0);
}

} // namespace
} // namespace brennik
