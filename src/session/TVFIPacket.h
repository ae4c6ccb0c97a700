// The first request of a device, one record of comma-separated fields: what it asks for, and the
// edits that put the profile's values into it before it goes on to the server. The counterpart of
// the request that the client itself builds. Without a state; its one trace is the file "vfi.txt"
// in the program's folder, which tests keep in memory.
#pragma once

#include <cstdint>
#include <string>

namespace brennik {

/// What a request is taken for.
enum class VfiPacketType : int32_t {
    Download = 0,     ///< keyword XDL
    Partial = 1,      ///< a partial download, whatever the keyword; also what can't be split
    Other = 2,        ///< any other keyword
    XcdlDownload = 3, ///< keyword XCDL, or XCDLF for the last application of a series
};

/// Nothing here reports a failure: what goes wrong leaves the packet as it was and the result at
/// its first value. An edit rebuilds the packet, which trims fields and quotes them anew; the
/// number of its fields never changes.
class TVFIPacket {
  public:
    /// True when "VFI" stands anywhere in the packet. The packet then replaces what "vfi.txt"
    /// holds, as one line. A file that can't be written is no failure; one that can't be closed is
    /// thrown to the caller, since this operation has no catch-all.
    bool IsVfiPacket(const std::string& strPacket);

    /// bLastOfSeries tells XCDLF from XCDL.
    VfiPacketType GetPacketType(const std::string& strPacket, bool& bLastOfSeries);

    /// True for an "f" in either case, unlike GetPacketType.
    bool IsFullDownload(const std::string& strPacket);

    /// Bytes of one block that the device asks for; 0 when it names no number.
    int32_t GetBlockSize(const std::string& strPacket);

    /// XCDLF becomes XCDL. Any other packet is rebuilt all the same.
    void SubstituteDownloadType(std::string& strPacket);

    void SubstituteTerminalId(const std::string& strTerminalId, std::string& strPacket);

    /// Fills titles that the device sent empty. A request without title fields gets none.
    void SubsituteRelConfigTitle(const std::string& strReleaseTitle,
                                 const std::string& strConfigTitle, std::string& strPacket);

    /// In downloads, and in partial ones if asked for; other requests stay untouched.
    void SubstituteApplicationId(const std::string& strApplicationID, std::string& strPacket,
                                 bool bSubstituteApplicationOnPartial);

    /// Empty when there is none.
    std::string GetPTid(const std::string& strPacket);
};

} // namespace brennik
