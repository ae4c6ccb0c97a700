// Where a measurement keeps its files: a folder of its own, gone at the end, on a file system in
// memory where there is one with room, so that no disk is measured. Received files, logs and the
// profiles of the client stand in it.
#pragma once

#include "bench/Frames.h"
#include "config/ProfileKeys.h"

#include <cstdint>
#include <string>

namespace brennik::bench {

class Workplace {
  public:
    /// Makes a new folder in strParent.
    explicit Workplace(const std::string& strParent);
    ~Workplace();
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    const std::string& Folder() const { return strFolder_; }
    const std::string& Received() const { return strReceived_; }
    const std::string& Log() const { return strLog_; }

    /// Empties the folder of received files and removes the log. Done before a run, so that no run
    /// pays for what the one before left.
    void Clear();

    /// Ends the measurement unless just the files of the job stand in the folder of received
    /// files, each with its size. bContent compares every byte as well.
    void Verify(const Job& job, bool bContent) const;

    /// A profile of a client session that fetches from 127.0.0.1 into this place.
    ProfileValues Profile(uint16_t iPort, size_t nBlock, bool bLogAll) const;

    /// Writes the configuration file: lProfiles times every key of the profile, the number of the
    /// profile behind its name.
    void WriteProfiles(const ProfileValues& profile, int32_t lProfiles) const;

  private:
    std::string strFolder_;
    std::string strReceived_;
    std::string strLog_;
};

} // namespace brennik::bench
