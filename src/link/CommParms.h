// The vocabulary of the serial settings: which values a port, parity, data bits, stop bits, baud
// rate and flow control may have, how they show in a list, and what their labels mean in a profile.
// Pure tables without a far side. The numbering is that of the profile, not that of
// TConnectionInfo. Nothing here fails: a number that can't be read from a text counts as 0.
#pragma once

#include "support/ListControl.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik::CommParms {

bool IsValidDataBits(int16_t iDataBits);
bool IsValidStopbit(double dStopBit);
bool IsValidBaudRate(int32_t lBaudRate);
bool IsValidFlowControlID(int16_t iFlowControlId);

/// Clears the list and adds LPT1 and LPT2, unless bComPortsOnly, and COM1 to COM256.
void FillBoxWithPorts(ListControl& oBox, bool bComPortsOnly);

/// These five add their labels to what the list holds already.
void FillBoxWithParity(ListControl& oBox);
void FillBoxWithDatabits(ListControl& oBox);
void FillBoxWithBaudRates(ListControl& oBox);
void FillBoxWithStopBits(ListControl& oBox);
void FillBoxWithDialTypes(ListControl& oBox);

/// Clears the list first.
void FillBoxWithFlowControlTypes(ListControl& oBox);

/// The text itself when it names a port that there may be, otherwise an empty one. Only what
/// stands behind the first three letters is looked at.
std::string GetCommPortStr(const std::string& strPort);

/// The number behind the first three letters; 1 for a text that is too short to have one.
int16_t GetCommPortID(std::string_view strPort);

/// The full label for a text that begins with its first letter, in either case; otherwise empty.
std::string GetParityStr(std::string_view strParity);

/// Empty for an id that there isn't.
std::string GetDialTypeStr(int16_t iDialTypeId);

/// Labels are compared with regard to case; 0 for any other text.
int16_t GetDialTypeID(std::string_view strDialType);
int16_t GetFlowControlID(std::string_view strFlowControl);

/// "None" for an id that there isn't.
std::string GetFlowControlStr(int16_t iFlowControlId);

} // namespace brennik::CommParms
