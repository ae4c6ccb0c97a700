#include "link/TSocketComms.h"

#include "link/LinkStatus.h"
#include "link/TConnectionInfo.h"
#include "platform/PumpEvents.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/TFLClientLog.h"

namespace brennik {
namespace {

struct Peer {
    const std::string& strAddress;
    int32_t lPort;
};

/// The addresses take turns: 1, 2, 3, 1, ...
Peer PickPeer(const TConnectionInfo& objConnectionInfo, int64_t lAttempt) {
    switch (lAttempt % 3) {
    case 1:
        return {objConnectionInfo.strIPAddress1(), objConnectionInfo.lIPPortNo1()};
    case 2:
        return {objConnectionInfo.strIPAddress2(), objConnectionInfo.lIPPortNo2()};
    default:
        return {objConnectionInfo.strIPAddress3(), objConnectionInfo.lIPPortNo3()};
    }
}

/// Empty addresses become the first one, for good.
void FillEmptyAddresses(TConnectionInfo& objConnectionInfo) {
    if (objConnectionInfo.strIPAddress2().empty()) {
        objConnectionInfo.strIPAddress2(objConnectionInfo.strIPAddress1());
        objConnectionInfo.lIPPortNo2(objConnectionInfo.lIPPortNo1());
    }
    if (objConnectionInfo.strIPAddress3().empty()) {
        objConnectionInfo.strIPAddress3(objConnectionInfo.strIPAddress1());
        objConnectionInfo.lIPPortNo3(objConnectionInfo.lIPPortNo1());
    }
}

} // namespace

TSocketComms::~TSocketComms() {
    // A connection that nobody closed; there is no one left to tell.
    if (bConnected_) {
        static_cast<void>(oSocket_->CloseSocket(lSocket_));
    }
}

int32_t TSocketComms::Connect(TConnectionInfo& objConnectionInfo, TFLClientLog& objLog) {
    return GuardedWithCode(error_, "TSocketComms.Connect() Failed - ", kFailure, [&]() -> int32_t {
        if (bConnected_) {
            return kSuccess;
        }
        oLog_ = &objLog;
        const int32_t lAttempts = objConnectionInfo.lConnectionAttempts();
        if (lAttempts < 1) {
            SetError(error_, CommsErrors::kConnectionAttempts);
            return kFailure;
        }
        oSocket_ = std::make_unique<TSocket>();
        FillEmptyAddresses(objConnectionInfo);
        for (int64_t lAttempt = 1; lAttempt <= lAttempts; ++lAttempt) {
            if (TryConnect(objConnectionInfo, lAttempt)) {
                return kSuccess;
            }
            LogSocketError();
            // No pause: the wait is that of the connection alone.
        }
        return kFailure;
    });
}

/// One attempt. A name that can't be resolved uses it up.
bool TSocketComms::TryConnect(const TConnectionInfo& objConnectionInfo, int64_t lAttempt) {
    const Peer peer = PickPeer(objConnectionInfo, lAttempt);
    const std::string strPort = ToDecimal(peer.lPort);
    oLog_->Logit("Attempting connection to " + peer.strAddress + ", Port " + strPort +
                     ", Connection attempt " + ToDecimal(lAttempt),
                 false);
    std::string strResolved = peer.strAddress;
    if (!oSocket_->IsIPAddress(peer.strAddress) &&
        oSocket_->GetIPAddress(peer.strAddress, strResolved) != kSuccess) {
        return false;
    }
    if (oSocket_->OpenSocket("", strResolved, Narrow<uint16_t>(peer.lPort),
                             objConnectionInfo.lConnectTimeout(), lSocket_,
                             objConnectionInfo.bBlockedSocket(), true) != kSuccess) {
        return false;
    }
    strConnectionData_ = peer.strAddress;
    bConnected_ = true;
    oLog_->Logit("Connected to " + peer.strAddress + ", Port " + strPort + ", Socket " +
                     ToDecimal(lSocket_),
                 false);
    return true;
}

/// Takes the failure of the socket over and tells the log.
void TSocketComms::LogSocketError() {
    error_.CopyFrom(*oSocket_);
    oLog_->LogErrorCodeAndMsg(error_.lErrorCode(), error_.strErrorMessage());
}

int32_t TSocketComms::Disconnect() {
    return GuardedWithCode(
        error_, "TSocketComms.Disconnect() Failed - ", kFailure, [&]() -> int32_t {
            if (!bConnected_) {
                return kSuccess;
            }
            if (Socket().CloseSocket(lSocket_) != kSuccess) {
                LogSocketError();
                return kFailure;
            }
            oLog_->Logit("Connection Closed, Socket " + ToDecimal(lSocket_) + " Destroyed", false);
            bConnected_ = false;
            lSocket_ = kNoSocket;
            oSocket_.reset();
            return kSuccess;
        });
}

int32_t TSocketComms::WriteData(std::string_view strData) {
    return GuardedWithCode(
        error_, "TSocketComms.WriteData() Failed - ", kFailure, [&]() -> int32_t {
            if (Socket().Send(strData, lSocket_) == kSuccess) {
                return kSuccess;
            }
            error_.Set(Socket().lErrorCode(),
                       Socket().strErrorMessage() + " Data=" + std::string(strData));
            return kFailure;
        });
}

int32_t TSocketComms::ReadData(std::string& strData) {
    return GuardedWithCode(error_, "TSocketComms.ReadData() Failed - ", kFailure, [&]() -> int32_t {
        // Meant to have no other end: a connection lost for good is read again, and the read
        // itself pauses on every turn.
        for (;;) {
            PumpEvents();
            int32_t lBytesRead = 0;
            if (Socket().Read(strData, lBytesRead, lSocket_) == kSuccess) {
                return kSuccess;
            }
            error_.CopyFrom(Socket());
        }
    });
}

int32_t TSocketComms::ReadCharacter(std::string& strData) {
    return GuardedWithCode(
        error_, "TSocketComms.ReadCharacter() Failed - ", kFailure, [&]() -> int32_t {
            // Meant to have no other end, like ReadData: callers rely on a byte.
            for (;;) {
                PumpEvents();
                int32_t lBytesRead = 0;
                if (Socket().ReadnBytes(strData, 1, lBytesRead, lSocket_) != kSuccess) {
                    error_.CopyFrom(Socket());
                } else if (lBytesRead == 1) {
                    return kSuccess;
                } else {
                    SetError(error_, CommsErrors::kReadOneByte);
                }
            }
        });
}

TSocket& TSocketComms::Socket() {
    if (oSocket_ == nullptr) {
        throw RuntimeFailure(FailureKind::ObjectNotSet);
    }
    return *oSocket_;
}

} // namespace brennik
