// A full download in whose pause a key is put into the device: the fixture of all tests of that.
// The key file, the device and the server are those of the simulated host.
#pragma once

#include "tests/passthru/PassThruWorld.h"

namespace brennik::passthru {

// The record and its hash, worked out apart: SHA-1 over "KEY,5,20301231,PT7".
inline const std::string kFields = "KEY,5,20301231";
inline const std::string kRecord = kFields + ",2dd6a3392e4c6783fe4586a0ffce9f2878c5db3b";

inline const std::string kStarting = "Starting public key injection process, PTID=PT7";
inline const std::string kDone = "Successfully injected key file";
inline const std::string kFailed = "Failed injecting key file";

inline std::string WritePacket(const std::string& strData) {
    return session::Write(strData);
}

class KeyInjection : public PassThruTest {
  protected:
    KeyInjection() {
        config.bInjectPublicKeyFile(true);
        config.strPublickeyLocation("C:\\keys");
        PutKey("KEY", "5", "20301231");
        Ask(DeviceRequest("XDL", "F"));
        Serve(EditedRequest("XDL", "F"), {"S"});
        // The group's open packet bears the moment of sending.
        host.clock.SetLocal(DateTime{2026, 11, 14, 12, 0, 0});
    }

    void PutKey(const std::string& strKey, const std::string& strIndex,
                const std::string& strDate) {
        host.files.Put("/keys/flkeyfile.txt", "[ENCRYPTION]\r\nRsaKey=" + strKey +
                                                  "\r\nRsaKeyIndex=" + strIndex +
                                                  "\r\nRsaKeyExpiryDate=" + strDate + "\r\n");
    }

    /// What the device was sent between the server's ACK and the server's first frame, with the
    /// moments of the open packets left out.
    Lines Injected() const {
        Lines payloads;
        for (std::string strPayload : device.Payloads()) {
            if (strPayload == "S")
                break;
            if (strPayload.front() == 'O')
                strPayload.erase(18, 14);
            payloads.push_back(strPayload);
        }
        return payloads;
    }
    static std::string OpenOf(const std::string& strName, const std::string& strSize) {
        return "OD" + strSize + "00000000XXXXXXXX" + strName;
    }
    std::string GroupOpen() const { return OpenOf("setgroup.15", "00000000"); }
    std::string KeyOpen() const {
        constexpr char digits[] = "0123456789ABCDEF";
        return OpenOf("flpkey.csv", std::string("000000") + digits[kRecord.size() >> 4] +
                                        digits[kRecord.size() & 15]);
    }
    /// The device's answer to the nth frame that it is sent; before and behind that it agrees.
    void AnswerFrame(int32_t nFrame, const std::string& strAnswer) {
        device.Always("[]", "");
        device.onHeard = [this, nFrame, strAnswer, n = 0,
                          note = device.onHeard](const std::string& strText) mutable {
            note(strText);
            if (strText.front() == '[')
                device.Say(++n == nFrame ? strAnswer : std::string("\x06"));
        };
    }
    Lines Outcome() const {
        Lines lines;
        for (const std::string& strLine : Log()) {
            if (strLine.find("key") != std::string::npos)
                lines.push_back(strLine);
        }
        return lines;
    }
};

} // namespace brennik::passthru
