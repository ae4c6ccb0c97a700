#include "tests/session/PlainClient.h"

#include <algorithm>

namespace brennik::session {

namespace {

std::string Crc(const std::string& strBytes) {
    unsigned crc = 0;
    for (char c : strBytes) {
        crc ^= static_cast<unsigned>(static_cast<unsigned char>(c)) << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = ((crc & 0x8000u) != 0 ? (crc << 1) ^ 0x8005u : crc << 1) & 0xFFFFu;
    }
    return {static_cast<char>(crc >> 8), static_cast<char>(crc & 0xFF)};
}

std::string Capitals(std::string strText) {
    for (char& c : strText) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 32);
    }
    return strText;
}

unsigned Byte(const std::string& strText, size_t nIndex) {
    return static_cast<unsigned char>(strText[nIndex]);
}

// Names that the model has a rule for: letters, digits, dots and the like, in one level.
bool IsPlainName(const std::string& strName) {
    if (strName.empty() || strName == "." || strName == ".." || strName.size() > 200)
        return false;
    return std::all_of(strName.begin(), strName.end(), [](char c) {
        return c > ' ' && c < 127 && c != '/' && c != '\\' && c != ':' && c != '<' && c != '>';
    });
}

} // namespace

PlainOutcome PlainClient::Run() {
    if (WaitForEnq() && SendRequest()) {
        std::string strPayload;
        bool bGoOn = true;
        while (bGoOn && !bDone_)
            bGoOn = ReadPacket(strPayload) && Act(strPayload);
        outcome_.lResult = bDone_ ? 0 : 1;
    }
    return outcome_;
}

double PlainClient::Time() {
    if (nNext_ >= sights_.size() || sights_[nNext_].kind != Sight::Kind::Time)
        throw std::logic_error("no look at the clock where a time limit is tested");
    return static_cast<double>(sights_[nNext_++].dSeconds);
}

std::optional<std::string> PlainClient::Delivery() {
    if (!profile_.bSerial)
        return Look();
    std::string strDelivered;
    while (const auto strByte = Look())
        strDelivered += *strByte;
    return strDelivered.empty() ? std::nullopt : std::optional(strDelivered);
}

std::optional<std::string> PlainClient::Look() {
    if (nNext_ >= sights_.size() || sights_[nNext_].kind == Sight::Kind::Time)
        throw std::logic_error("no look at the connection where a pass reads");
    const Sight& sight = sights_[nNext_++];
    if (sight.kind == Sight::Kind::Nothing)
        return std::nullopt;
    return sight.strBytes;
}

bool PlainClient::Fail(int32_t lCode, const std::string& strText) {
    outcome_.lErrorCode = lCode;
    outcome_.strErrorMessage = strText;
    return false;
}

bool PlainClient::WaitForEnq() {
    const double dEnd = Time() + 10;
    while (!(Time() > dEnd)) {
        const auto strDelivered = Delivery();
        if (strDelivered && strDelivered->find('\x05') != std::string::npos)
            return true;
    }
    return Fail(1000012, "Failed reading ENQ character");
}

bool PlainClient::SendRequest() {
    const std::string strBody = profile_.strRequest + "\x03";
    const std::string strFrame = "\x02" + strBody + Crc(strBody);
    for (int32_t lAttempt = 1; lAttempt <= profile_.lSendPacketAttempts; ++lAttempt) {
        outcome_.strSent += strFrame;
        const double dEnd = Time() + profile_.lCharTimeout;
        bool bRefused = false;
        while (!bRefused && !(Time() > dEnd)) {
            std::optional<std::string> strByte = Look();
            while (!strByte && !profile_.bSerial) // over TCP a byte is waited for without end
                strByte = Look();
            if (!strByte)
                continue;
            if (*strByte == "\x06")
                return true;
            bRefused = *strByte == "\x15";
        }
        if (!bRefused)
            return Fail(1000011, "Timed out reading ISO packet");
    }
    // Refused every time: nothing is said, and what was said before stays.
    return Fail(0, "");
}

bool PlainClient::ReadPacket(std::string& strPayload) {
    for (int32_t lAttempt = 1;; ++lAttempt) {
        const Read read = ReadFrame(strPayload);
        if (read == Read::Good) {
            outcome_.strSent += '\x06';
            return true;
        }
        if (lAttempt > profile_.lReadPacketAttempts)
            return Fail(1000011, "Timed out reading ISO packet");
        if (read == Read::BadCheck)
            outcome_.strSent += '\x15';
    }
}

PlainClient::Read PlainClient::ReadFrame(std::string& strPayload) {
    std::string strBuffer;
    const double dEnd = Time() + profile_.lReadPacketTimeout;
    while (!(Time() > dEnd)) {
        strBuffer += Delivery().value_or("");
        const size_t nStart = strBuffer.find('\x02');
        const size_t nEnd = strBuffer.find('\x03');
        if (nStart != std::string::npos && nStart + 1 < strBuffer.size() &&
            strBuffer[nStart + 1] == 'W') {
            if (strBuffer.size() < nStart + 8)
                continue;
            const size_t nLength = Byte(strBuffer, nStart + 2) * 256 + Byte(strBuffer, nStart + 3);
            if (strBuffer.size() - (nStart + 7) != nLength + 3)
                continue; // longer, too, is never whole
            strPayload = strBuffer.substr(nStart + 1, nLength + 7);
            return Crc(strPayload) == strBuffer.substr(nStart + 8 + nLength, 2) ? Read::Good
                                                                                : Read::BadCheck;
        }
        if (nStart == std::string::npos || nEnd == std::string::npos || nEnd < nStart)
            continue;
        if (strBuffer.size() < nEnd + 3)
            continue;
        strPayload = strBuffer.substr(nStart + 1, nEnd - nStart - 1);
        return Crc(strPayload + "\x03") == strBuffer.substr(nEnd + 1, 2) ? Read::Good
                                                                         : Read::BadCheck;
    }
    return Read::TimedOut;
}

bool PlainClient::Act(const std::string& strPayload) {
    const char type = Capitals(strPayload.substr(0, 1)).c_str()[0];
    const size_t nSize = strPayload.size();
    switch (type) {
    case 'O':
    case 'A':
        if (nSize < 40)
            return Fail(1000000, "TBrennikPacket.BreakOutOpenFilePacket() Failed - Type mismatch");
        return OpenFile(strPayload);
    case 'W':
    case 'B': {
        if (nSize < 7)
            return Fail(1000000, "TBrennikPacket.BreakOutWriteDataPacket() Failed - Type mismatch");
        const std::string strData = strPayload.substr(7);
        if (strOpen_.empty())
            return Fail(1000028, "Failed writing to file. : data=" + strData);
        outcome_.files[strOpen_] += strData;
        return true;
    }
    case 'C':
        strOpen_.clear();
        if (strName_.find("SETDRIVE.") == std::string::npos &&
            strName_.find("SETGROUP.") == std::string::npos)
            ++outcome_.lNumFiles;
        return true;
    case 'L': {
        std::string strLine = strPayload.substr(1);
        std::replace(strLine.begin(), strLine.end(), '\x1C', '=');
        outcome_.files[strFolder_ + "config.sys"] += strLine + "\r\n";
        return true;
    }
    case 'T':
        return nSize >= 15 ||
               Fail(1000000, "TBrennikPacket.BreakOutTimePacket() Failed - Type mismatch");
    case 'M':
    case 'P':
    case 'D':
        return true;
    case 'S':
        bDone_ = true;
        return true;
    case 'U':
        return Fail(1000030, "Brennik download failed.");
    default:
        return Fail(1000022, "Unknown brennik packet type");
    }
}

bool PlainClient::OpenFile(const std::string& strPayload) {
    const std::string strName = strPayload.substr(40);
    const std::string strCapitals = Capitals(strName);
    const bool bGroup = strCapitals.find("SETGROUP") != std::string::npos;
    const bool bDrive = !bGroup && strCapitals.find("SETDRIVE") != std::string::npos;
    const std::string strLevel = strName.size() > 9 ? strName.substr(9) : "";
    if (!IsPlainName(bGroup || bDrive ? strLevel : strName)) {
        outcome_.bBeyondTheModel = true;
        return false;
    }
    if (bGroup || bDrive) {
        (bGroup ? strGroup_ : strDrive_) = strLevel + "/";
        strFolder_ = strDrive_ + strGroup_;
    } else {
        // A file of the name of a folder that stands can't be opened; the model leaves that out.
        for (const auto& entry : outcome_.files) {
            if (entry.first.rfind(strFolder_ + strName + "/", 0) == 0)
                outcome_.bBeyondTheModel = true;
        }
        strOpen_ = strFolder_ + strName;
        if (Capitals(strPayload.substr(0, 1)) == "O")
            outcome_.files[strOpen_].clear();
        else
            outcome_.files.try_emplace(strOpen_);
    }
    strName_ = strName;
    return !outcome_.bBeyondTheModel;
}

} // namespace brennik::session
