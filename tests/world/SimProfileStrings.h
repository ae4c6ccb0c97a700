// The profile strings of the simulated host: the rules of INI text over the files in memory.
// It stands in the place of LinuxProfileStrings; both share platform/IniText.h.
#pragma once

#include "platform/IniText.h"
#include "platform/ProfileStrings.h"
#include "tests/world/SimFiles.h"

#include <optional>
#include <string>
#include <vector>

namespace brennik::world {

struct ProfileWrite {
    std::string strSection;
    std::string strKey;
    std::string strValue;
    std::string strPath; ///< as it was given
    bool bSucceeded = false;

    bool operator==(const ProfileWrite&) const = default;
};

class SimProfileStrings : public ProfileStrings {
  public:
    SimProfileStrings(CallLedger& ledger, SimFiles& files) : ledger_(ledger), files_(files) {}

    std::string GetPrivateProfileString(const std::string& strSection, const std::string& strKey,
                                        const std::string& strDefault, int32_t lBufferSize,
                                        const std::string& strPath) override;
    int32_t WritePrivateProfileString(const std::string& strSection, const std::string& strKey,
                                      const std::string& strValue,
                                      const std::string& strPath) override;

    /// Every write asked for, in order, failed ones too.
    std::vector<ProfileWrite> writes;

  private:
    CallLedger& ledger_;
    SimFiles& files_;
    std::optional<IniIndex> index_; // of the text read last
};

} // namespace brennik::world
