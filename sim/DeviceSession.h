// What a device makes of the packets of one session: files in drives, groups and directories, which
// go to its store, and variables, which go to the file "config.sys" of the folder at hand.
// It knows no wire and no time; DeviceBehaviour drives it.
#pragma once

#include "sim/DeviceStore.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace brennik::sim {

/// What a device was told by the packets that it took.
struct DeviceCounts {
    int64_t lFiles = 0;     ///< files that a close packet ended; no drives and groups
    int64_t lDataBytes = 0; ///< bytes of files
    int64_t lVariables = 0;
    int64_t lOddOffsets = 0; ///< write data whose offset isn't what came of the file before
    int64_t lUnknown = 0;    ///< packets that mean nothing; they are taken all the same
};

class DeviceSession {
  public:
    enum class Result {
        Taken,
        Resume,    ///< the same, an open packet for a file that is there in part
        NotStored, ///< the store can't take it
        EndedWell,
        EndedBadly,
    };

    /// Files go to the store; without one they are taken and forgotten. An open packet for one of
    /// the names in resume is answered with the number of bytes that is there already; what comes
    /// then goes behind them. The map must outlive this.
    DeviceSession(std::shared_ptr<DeviceStore> store, const std::map<std::string, int64_t>& resume);
    ~DeviceSession();
    DeviceSession(const DeviceSession&) = delete;
    DeviceSession& operator=(const DeviceSession&) = delete;

    Result Take(std::string_view strPayload);

    /// After Resume: the number of bytes that are there.
    int64_t lResume() const { return lResume_; }
    const DeviceCounts& Counts() const { return counts_; }

    /// The folder of the next file, its parts between "/".
    std::string strFolder() const;

  private:
    Result TakeOpen(std::string_view strPayload);
    Result TakeWrite(std::string_view strPayload);
    Result TakeVariable(std::string_view strPayload);
    void CloseFile();
    bool bOddOffset(int64_t lOffset) const;

    std::shared_ptr<DeviceStore> store_;
    const std::map<std::string, int64_t>& resume_;
    std::string strDrive_ = "I";
    std::string strGroup_ = "1";
    std::string strDirectory_; ///< in the place of both, once one was set
    bool bFileOpen_ = false;
    int64_t lFileBytes_ = 0; ///< of this session
    int64_t lResume_ = 0;
    DeviceCounts counts_;
};

} // namespace brennik::sim
