#include "tests/passthru/PlainRelay.h"

#include <cmath>

namespace brennik::passthru {

namespace {

constexpr char kTimedOut[] = "Timed out reading ISO packet";

std::string Crc(const std::string& strBytes) {
    unsigned crc = 0;
    for (const char c : strBytes) {
        crc ^= static_cast<unsigned>(static_cast<unsigned char>(c)) << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = ((crc & 0x8000u) != 0 ? (crc << 1) ^ 0x8005u : crc << 1) & 0xFFFFu;
    }
    return {static_cast<char>(crc >> 8), static_cast<char>(crc & 0xFF)};
}

std::string Frame(const std::string& strPayload) {
    const std::string strCovered =
        !strPayload.empty() && strPayload[0] == 'W' ? strPayload : strPayload + "\x03";
    return "\x02" + strCovered + Crc(strCovered);
}

size_t Byte(const std::string& strText, size_t nIndex) {
    return static_cast<unsigned char>(strText[nIndex]);
}

} // namespace

RelayOutcome PlainRelay::Run() {
    const End from = profile_.bUpload ? End::Device : End::Server;
    const End to = profile_.bUpload ? End::Server : End::Device;
    Act act = Act::GoOn;
    while (act == Act::GoOn) {
        std::string strPayload;
        if (!ReadFrame(from, strPayload)) {
            act = Act::Failed;
            break;
        }
        Sent(to) += Frame(strPayload);
        const auto strAnswer = ReadAnswer(to);
        if (!strAnswer) {
            act = Act::Failed;
            break;
        }
        Sent(from) += *strAnswer;
        act = ActOn(strPayload);
    }
    outcome_.bError = act == Act::Failed;
    return outcome_;
}

std::string& PlainRelay::Sent(End end) {
    return end == End::Server ? outcome_.strToServer : outcome_.strToDevice;
}

void PlainRelay::Fail(int32_t lCode, const std::string& strText) {
    outcome_.lErrorCode = lCode;
    outcome_.strErrorMessage = strText;
}

double PlainRelay::Time() {
    if (nNext_ >= sights_.size() || sights_[nNext_].kind != RelaySight::Kind::Time)
        throw std::logic_error("no look at the clock where a time limit is tested");
    return static_cast<double>(sights_[nNext_++].dSeconds);
}

std::optional<std::string> PlainRelay::Look(End end) {
    using Kind = RelaySight::Kind;
    const bool bServer = end == End::Server;
    if (nNext_ >= sights_.size())
        throw std::logic_error("no look where a pass reads");
    const RelaySight& sight = sights_[nNext_];
    if (sight.kind == (bServer ? Kind::ServerNothing : Kind::DeviceNothing)) {
        ++nNext_;
        return std::nullopt;
    }
    if (sight.kind != (bServer ? Kind::ServerBytes : Kind::DeviceByte))
        throw std::logic_error("a look at something else where a pass reads");
    ++nNext_;
    return sight.strBytes;
}

/// What one read brings: one look over TCP; over the line all bytes up to a look that finds none.
std::string PlainRelay::Delivery(End end) {
    if (end == End::Server)
        return Look(end).value_or("");
    std::string strDelivered;
    while (const auto strByte = Look(end))
        strDelivered += *strByte;
    return strDelivered;
}

/// Nothing is acknowledged here: a frame whose check is wrong passes like any other.
bool PlainRelay::ReadFrame(End end, std::string& strPayload) {
    for (int32_t lAttempt = 0; lAttempt <= profile_.lReadPacketAttempts; ++lAttempt) {
        if (ReadFrameOnce(end, strPayload))
            return true;
    }
    // An upload takes the text of the other end's link, which has none of its own yet.
    if (!profile_.bUpload)
        Fail(1000011, kTimedOut);
    return false;
}

bool PlainRelay::ReadFrameOnce(End end, std::string& strPayload) {
    std::string strBuffer;
    const double dEnd = Time() + profile_.lReadPacketTimeout;
    while (!(Time() > dEnd)) {
        strBuffer += Delivery(end);
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
            return true;
        }
        if (nStart == std::string::npos || nEnd == std::string::npos || nEnd < nStart ||
            strBuffer.size() < nEnd + 3)
            continue;
        strPayload = strBuffer.substr(nStart + 1, nEnd - nStart - 1);
        return true;
    }
    return false;
}

std::optional<std::string> PlainRelay::ReadAnswer(End end) {
    const double dEnd = std::nearbyint(Time() + profile_.lCharTimeout);
    while (!(Time() > dEnd)) {
        std::optional<std::string> strByte = Look(end);
        while (!strByte && end == End::Server) // over TCP a byte is waited for without end
            strByte = Look(end);
        if (!strByte)
            continue;
        if (*strByte == "\x06" || *strByte == "\x15")
            return strByte;
        if (*strByte == "\x02")
            return *strByte + Delivery(end);
    }
    if (!profile_.bUpload)
        Fail(1000011, kTimedOut);
    return std::nullopt;
}

PlainRelay::Act PlainRelay::ActOn(const std::string& strPayload) {
    char type = strPayload.empty() ? '\0' : strPayload[0];
    if (type >= 'a' && type <= 'z')
        type = static_cast<char>(type - 32);
    switch (type) {
    case 'O':
    case 'A':
    case 'B':
    case 'T':
    case 'L':
    case 'M':
    case 'P':
    case 'D':
    case 'C':
        outcome_.bBeyondTheModel = profile_.payloads.count(strPayload) == 0;
        return outcome_.bBeyondTheModel ? Act::Ended : Act::GoOn;
    case 'W':
        // In lower case it came in a frame of another kind.
        outcome_.bBeyondTheModel = strPayload[0] == 'w';
        return outcome_.bBeyondTheModel ? Act::Ended : Act::GoOn;
    case 'S':
        return Act::Ended;
    case 'U':
        Fail(1000030, profile_.bUpload ? "Brennik upload failed." : "Brennik download failed.");
        return Act::Failed;
    default:
        Fail(1000022, "Unknown brennik packet type");
        return Act::Failed;
    }
}

} // namespace brennik::passthru
