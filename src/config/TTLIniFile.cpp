#include "config/TTLIniFile.h"

#include "platform/Host.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/Failure.h"

#include <limits>

namespace brennik {

namespace {

constexpr int32_t kMostIntCount = std::numeric_limits<int16_t>::max();

} // namespace

// An empty folder becomes the root: it does not end in a backslash either.
std::string TTLIniFile::EnsureTrailingBackslash(std::string strFolder) {
    return WithTrailingBackslash(std::move(strFolder));
}

std::string TTLIniFile::IniFilePath() {
    strIniFileDir_ = EnsureTrailingBackslash(std::move(strIniFileDir_));
    return strIniFileDir_ + strIniFileName_;
}

std::string TTLIniFile::GetINIString(const std::string& section, const std::string& szItem,
                                     const std::string& szDefault, int32_t bufferSize) {
    return Guarded(
        [&] {
            if (bufferSize < 0) {
                throw RuntimeFailure(FailureKind::InvalidProcedureCall);
            }
            const std::string strPath = IniFilePath();
            std::string strValue = CurrentHost().profileStrings.GetPrivateProfileString(
                section, szItem, szDefault, bufferSize, strPath);
            // The length is kept in 16 bits.
            if (strValue.size() > static_cast<size_t>(kMostIntCount)) {
                throw RuntimeFailure(FailureKind::Overflow);
            }
            return strValue;
        },
        [](const std::string&) { return std::string(); });
}

int32_t TTLIniFile::SetINIString(const std::string& section, const std::string& stItem,
                                 const std::string& stNewValue) {
    return Guarded(
        [&] {
            const std::string strPath = IniFilePath();
            return CurrentHost().profileStrings.WritePrivateProfileString(section, stItem,
                                                                          stNewValue, strPath);
        },
        [](const std::string&) { return int32_t{0}; });
}

int16_t TTLIniFile::FillSingleLineValues(std::vector<std::string>& strLineValues,
                                         const std::string& strLine, int16_t iSeperator) {
    int32_t lCount = 0;
    std::string strAccumulator;
    const auto store = [&] {
        if (strAccumulator.empty()) {
            return;
        }
        if (lCount == kMostIntCount) {
            throw RuntimeFailure(FailureKind::Overflow);
        }
        // One empty element stands behind the last value, and it is meant so.
        strLineValues.resize(static_cast<size_t>(lCount));
        strLineValues.push_back(std::move(strAccumulator));
        strLineValues.emplace_back();
        strAccumulator.clear();
        ++lCount;
    };
    return Guarded(
        [&] {
            for (const char c : strLine) {
                if (static_cast<unsigned char>(c) == iSeperator) {
                    store();
                } else {
                    strAccumulator += c;
                }
            }
            store();
            return static_cast<int16_t>(lCount);
        },
        [](const std::string&) { return int16_t{-1}; });
}

int32_t TTLIniFile::FillBoxWithLineValues(ListControl& oBox, const std::string& strLineValue,
                                          int16_t iSeperator) {
    return Guarded(
        [&] {
            std::vector<std::string> strLineValues;
            const int32_t lCount = FillSingleLineValues(strLineValues, strLineValue, iSeperator);
            if (lCount > 0) {
                oBox.Clear();
            }
            for (size_t nIndex = 0; std::cmp_less(nIndex, lCount); ++nIndex) {
                oBox.AddItem(strLineValues[nIndex]);
            }
            return lCount;
        },
        [](const std::string&) { return int32_t{0}; });
}

int32_t TTLIniFile::FillBoxWithMultiLineValues(ListControl& oBox, const std::string& strSection,
                                               int32_t lNumLines) {
    return Guarded(
        [&] {
            int32_t lCount = 0;
            for (int64_t lLine = 1; lLine <= lNumLines; ++lLine) {
                const std::string strValue =
                    GetINIString(strSection, ToDecimal(lLine), "", kIniBufferSize);
                if (!strValue.empty()) {
                    oBox.AddItem(strValue);
                    ++lCount;
                }
            }
            return lCount;
        },
        [](const std::string&) { return int32_t{0}; });
}

} // namespace brennik
