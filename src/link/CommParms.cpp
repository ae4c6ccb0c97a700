#include "link/CommParms.h"

#include "support/AsciiText.h"
#include "support/OstrandString.h"

#include <algorithm>
#include <array>

namespace brennik::CommParms {
namespace {

constexpr std::array<std::string_view, 5> kParities{"EVEN", "ODD", "NONE", "SPACE", "MARK"};
constexpr std::array<std::string_view, 4> kDatabits{"5", "6", "7", "8"};
constexpr std::array<std::string_view, 3> kStopBits{"1", "1.5", "2"};
constexpr std::array<int32_t, 10> kBaudRates{110,  300,   1200,  2400,  4800,
                                             9600, 19200, 38400, 57600, 115200};

struct Type {
    int16_t iId;
    std::string_view strLabel;
};

constexpr std::array<Type, 3> kDialTypes{{{0, "TONE"}, {1, "PULSE"}, {2, "ISDN"}}};
constexpr std::array<Type, 3> kFlowControls{{{1, "Xon/Xoff"}, {2, "Hardware"}, {0, "None"}}};

constexpr int32_t kPorts = 256;
constexpr size_t kPortLetters = 3; // of "COM" and "LPT"

/// What shows for an id, or the other text.
std::string LabelOf(const std::array<Type, 3>& types, int16_t iId, std::string_view strOther) {
    const auto found =
        std::find_if(types.begin(), types.end(), [&](const Type& type) { return type.iId == iId; });
    return std::string(found == types.end() ? strOther : found->strLabel);
}

/// The id of a label; 0 for any other text.
int16_t IdOf(const std::array<Type, 3>& types, std::string_view strLabel) {
    const auto found = std::find_if(types.begin(), types.end(),
                                    [&](const Type& type) { return type.strLabel == strLabel; });
    return found == types.end() ? int16_t{0} : found->iId;
}

void AddLabels(ListControl& oBox, const auto& labels) {
    for (const std::string_view strLabel : labels) {
        oBox.AddItem(std::string(strLabel));
    }
}

void AddTypes(ListControl& oBox, const std::array<Type, 3>& types) {
    for (const Type& type : types) {
        oBox.AddItem(std::string(type.strLabel));
    }
}

} // namespace

bool IsValidDataBits(int16_t iDataBits) {
    return iDataBits >= 5 && iDataBits <= 8;
}

bool IsValidStopbit(double dStopBit) {
    return dStopBit == 1.0 || dStopBit == 1.5 || dStopBit == 2.0;
}

bool IsValidBaudRate(int32_t lBaudRate) {
    return std::find(kBaudRates.begin(), kBaudRates.end(), lBaudRate) != kBaudRates.end();
}

bool IsValidFlowControlID(int16_t iFlowControlId) {
    return iFlowControlId >= 0 && iFlowControlId <= 2;
}

void FillBoxWithPorts(ListControl& oBox, bool bComPortsOnly) {
    oBox.Clear();
    if (!bComPortsOnly) {
        oBox.AddItem("LPT1");
        oBox.AddItem("LPT2");
    }
    for (int32_t lPort = 1; lPort <= kPorts; ++lPort) {
        oBox.AddItem("COM" + ToDecimal(lPort));
    }
}

void FillBoxWithParity(ListControl& oBox) {
    AddLabels(oBox, kParities);
}

void FillBoxWithDatabits(ListControl& oBox) {
    AddLabels(oBox, kDatabits);
}

void FillBoxWithBaudRates(ListControl& oBox) {
    for (const int32_t lBaudRate : kBaudRates) {
        oBox.AddItem(ToDecimal(lBaudRate));
    }
}

void FillBoxWithStopBits(ListControl& oBox) {
    AddLabels(oBox, kStopBits);
}

void FillBoxWithDialTypes(ListControl& oBox) {
    AddTypes(oBox, kDialTypes);
}

void FillBoxWithFlowControlTypes(ListControl& oBox) {
    oBox.Clear();
    AddTypes(oBox, kFlowControls);
}

std::string GetCommPortStr(const std::string& strPort) {
    if (strPort.size() <= kPortLetters) {
        return {};
    }
    const int32_t lPort = OstrandString::StrToLong(std::string_view(strPort).substr(kPortLetters));
    const bool bPort = lPort >= 1 && lPort <= kPorts; // LPT1 and LPT2 are among these
    return bPort ? strPort : std::string();
}

int16_t GetCommPortID(std::string_view strPort) {
    return strPort.size() <= kPortLetters ? int16_t{1}
                                          : OstrandString::StrToInt(strPort.substr(kPortLetters));
}

std::string GetParityStr(std::string_view strParity) {
    const std::string strFirst = UpperCase(strParity.substr(0, 1));
    for (const std::string_view strLabel : kParities) {
        if (strLabel.substr(0, 1) == strFirst) {
            return std::string(strLabel);
        }
    }
    return {};
}

std::string GetDialTypeStr(int16_t iDialTypeId) {
    return LabelOf(kDialTypes, iDialTypeId, "");
}

int16_t GetDialTypeID(std::string_view strDialType) {
    return IdOf(kDialTypes, strDialType);
}

int16_t GetFlowControlID(std::string_view strFlowControl) {
    return IdOf(kFlowControls, strFlowControl);
}

std::string GetFlowControlStr(int16_t iFlowControlId) {
    return LabelOf(kFlowControls, iFlowControlId, "None");
}

} // namespace brennik::CommParms
