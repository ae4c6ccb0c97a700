#include "tests/world/SimProfileStrings.h"

namespace brennik::world {

std::string SimProfileStrings::GetPrivateProfileString(const std::string& strSection,
                                                       const std::string& strKey,
                                                       const std::string& strDefault,
                                                       int32_t lBufferSize,
                                                       const std::string& strPath) {
    const Fault* fault = ledger_.Enter(Op::ReadProfileString);
    if (ledger_.Recording()) {
        ledger_.Record("ReadProfileString " + strSection + " " + strKey);
    }
    if (lBufferSize < 1) {
        return {};
    }
    std::string strValue = strDefault;
    if (fault == nullptr) {
        if (auto strContent = files_.ReadWhole(strPath)) {
            if (!index_ || index_->Content() != *strContent) {
                index_.emplace(std::move(*strContent));
            }
            strValue = index_->Find(strSection, strKey).value_or(strDefault);
        }
    }
    const auto nRoom = static_cast<size_t>(lBufferSize - 1);
    if (strValue.size() > nRoom) {
        strValue.resize(nRoom);
    }
    return strValue;
}

int32_t SimProfileStrings::WritePrivateProfileString(const std::string& strSection,
                                                     const std::string& strKey,
                                                     const std::string& strValue,
                                                     const std::string& strPath) {
    const Fault* fault = ledger_.Enter(Op::WriteProfileString);
    if (ledger_.Recording()) {
        ledger_.Record("WriteProfileString " + strSection + " " + strKey + " " + strValue);
    }
    writes.push_back(ProfileWrite{strSection, strKey, strValue, strPath, false});
    if (fault != nullptr || !CanStandOnOneLine(strSection) || !CanStandOnOneLine(strKey) ||
        !CanStandOnOneLine(strValue)) {
        return 0;
    }
    const auto strOld = files_.ReadWhole(strPath);
    const std::string strNew = WithIniValue(strOld.value_or(""), strSection, strKey, strValue);
    try {
        if (!strOld || *strOld != strNew) {
            files_.ReplaceWhole(strPath, strNew);
        }
    } catch (const RuntimeFailure&) {
        return 0;
    }
    writes.back().bSucceeded = true;
    return 1;
}

} // namespace brennik::world
