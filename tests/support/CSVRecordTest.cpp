#include "support/CSVRecord.h"

#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

using Fields = std::vector<std::string>;

class CSVRecordTest : public world::WorldTest {
  protected:
    std::string Build(Fields fields) {
        strFields = std::move(fields);
        std::string strRecord;
        EXPECT_EQ(record.BuildPacket(strFields, static_cast<int16_t>(strFields.size()), strRecord),
                  0);
        return strRecord;
    }

    /// The fields without the spare entry behind them.
    Fields BreakOut(const std::string& strRecord) {
        EXPECT_EQ(record.BreakOutFields(strFields, iNoOfFields, strRecord), 0) << strRecord;
        EXPECT_EQ(strFields.size(), static_cast<size_t>(iNoOfFields) + 1) << strRecord;
        EXPECT_EQ(strFields.back(), "") << strRecord;
        return Fields(strFields.begin(), strFields.end() - 1);
    }

    CSVRecord record;
    Fields strFields;
    int16_t iNoOfFields = -1;
};

TEST_F(CSVRecordTest, StartsWithoutEnclosingAndWithoutText) {
    EXPECT_FALSE(record.bEncloseFields());
    EXPECT_EQ(record.strErrorMessage(), "");
}

TEST_F(CSVRecordTest, BuildPacketJoinsTrimmedFields) {
    EXPECT_EQ(Build({" a ", "b c", "", "  "}), "a,b c,,");
    EXPECT_EQ(Build({"a"}), "a");
    EXPECT_EQ(Build({"\ta"}), "\ta");
}

TEST_F(CSVRecordTest, BuildPacketQuotesAFieldThatHoldsAComma) {
    EXPECT_EQ(Build({"a,b", "c"}), "\"a,b\",c");
    EXPECT_EQ(Build({" a,\"b "}), "\" a,\"\"b \""); // quoted fields keep their blanks
}

TEST_F(CSVRecordTest, BuildPacketLeavesADoubleQuoteInsideAField) {
    EXPECT_EQ(Build({"a\"b", "c\""}), "a\"b,c\"");
    EXPECT_EQ(Build({" \"a"}), "\"a"); // the blank is the first character, so it isn't quoted
}

TEST_F(CSVRecordTest, BuildPacketDoublesTheQuotesOfAFieldThatBeginsWithOne) {
    EXPECT_EQ(Build({"\"a\"b"}), "\"\"\"a\"\"b\"");
    EXPECT_EQ(Build({"\""}), "\"\"\"\"");
}

TEST_F(CSVRecordTest, BuildPacketEnclosesEveryFieldWhenAsked) {
    record.bEncloseFields(true);
    EXPECT_TRUE(record.bEncloseFields());
    EXPECT_EQ(Build({" a ", "", "b\"c"}), "\" a \",\"\",\"b\"\"c\"");
}

TEST_F(CSVRecordTest, BuildPacketChangesTheTableInPlace) {
    Build({" a ", "b,c", "d"});
    EXPECT_EQ(strFields, (Fields{"a", "\"b,c\"", "d"}));
}

TEST_F(CSVRecordTest, BuildPacketTakesTheFirstFieldsOnly) {
    strFields = {" a ", " b ", " c "};
    std::string strRecord = "old";
    EXPECT_EQ(record.BuildPacket(strFields, 2, strRecord), 0);
    EXPECT_EQ(strRecord, "a,b");
    EXPECT_EQ(strFields[2], " c ");
    EXPECT_EQ(record.BuildPacket(strFields, 0, strRecord), 0);
    EXPECT_EQ(strRecord, "");
}

TEST_F(CSVRecordTest, BuildPacketRefusesMoreFieldsThanThereAre) {
    strFields = {" a "};
    std::string strRecord = "old";
    EXPECT_EQ(record.BuildPacket(strFields, 2, strRecord), 1);
    EXPECT_EQ(record.strErrorMessage(), "Invalid number of fields : 2");
    EXPECT_EQ(strRecord, "old");
    EXPECT_EQ(strFields, Fields{" a "});
}

TEST_F(CSVRecordTest, BreakOutFieldsSplitsPlainFields) {
    EXPECT_EQ(BreakOut("a,b"), (Fields{"a", "b"}));
    EXPECT_EQ(BreakOut("a"), Fields{"a"});
    EXPECT_EQ(BreakOut(" a b , c "), (Fields{"a b", "c"}));
    EXPECT_EQ(BreakOut("a\"b,c\""), (Fields{"a\"b", "c\""}));
    EXPECT_EQ(BreakOut("\ta"), Fields{"\ta"});
}

TEST_F(CSVRecordTest, BreakOutFieldsKeepsEmptyFields) {
    EXPECT_EQ(BreakOut("a,,b"), (Fields{"a", "", "b"}));
    EXPECT_EQ(BreakOut("a,"), (Fields{"a", ""}));
    EXPECT_EQ(BreakOut(","), (Fields{"", ""}));
    EXPECT_EQ(BreakOut(",,"), (Fields{"", "", ""}));
    EXPECT_EQ(BreakOut(",a"), (Fields{"", "a"}));
}

TEST_F(CSVRecordTest, BreakOutFieldsReadsBlanksUpToTheEndAsOneEmptyField) {
    EXPECT_EQ(BreakOut(" "), Fields{""});
    EXPECT_EQ(BreakOut("   "), Fields{""});
    EXPECT_EQ(BreakOut("a,  "), (Fields{"a", ""}));
    EXPECT_EQ(BreakOut("a, ,"), (Fields{"a", "", ""}));
}

TEST_F(CSVRecordTest, BreakOutFieldsReadsQuotedFields) {
    EXPECT_EQ(BreakOut("\"a,b\",c"), (Fields{"a,b", "c"}));
    EXPECT_EQ(BreakOut("  \" a \"  , b"), (Fields{" a ", "b"}));
    EXPECT_EQ(BreakOut("\"\""), Fields{""});
    EXPECT_EQ(BreakOut("\"a\","), (Fields{"a", ""}));
    EXPECT_EQ(BreakOut("\"a\"  "), Fields{"a"});
    EXPECT_EQ(BreakOut("x,\"a\""), (Fields{"x", "a"}));
    EXPECT_EQ(BreakOut("\"a,\""), Fields{"a,"});
}

TEST_F(CSVRecordTest, BreakOutFieldsTakesADoubledQuoteAsOne) {
    EXPECT_EQ(BreakOut("\"a\"\"b\""), Fields{"a\"b"});
    EXPECT_EQ(BreakOut("\"\"\"\""), Fields{"\""});
    EXPECT_EQ(BreakOut("\"\"\"a\"\"b\",c"), (Fields{"\"a\"b", "c"}));
}

TEST_F(CSVRecordTest, BreakOutFieldsPassesAllBytes) {
    const std::string strField("\x00\x01\xFF", 3);
    EXPECT_EQ(BreakOut(strField + ",\"" + strField + "\""), (Fields{strField, strField}));
}

TEST_F(CSVRecordTest, BreakOutFieldsRefusesABlankRecord) {
    strFields = {"old"};
    iNoOfFields = 1;
    EXPECT_EQ(record.BreakOutFields(strFields, iNoOfFields, ""), 1);
    EXPECT_EQ(record.strErrorMessage(), "Cannot extract fields from a blank record");
    EXPECT_EQ(strFields, Fields{"old"});
    EXPECT_EQ(iNoOfFields, 1);
}

TEST_F(CSVRecordTest, BreakOutFieldsFailsWithoutTextOnABrokenQuotedField) {
    for (const char* strBroken :
         {"\"a\"x,b", "\"a\" x", "\"a", "\"", "\"a\"\"", "\"a,b", "\"a\" \"b\""}) {
        iNoOfFields = -1;
        EXPECT_EQ(record.BreakOutFields(strFields, iNoOfFields, strBroken), 1) << strBroken;
        EXPECT_EQ(record.strErrorMessage(), "") << strBroken;
        EXPECT_EQ(iNoOfFields, 0) << strBroken;
    }
}

TEST_F(CSVRecordTest, BreakOutFieldsKeepsTheFieldsInFrontOfABrokenOne) {
    EXPECT_EQ(record.BreakOutFields(strFields, iNoOfFields, "a,b,\"c"), 1);
    EXPECT_EQ(iNoOfFields, 2);
    EXPECT_EQ(strFields, (Fields{"a", "b", ""}));
}

TEST_F(CSVRecordTest, ASuccessLeavesTheTextOfTheLastFailure) {
    EXPECT_EQ(record.BreakOutFields(strFields, iNoOfFields, ""), 1);
    BreakOut("a");
    EXPECT_EQ(record.strErrorMessage(), "Cannot extract fields from a blank record");
}

TEST_F(CSVRecordTest, BreakOutFieldsCountsUpTo32767) {
    BreakOut(std::string(32766, ','));
    EXPECT_EQ(iNoOfFields, 32767);
    EXPECT_EQ(record.BreakOutFields(strFields, iNoOfFields, std::string(32767, ',')), 1);
    EXPECT_EQ(record.strErrorMessage(), "CSVRecord::BreakOutPacket() - Overflow");
    EXPECT_EQ(record.BreakOutFields(strFields, iNoOfFields, std::string(60000, ',')), 1);
    EXPECT_EQ(record.strErrorMessage(), "CSVRecord::BreakOutPacket() - Overflow");
}

TEST_F(CSVRecordTest, BreakOutFieldsPumpsForEachCharacterInsideQuotes) {
    BreakOut("abc,def");
    EXPECT_EQ(host.nPumps(), 0);
    BreakOut("abc,\"de f\",ghi");
    EXPECT_EQ(host.nPumps(), 4);
}

TEST_F(CSVRecordTest, BreakOutFieldsCanReadAnEntryOfItsOwnTable) {
    strFields = {"a,b"};
    EXPECT_EQ(record.BreakOutFields(strFields, iNoOfFields, strFields[0]), 0);
    EXPECT_EQ(strFields, (Fields{"a", "b", ""}));
}

TEST_F(CSVRecordTest, BreaksOutWhatItBuilt) {
    const Fields original = {"VFI", "a,b", "\"quoted\"", "", "say \"x\", y"};
    EXPECT_EQ(BreakOut(Build(original)), original);
}

} // namespace
} // namespace brennik
