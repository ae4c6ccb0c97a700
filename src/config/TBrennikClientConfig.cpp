#include "config/TBrennikClientConfig.h"

#include "config/TTLIniFile.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/CSVRecord.h"
#include "support/OstrandString.h"

#include <algorithm>
#include <limits>

namespace brennik {

namespace {

constexpr const char* kConfigFileName = "BrennikClient.ini";

/// More profiles than any file holds, few enough for a list in memory. A greater count is a list
/// that memory can't hold, and is told so before a single name is read.
constexpr int32_t kMostProfiles = 100000;

/// The file as each operation opens it, for that operation alone.
TTLIniFile OpenConfigFile(const std::string& strConfigFileLoc) {
    TTLIniFile oIniFile;
    oIniFile.strIniFileDir(strConfigFileLoc);
    oIniFile.strIniFileName(kConfigFileName);
    return oIniFile;
}

std::string Read(TTLIniFile& oIniFile, const std::string& strSection, const std::string& strKey) {
    return oIniFile.GetINIString(strSection, strKey, "", kIniBufferSize);
}

/// Nobody looks at the outcome of a write: settings that can't be kept are lost without a word.
void Write(TTLIniFile& oIniFile, const std::string& strSection, const std::string& strKey,
           const std::string& strValue) {
    static_cast<void>(oIniFile.SetINIString(strSection, strKey, strValue));
}

std::string ProfileSection(int32_t lProfileId) {
    return "PROFILE_" + ToDecimal(lProfileId);
}

int32_t ReadProfileCount(TTLIniFile& oIniFile) {
    return OstrandString::StrToLong(Read(oIniFile, "GENERAL", "Profilecount"));
}

/// One value of one profile, straight into the file, failing quietly.
void SetForProfile(const std::string& strConfigFileLoc, int32_t lProfileId, const char* strKey,
                   const std::string& strValue) {
    Quietly([&] {
        TTLIniFile oIniFile = OpenConfigFile(strConfigFileLoc);
        Write(oIniFile, ProfileSection(lProfileId), strKey, strValue);
    });
}

/// Makes room for an index and nothing beyond it, keeping what stands below.
template <class Element>
Element& ResizeToIndex(std::vector<Element>& elements, size_t nIndex) {
    elements.resize(nIndex + 1);
    return elements[nIndex];
}

std::vector<std::string> BreakOutOrThrow(const std::string& strRecord, int16_t& iNoOfFields) {
    CSVRecord oRecord;
    std::vector<std::string> strFields;
    if (oRecord.BreakOutFields(strFields, iNoOfFields, strRecord) != 0) {
        throw RuntimeFailure(FailureKind::SubscriptOutOfRange);
    }
    return strFields;
}

/// Splits an inner list of a platform. Names keep their positions and blank ones aren't counted,
/// so that behind a blank the count falls short of the last name: the dialog shows it that way.
void BreakOutNames(std::string strList, std::vector<std::string>& strNames, int32_t& lCount) {
    std::ranges::replace(strList, ':', ',');
    int16_t iNoOfTokens = 0;
    const std::vector<std::string> strTokens = BreakOutOrThrow(strList, iNoOfTokens);
    for (size_t nToken = 0; nToken < static_cast<size_t>(iNoOfTokens); ++nToken) {
        if (!Trim(strTokens[nToken]).empty()) {
            ResizeToIndex(strNames, nToken) = strTokens[nToken];
            ++lCount;
        }
    }
}

std::string NameAt(const std::vector<std::string>& strNames, int32_t lIndex) {
    const auto nIndex = static_cast<size_t>(lIndex);
    return lIndex >= 0 && nIndex < strNames.size() ? strNames[nIndex] : std::string();
}

} // namespace

int32_t TBrennikClientConfig::ReadApplications(const std::string& strConfigFileLoc,
                                               std::vector<std::string>& strApplications,
                                               int32_t& lNoApplications) {
    return GuardedWithCode(
        error_, "TBrennikClientConfig.ReadApplications() Failed - ", int32_t{1}, [&] {
            TTLIniFile oIniFile = OpenConfigFile(strConfigFileLoc);
            lNoApplications = 0;
            for (;;) {
                std::string strApplication =
                    Read(oIniFile, "APPLICATION", ToDecimal(lNoApplications + 1));
                if (strApplication.empty()) {
                    return 0;
                }
                ResizeToIndex(strApplications, static_cast<size_t>(lNoApplications)) =
                    std::move(strApplication);
                ++lNoApplications;
            }
        });
}

int32_t TBrennikClientConfig::GetProfileNamesAndCount(const std::string& strConfigFileLoc,
                                                      std::vector<std::string>& strProfileNames,
                                                      int32_t& lProfileCount) {
    return GuardedWithCode(error_, "TBrennikClientConfig.GetProfileNamesAndCount() Failed - ",
                           int32_t{1}, [&] {
                               lProfileCount = 0;
                               strProfileNames.clear();
                               TTLIniFile oIniFile = OpenConfigFile(strConfigFileLoc);
                               const int32_t lCount = ReadProfileCount(oIniFile);
                               if (lCount < 0) {
                                   throw RuntimeFailure(FailureKind::SubscriptOutOfRange);
                               }
                               if (lCount > kMostProfiles) {
                                   throw RuntimeFailure(FailureKind::OutOfMemory);
                               }
                               strProfileNames.resize(static_cast<size_t>(lCount));
                               lProfileCount = lCount;
                               for (int32_t lProfileId = 1; lProfileId <= lCount; ++lProfileId) {
                                   strProfileNames[static_cast<size_t>(lProfileId - 1)] =
                                       Read(oIniFile, ProfileSection(lProfileId), "ProfileName");
                               }
                               return 0;
                           });
}

int32_t TBrennikClientConfig::GetConfiguration(const std::string& strConfigFileLoc,
                                               int32_t lProfileId) {
    return GuardedWithCode(error_, "TBrennikClientConfig.GetConfiguration() Failed - ", int32_t{1},
                           [&] {
                               TTLIniFile oIniFile = OpenConfigFile(strConfigFileLoc);
                               const std::string strSection = ProfileSection(lProfileId);
                               for (const ProfileKey& key : ProfileKeys()) {
                                   key.ReadInto(profile_, Read(oIniFile, strSection, key.strKey));
                               }
                               return 0;
                           });
}

void TBrennikClientConfig::SetBaudRateForProfile(const std::string& strConfigFileLoc,
                                                 int32_t lProfileId, int32_t lBaudRate) {
    SetForProfile(strConfigFileLoc, lProfileId, "ClientBaudRate", ToDecimal(lBaudRate));
}

void TBrennikClientConfig::SetComPortForProfile(const std::string& strConfigFileLoc,
                                                int32_t lProfileId, int32_t lComPort) {
    for (const char* strKey : {"ClientComPort", "ServerComPort"}) {
        SetForProfile(strConfigFileLoc, lProfileId, strKey, ToDecimal(lComPort));
    }
}

void TBrennikClientConfig::SetBrennikTerminalIdForProfile(const std::string& strConfigFileLoc,
                                                          int32_t lProfileId,
                                                          const std::string& strBrennikTermId) {
    SetForProfile(strConfigFileLoc, lProfileId, "TerminalID", strBrennikTermId);
}

void TBrennikClientConfig::SetApplicationForProfile(const std::string& strConfigFileLoc,
                                                    int32_t lProfileId,
                                                    const std::string& strApplication) {
    SetForProfile(strConfigFileLoc, lProfileId, "ApplicationID", strApplication);
}

void TBrennikClientConfig::GetPlatforms(const std::string& strConfigFileLoc) {
    Quietly([&] {
        TTLIniFile oIniFile = OpenConfigFile(strConfigFileLoc);
        for (int64_t lNumber = 1;; ++lNumber) {
            const std::string strLine = Trim(Read(oIniFile, "PLATFORMS", ToDecimal(lNumber)));
            if (strLine.empty()) {
                return;
            }
            AddPlatform(strLine);
        }
    });
}

// A line that can't be taken apart ends here, uncounted; the next one takes over its place in the
// array, with what the failed one left there.
void TBrennikClientConfig::AddPlatform(const std::string& strLine) {
    Quietly([&] {
        PlatformRecord& platform = ResizeToIndex(platforms_, static_cast<size_t>(lPlatformCount_));
        platform.lEpromCount = 0;
        platform.lApplicationCount = 0;
        int16_t iNoOfFields = 0;
        // One empty field follows the last, so a line of two fields fails in its third.
        const std::vector<std::string> strFields = BreakOutOrThrow(strLine, iNoOfFields);
        platform.strName = strFields.at(0);
        BreakOutNames(strFields.at(1), platform.strEproms, platform.lEpromCount);
        BreakOutNames(strFields.at(2), platform.strApplications, platform.lApplicationCount);
        ++lPlatformCount_;
    });
}

int32_t TBrennikClientConfig::SaveConfiguration(const std::string& strConfigFileLoc,
                                                int32_t lProfileId, bool bNewProfile) {
    return GuardedWithCode(
        error_, "TBrennikClientConfig.SaveConfiguration() Failed - ", int32_t{1}, [&] {
            TTLIniFile oIniFile = OpenConfigFile(strConfigFileLoc);
            int32_t lNumber = lProfileId;
            if (bNewProfile) {
                const int32_t lCount = ReadProfileCount(oIniFile);
                if (lCount == std::numeric_limits<int32_t>::max()) {
                    throw RuntimeFailure(FailureKind::Overflow);
                }
                lNumber = lCount + 1;
            }
            const std::string strSection = ProfileSection(lNumber);
            for (const ProfileKey& key : ProfileKeys()) {
                if (key.TextFrom != nullptr) {
                    Write(oIniFile, strSection, key.strKey, key.TextFrom(profile_));
                }
            }
            // Last of all, so that an interrupted save leaves the count alone.
            if (bNewProfile) {
                Write(oIniFile, "GENERAL", "Profilecount", ToDecimal(lNumber));
            }
            return 0;
        });
}

const PlatformRecord* TBrennikClientConfig::FindPlatform(int32_t lPlatformIndex) const {
    if (lPlatformIndex < 0 || lPlatformIndex >= lPlatformCount_) {
        return nullptr;
    }
    return &platforms_[static_cast<size_t>(lPlatformIndex)];
}

std::string TBrennikClientConfig::GetPlatFormName(int32_t lPlatformIndex) const {
    const PlatformRecord* platform = FindPlatform(lPlatformIndex);
    return platform == nullptr ? std::string() : platform->strName;
}

int32_t TBrennikClientConfig::GetEpromCount(int32_t lPlatformIndex) const {
    const PlatformRecord* platform = FindPlatform(lPlatformIndex);
    return platform == nullptr ? 0 : platform->lEpromCount;
}

int32_t TBrennikClientConfig::GetApplicationCount(int32_t lPlatformIndex) const {
    const PlatformRecord* platform = FindPlatform(lPlatformIndex);
    return platform == nullptr ? 0 : platform->lApplicationCount;
}

std::string TBrennikClientConfig::GetEpromName(int32_t lPlatformIndex, int32_t lEpromIndex) const {
    const PlatformRecord* platform = FindPlatform(lPlatformIndex);
    return platform == nullptr ? std::string() : NameAt(platform->strEproms, lEpromIndex);
}

std::string TBrennikClientConfig::GetApplicationName(int32_t lPlatformIndex,
                                                     int32_t lApplicationIndex) const {
    const PlatformRecord* platform = FindPlatform(lPlatformIndex);
    return platform == nullptr ? std::string()
                               : NameAt(platform->strApplications, lApplicationIndex);
}

void TBrennikClientConfig::AddUploadFileType(int32_t lFileType) {
    if (lFileType == 0) {
        profile_.lUploadFileType = 0;
    } else if (lFileType == 1 || lFileType == 2) {
        profile_.lUploadFileType |= lFileType;
    }
}

} // namespace brennik
