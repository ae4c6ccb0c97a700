#include "sim/Codec.h"

#include <array>
#include <charconv>

namespace brennik::sim {

namespace {

uint8_t Byte(char c) {
    return static_cast<uint8_t>(c);
}

void AppendBigEndian(std::string& strOut, uint32_t value, int nBytes) {
    for (int n = nBytes - 1; n >= 0; --n) {
        strOut.push_back(static_cast<char>(value >> (8 * n) & 0xFFU));
    }
}

std::string Digits(int64_t value, size_t nWidth, int base) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, base).ptr;
    std::string strDigits(digits.data(), end);
    for (char& c : strDigits) {
        if (c >= 'a' && c <= 'f') {
            c = static_cast<char>(c - 'a' + 'A');
        }
    }
    if (strDigits.size() < nWidth) {
        strDigits.insert(0, nWidth - strDigits.size(), '0');
    }
    return strDigits;
}

std::string DateDigits(const DateTime& time) {
    return Digits(time.iYear, 4, 10) + Digits(time.iMonth, 2, 10) + Digits(time.iDay, 2, 10) +
           Digits(time.iHour, 2, 10) + Digits(time.iMinute, 2, 10) + Digits(time.iSecond, 2, 10);
}

constexpr size_t kCheckSize = 2;
constexpr size_t kOpenHeader = 40; ///< of an open packet, ahead of the name

} // namespace

std::string BuildFrame(std::string_view strPayload) {
    std::string strFrame;
    strFrame.reserve(strPayload.size() + 4);
    strFrame.push_back(kStx);
    strFrame.append(strPayload);
    if (strPayload.empty() || strPayload.front() != 'W') {
        strFrame.push_back(kEtx);
    }
    AppendBigEndian(strFrame, BlockCheck(std::string_view(strFrame).substr(1)), 2);
    return strFrame;
}

char* StartWriteFrame(std::string& strFrame, uint32_t lOffset, size_t nData) {
    strFrame.resize(1 + kWriteHeader + nData + kCheckSize);
    char* p = strFrame.data();
    p[0] = kStx;
    p[1] = 'W';
    p[2] = static_cast<char>(nData >> 8 & 0xFFU);
    p[3] = static_cast<char>(nData & 0xFFU);
    p[4] = static_cast<char>(lOffset >> 24 & 0xFFU);
    p[5] = static_cast<char>(lOffset >> 16 & 0xFFU);
    p[6] = static_cast<char>(lOffset >> 8 & 0xFFU);
    p[7] = static_cast<char>(lOffset & 0xFFU);
    return p + 1 + kWriteHeader;
}

void FinishWriteFrame(std::string& strFrame) noexcept {
    const size_t nEnd = strFrame.size() - kCheckSize;
    const uint16_t check = BlockCheck(std::string_view(strFrame).substr(1, nEnd - 1));
    strFrame[nEnd] = static_cast<char>(check >> 8);
    strFrame[nEnd + 1] = static_cast<char>(check & 0xFFU);
}

char LongitudinalCheck(std::string_view strBytes) noexcept {
    unsigned check = 0;
    for (const char c : strBytes) {
        check ^= Byte(c);
    }
    return static_cast<char>(check);
}

std::string BuildManagementFrame(std::string_view strPayload) {
    std::string strFrame(1, kStx);
    strFrame += strPayload;
    strFrame.push_back(kEtx);
    strFrame.push_back(LongitudinalCheck(std::string_view(strFrame).substr(1)));
    return strFrame;
}

bool HasManagementForm(std::string_view strPayload) noexcept {
    for (const char last : {'.', ','}) {
        size_t nDigits = 0;
        while (nDigits < strPayload.size() && strPayload[nDigits] >= '0' &&
               strPayload[nDigits] <= '9') {
            ++nDigits;
        }
        if (nDigits == 0 || nDigits == strPayload.size() || strPayload[nDigits] != last) {
            return false;
        }
        strPayload.remove_prefix(nDigits + 1);
    }
    return true;
}

std::string ResumeReply(int64_t lBytes) {
    std::string strReply(1, kStx);
    strReply.push_back('R');
    strReply += Digits(lBytes, 1, 16);
    strReply.push_back(kEtx);
    return strReply;
}

FrameReader::Result FrameReader::Add(std::string_view strBytes) {
    // A peer that never ends its frame must not fill our memory.
    constexpr size_t kLongestFrame = size_t{1} << 20;
    if (strBuffer_.empty()) {
        const size_t nStart = strBytes.find(kStx);
        if (nStart == std::string_view::npos) {
            return Result::Incomplete;
        }
        strBytes.remove_prefix(nStart);
        nSearched_ = 1;
    }
    strBuffer_.append(strBytes.substr(0, kLongestFrame - strBuffer_.size()));
    if (strBuffer_.size() >= 2 && strBuffer_[1] == 'W') {
        if (strBuffer_.size() < 4) {
            return Result::Incomplete;
        }
        const size_t nData = size_t{Byte(strBuffer_[2])} << 8 | Byte(strBuffer_[3]);
        return Finish(kWriteHeader + nData, kWriteHeader + nData);
    }
    const size_t nEnd = strBuffer_.find(kEtx, nSearched_);
    if (nEnd == std::string::npos) {
        nSearched_ = strBuffer_.size();
        return Result::Incomplete;
    }
    nSearched_ = nEnd;
    return Finish(nEnd, nEnd - 1);
}

FrameReader::Result FrameReader::Finish(size_t nCovered, size_t nPayload) {
    const size_t nCheck = 1 + nCovered;
    if (strBuffer_.size() < nCheck + kCheckSize) {
        return Result::Incomplete;
    }
    const std::string_view strFrame = strBuffer_;
    const auto check =
        static_cast<uint16_t>(Byte(strFrame[nCheck]) << 8 | Byte(strFrame[nCheck + 1]));
    const bool bGood = BlockCheck(strFrame.substr(1, nCovered)) == check;
    strPayload_.assign(strFrame.substr(1, nPayload));
    strBuffer_.clear();
    return bGood ? Result::Good : Result::WrongCheck;
}

std::string OpenPacket(char letter, std::string_view strName, int64_t lSize,
                       const DateTime& modified, bool bCode) {
    std::string strPacket;
    strPacket.push_back(letter);
    strPacket.push_back(bCode ? 'C' : 'D');
    strPacket += Digits(lSize & 0xFFFFFFFF, 8, 16);
    strPacket += "00000000";
    strPacket += DateDigits(modified);
    strPacket += "XXXXXXXX";
    strPacket += strName;
    return strPacket;
}

std::string WritePacket(uint32_t lOffset, std::string_view strData) {
    std::string strPacket = "W";
    AppendBigEndian(strPacket, static_cast<uint32_t>(strData.size()), 2);
    AppendBigEndian(strPacket, lOffset, 4);
    strPacket += strData;
    return strPacket;
}

std::string ClosePacket() {
    return "C";
}

std::string VariablePacket(std::string_view strLine) {
    std::string strPacket = "L";
    strPacket += strLine;
    if (const size_t nEquals = strPacket.find('='); nEquals != std::string::npos) {
        strPacket[nEquals] = kSeparator;
    }
    return strPacket;
}

std::string MessagePacket(std::string_view strText) {
    return "M" + std::string(strText);
}

std::string PasswordPacket(std::string_view strPassword) {
    return "P" + std::string(strPassword);
}

std::string TimePacket(const DateTime& time) {
    return "T" + DateDigits(time);
}

std::string SuccessPacket() {
    return "S";
}

std::string FailurePacket() {
    return "U";
}

std::string DirectoryPacket(std::string_view strName) {
    std::string strPacket = "D";
    strPacket.push_back(static_cast<char>(strName.size()));
    strPacket += strName;
    return strPacket;
}

std::optional<OpenedFile> ReadOpenPacket(std::string_view strPacket) {
    if (strPacket.size() < kOpenHeader) {
        return std::nullopt;
    }
    return OpenedFile{strPacket[0] == 'A' || strPacket[0] == 'a',
                      std::string(strPacket.substr(kOpenHeader))};
}

uint32_t ReadWriteOffset(std::string_view strPacket) noexcept {
    uint32_t lOffset = 0;
    for (const char c : strPacket.substr(3, 4)) {
        lOffset = lOffset << 8 | Byte(c);
    }
    return lOffset;
}

std::string ReadVariablePacket(std::string_view strPacket) {
    std::string strLine(strPacket.substr(1));
    for (char& c : strLine) {
        c = c == kSeparator ? '=' : c;
    }
    return strLine;
}

std::string JoinRecord(const std::vector<std::string>& fields) {
    std::string strRecord;
    for (const std::string& strField : fields) {
        if (&strField != &fields.front()) {
            strRecord.push_back(',');
        }
        const bool bQuoted = strField.find(',') != std::string::npos || strField.starts_with('"');
        if (!bQuoted) {
            strRecord += strField;
            continue;
        }
        strRecord.push_back('"');
        for (const char c : strField) {
            strRecord.append(c == '"' ? 2 : 1, c);
        }
        strRecord.push_back('"');
    }
    return strRecord;
}

std::vector<std::string> SplitRecord(std::string_view strRecord) {
    std::vector<std::string> fields(1);
    bool bQuoted = false;
    for (size_t n = 0; n < strRecord.size(); ++n) {
        const char c = strRecord[n];
        std::string& strField = fields.back();
        const bool bFirst = n == 0 || (strRecord[n - 1] == ',' && strField.empty());
        if (bQuoted) {
            if (c != '"') {
                strField.push_back(c);
            } else if (n + 1 < strRecord.size() && strRecord[n + 1] == '"') {
                strField.push_back('"');
                ++n;
            } else {
                bQuoted = false;
            }
        } else if (c == '"' && bFirst) {
            bQuoted = true;
        } else if (c == ',') {
            fields.emplace_back();
        } else {
            strField.push_back(c);
        }
    }
    return fields;
}

} // namespace brennik::sim
