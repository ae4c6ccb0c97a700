#include "link/CommParms.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace brennik {
namespace {

/// A list that keeps what is done to it.
class NotedList final : public ListControl {
  public:
    void Clear() override { strItems.clear(); }
    void AddItem(const std::string& strItem) override { strItems.push_back(strItem); }

    std::vector<std::string> strItems{"kept"};
};

using Items = std::vector<std::string>;
using Ids = std::initializer_list<int16_t>;

// What is valid.

TEST(CommParms, DataBitsAreFiveToEight) {
    for (const int16_t iDataBits : Ids{5, 6, 7, 8}) {
        EXPECT_TRUE(CommParms::IsValidDataBits(iDataBits)) << iDataBits;
    }
    for (const int16_t iDataBits : Ids{4, 9, 0, -5, -32768, 32767}) {
        EXPECT_FALSE(CommParms::IsValidDataBits(iDataBits)) << iDataBits;
    }
}

TEST(CommParms, StopBitsAreExactlyOneOneAndAHalfAndTwo) {
    for (const double dStopBit : {1.0, 1.5, 2.0}) {
        EXPECT_TRUE(CommParms::IsValidStopbit(dStopBit)) << dStopBit;
    }
    for (const double dStopBit :
         {1.25, 1.75, 0.0, 0.5, 2.5, -1.0, 1.4999999999999998, 3.0, std::nextafter(1.0, 2.0),
          std::nextafter(2.0, 1.0), std::numeric_limits<double>::quiet_NaN(),
          std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(CommParms::IsValidStopbit(dStopBit)) << dStopBit;
    }
}

TEST(CommParms, BaudRatesAreTheTenOfTheList) {
    for (const int32_t lBaudRate :
         {110, 300, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200}) {
        EXPECT_TRUE(CommParms::IsValidBaudRate(lBaudRate)) << lBaudRate;
    }
    for (const int32_t lBaudRate : {0, 1, 109, 111, 600, 14400, 115201, 230400, -9600, INT32_MAX}) {
        EXPECT_FALSE(CommParms::IsValidBaudRate(lBaudRate)) << lBaudRate;
    }
}

TEST(CommParms, FlowControlIdsAreNoughtToTwo) {
    for (const int16_t iId : Ids{0, 1, 2}) {
        EXPECT_TRUE(CommParms::IsValidFlowControlID(iId)) << iId;
    }
    for (const int16_t iId : Ids{-1, 3, -32768, 32767}) {
        EXPECT_FALSE(CommParms::IsValidFlowControlID(iId)) << iId;
    }
}

// Lists.

TEST(CommParms, PortsReplaceTheList) {
    NotedList list;
    CommParms::FillBoxWithPorts(list, true);
    ASSERT_EQ(list.strItems.size(), 256U);
    for (size_t nPort = 0; nPort < 256; ++nPort) {
        EXPECT_EQ(list.strItems[nPort], "COM" + std::to_string(nPort + 1));
    }
}

TEST(CommParms, PrinterPortsComeFirstWhenAskedFor) {
    NotedList list;
    CommParms::FillBoxWithPorts(list, false);
    ASSERT_EQ(list.strItems.size(), 258U);
    EXPECT_EQ(Items(list.strItems.begin(), list.strItems.begin() + 4),
              (Items{"LPT1", "LPT2", "COM1", "COM2"}));
    EXPECT_EQ(list.strItems.back(), "COM256");
}

TEST(CommParms, ParitiesAreAdded) {
    NotedList list;
    CommParms::FillBoxWithParity(list);
    EXPECT_EQ(list.strItems, (Items{"kept", "EVEN", "ODD", "NONE", "SPACE", "MARK"}));
}

TEST(CommParms, DataBitsAreAdded) {
    NotedList list;
    CommParms::FillBoxWithDatabits(list);
    EXPECT_EQ(list.strItems, (Items{"kept", "5", "6", "7", "8"}));
}

TEST(CommParms, BaudRatesAreAdded) {
    NotedList list;
    CommParms::FillBoxWithBaudRates(list);
    EXPECT_EQ(list.strItems, (Items{"kept", "110", "300", "1200", "2400", "4800", "9600", "19200",
                                    "38400", "57600", "115200"}));
}

TEST(CommParms, StopBitsAreAdded) {
    NotedList list;
    CommParms::FillBoxWithStopBits(list);
    EXPECT_EQ(list.strItems, (Items{"kept", "1", "1.5", "2"}));
}

TEST(CommParms, DialTypesAreAdded) {
    NotedList list;
    CommParms::FillBoxWithDialTypes(list);
    EXPECT_EQ(list.strItems, (Items{"kept", "TONE", "PULSE", "ISDN"}));
}

TEST(CommParms, FlowControlTypesReplaceTheList) {
    NotedList list;
    CommParms::FillBoxWithFlowControlTypes(list);
    EXPECT_EQ(list.strItems, (Items{"Xon/Xoff", "Hardware", "None"}));
}

// Ports.

TEST(CommParms, APortIsWhatHasANumberBehindThreeLetters) {
    for (const char* strPort : {"COM1", "COM256", "LPT1", "LPT2", "com7", "COM 7", "COM7 ", "COM+7",
                                "COM007", "LPT3", "XYZ9", "   1"}) {
        EXPECT_EQ(CommParms::GetCommPortStr(strPort), strPort);
    }
    for (const char* strPort : {"COM257", "COM0", "COM-1", "COM", "CO", "", "1", "123", "COMX",
                                "COM1X", "COM1.5", "COM4294967297", "COM65537", "\\\\.\\COM10"}) {
        EXPECT_EQ(CommParms::GetCommPortStr(strPort), "") << strPort;
    }
}

TEST(CommParms, ThePortsOfTheListAreAllPorts) {
    NotedList list;
    CommParms::FillBoxWithPorts(list, false);
    for (const std::string& strPort : list.strItems) {
        EXPECT_EQ(CommParms::GetCommPortStr(strPort), strPort);
    }
}

TEST(CommParms, APortIdIsTheNumberBehindThreeLetters) {
    const std::vector<std::pair<const char*, int>> ids = {
        {"COM1", 1},   {"COM12", 12},       {"COM257", 257}, {"LPT2", 2},     {"COM-3", -3},
        {"COM 4 ", 4}, {"COM32767", 32767}, {"COM32768", 0}, {"COM65537", 0}, {"COMX", 0},
        {"COM1X", 0},  {"COM0", 0},         {"COM", 1},      {"12", 1},       {"", 1},
    };
    for (const auto& [strPort, iId] : ids) {
        EXPECT_EQ(CommParms::GetCommPortID(strPort), iId) << strPort;
    }
}

// Labels.

TEST(CommParms, AParityIsKnownByItsFirstLetterInEitherCase) {
    for (const auto& [strText, strLabel] :
         std::vector<std::pair<const char*, const char*>>{{"none", "NONE"},
                                                          {"Mark parity", "MARK"},
                                                          {"E", "EVEN"},
                                                          {"e", "EVEN"},
                                                          {"Odd", "ODD"},
                                                          {"o", "ODD"},
                                                          {"N", "NONE"},
                                                          {"S", "SPACE"},
                                                          {"sPACE", "SPACE"},
                                                          {"m", "MARK"},
                                                          {"EVERY", "EVEN"},
                                                          {"", ""},
                                                          {"x", ""},
                                                          {" none", ""},
                                                          {"0", ""},
                                                          {"even", "EVEN"}}) {
        EXPECT_EQ(CommParms::GetParityStr(strText), strLabel) << strText;
    }
}

TEST(CommParms, DialTypesHaveLabels) {
    EXPECT_EQ(CommParms::GetDialTypeStr(0), "TONE");
    EXPECT_EQ(CommParms::GetDialTypeStr(1), "PULSE");
    EXPECT_EQ(CommParms::GetDialTypeStr(2), "ISDN");
    for (const int16_t iId : Ids{-1, 3, 100}) {
        EXPECT_EQ(CommParms::GetDialTypeStr(iId), "") << iId;
    }
}

TEST(CommParms, DialTypesAreKnownByTheirExactLabels) {
    EXPECT_EQ(CommParms::GetDialTypeID("TONE"), 0);
    EXPECT_EQ(CommParms::GetDialTypeID("PULSE"), 1);
    EXPECT_EQ(CommParms::GetDialTypeID("ISDN"), 2);
    for (const char* strText : {"tone", "pulse", "Isdn", "PULSE ", "PULS", "", "1"}) {
        EXPECT_EQ(CommParms::GetDialTypeID(strText), 0) << strText;
    }
}

TEST(CommParms, FlowControlsAreKnownByTheirExactLabels) {
    EXPECT_EQ(CommParms::GetFlowControlID("Xon/Xoff"), 1);
    EXPECT_EQ(CommParms::GetFlowControlID("Hardware"), 2);
    EXPECT_EQ(CommParms::GetFlowControlID("None"), 0);
    for (const char* strText : {"hardware", "XON/XOFF", "Hardware ", "Xon", "", "2"}) {
        EXPECT_EQ(CommParms::GetFlowControlID(strText), 0) << strText;
    }
}

TEST(CommParms, FlowControlsHaveLabelsAndNoneIsTheRest) {
    EXPECT_EQ(CommParms::GetFlowControlStr(1), "Xon/Xoff");
    EXPECT_EQ(CommParms::GetFlowControlStr(2), "Hardware");
    for (const int16_t iId : Ids{0, -1, 3, 100}) {
        EXPECT_EQ(CommParms::GetFlowControlStr(iId), "None") << iId;
    }
}

} // namespace
} // namespace brennik
