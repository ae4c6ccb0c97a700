// What the configuration window offers as operating modes and pass-through types: their texts, what
// each mode leaves to be edited, and what it saves for the two links.
// Plain tables without a far side and without a toolkit; tests use them as they are.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace brennik {

struct OperatingMode {
    const char* strLabel;
    const char* strDescription; ///< shown under the list
    bool bClientComms;          ///< cmdClientComms; cmdComms is there in every mode
    bool bClientFrame;          ///< the frame of the tab "Client"
    bool bInjectPublicKey;      ///< chkInjectPublicKey, until the pass-through type has its say
    bool bPassThruType;         ///< cboPassThruType
    bool bSerialServer;         ///< cmdComms sets up a serial line, otherwise the network
    int32_t lServerMode;        ///< as saved
    std::optional<int32_t> lClientMode; ///< as saved; without one it stays as it was
};

/// By the number of the mode, which is its position in the list too.
std::span<const OperatingMode> OperatingModes();

/// By the number of the type, which is its position in the list too.
std::span<const char* const> PassThruTypes();

/// The type as the window takes it: every number but those of download and force is an upload.
int32_t PassThruTypeOf(int32_t lStored);

/// Whether there is anything to upload: in the pass-through between a device and a service alone.
bool UploadsFiles(int32_t lMode, int32_t lPassThruType);

} // namespace brennik
