#include "dialogs/OperatingModes.h"

#include "config/OperatingMode.h"

#include <array>

namespace brennik {

namespace {

// The slips in the texts are meant: users know them so.
constexpr std::array<OperatingMode, 4> kOperatingModes = {{
    {.strLabel = "Fernlatch Brennik Service Client (TCP/IP)",
     .strDescription = "Brennik client connects to Fernlatch Brennik Service over an IP connection "
                       "and pulls down any files that are ready for download",
     .bClientComms = false,
     .bClientFrame = true,
     .bInjectPublicKey = false,
     .bPassThruType = false,
     .bSerialServer = false,
     .lServerMode = 0,
     .lClientMode = std::nullopt},
    {.strLabel = "Verifone Device Brennik Service Client (Serial)",
     .strDescription = "Brennik client connects to verifone Device over a serial connection and "
                       "pulls down files from the Verifone device",
     .bClientComms = false,
     .bClientFrame = true,
     .bInjectPublicKey = false,
     .bPassThruType = false,
     .bSerialServer = true,
     .lServerMode = 1,
     .lClientMode = std::nullopt},
    {.strLabel = "Verifone Device to Fernlatch Brennik Service Pass-Thru",
     .strDescription = "Brennik client acts as a pass-thru middle man. Brennik client establishes "
                       "an iP connection to Fernlatch Brennik Service. Brennik client then creates "
                       "a serial connection to a Verifone device. The Verifone device acts as a "
                       "client to the Fernlatch Brennik Service",
     .bClientComms = true,
     .bClientFrame = true,
     .bInjectPublicKey = true,
     .bPassThruType = true,
     .bSerialServer = false,
     .lServerMode = 0,
     .lClientMode = 1},
    {.strLabel = "Verifone Device to Verifone Device Pass-Thru",
     .strDescription =
         "Brennik Client acts as a pass-thru middle man. Brennik client to "
         "establishes a serial connection to a Verifone device which acts as the "
         "server. Brennik client establishes a connection to a second verifone device "
         "which then acts as a client to the first Verifone device",
     .bClientComms = true,
     .bClientFrame = false,
     .bInjectPublicKey = true,
     .bPassThruType = false,
     .bSerialServer = true,
     .lServerMode = 1,
     .lClientMode = 1},
}};

constexpr std::array<const char*, 3> kPassThruTypes = {
    "Download files from the server to the device",
    "Upload files from the device to the server",
    "Force device to perform full download",
};

} // namespace

std::span<const OperatingMode> OperatingModes() {
    return kOperatingModes;
}

std::span<const char* const> PassThruTypes() {
    return kPassThruTypes;
}

int32_t PassThruTypeOf(int32_t lStored) {
    return lStored == kPassThruDownload || lStored == kPassThruForceFullDownload ? lStored
                                                                                 : kPassThruUpload;
}

bool UploadsFiles(int32_t lMode, int32_t lPassThruType) {
    return lMode == kModeSerialPassThru && lPassThruType == kPassThruUpload;
}

} // namespace brennik
