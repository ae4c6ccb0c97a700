// The break-out of packets, and what can be built again from what was broken out.
#include "fuzz/Require.h"
#include "platform/RuntimeFailure.h"
#include "session/TBrennikPacket.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace brennik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string strPacket(reinterpret_cast<const char*>(data), size);
    TBrennikPacket packet;
    const BrennikPacketType type = packet.GetPacketType(strPacket);
    const int32_t lResult = packet.BreakOutPacket(strPacket);
    fuzz::Require(lResult == 0 || packet.lErrorCode() == 1000000 || packet.lErrorCode() == 1000022,
                  "a refusal has its code");
    fuzz::Require(packet.strFilename().size() + packet.strData().size() <= size,
                  "no field is longer than the packet");
    if (lResult == 0 && type == BrennikPacketType::OpenFile && packet.lFileSize() > 0) {
        std::string strBuilt;
        fuzz::Require(packet.BuildOpenFilePacket(strBuilt, packet.strFilename(),
                                                 packet.lFileType() == 0, packet.lFileSize(),
                                                 true) == 0,
                      "an open file packet can be built again");
        TBrennikPacket again;
        fuzz::Require(again.BreakOutPacket(strBuilt) == 0, "and broken out again");
        fuzz::Require(again.strFilename() == packet.strFilename() &&
                          again.lFileSize() == packet.lFileSize() &&
                          again.lFileType() == packet.lFileType(),
                      "with the same fields");
    }
    if (lResult == 0 && type == BrennikPacketType::WriteData) {
        std::string strBuilt;
        if (packet.BuildWriteDataToFilePacket(strBuilt, packet.strData(), packet.lDataOffset()) ==
            0) {
            TBrennikPacket again;
            fuzz::Require(again.BreakOutPacket(strBuilt) == 0 &&
                              again.strData() == packet.strData() &&
                              again.lDataOffset() == packet.lDataOffset(),
                          "write data survives a round trip");
        }
    }
    std::string strBuilt;
    static_cast<void>(packet.BuildConfigSysPacket(strBuilt, strPacket));
    static_cast<void>(packet.BuildSetDirectoryPacket(strBuilt, strPacket));
    try {
        fuzz::Require(packet.ExtractResumePosition(strPacket) >= 0, "no position is negative");
    } catch (const RuntimeFailure&) {
        // Malformed digits are the caller's.
    }
    return 0;
}
