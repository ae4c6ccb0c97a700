// The ledger of the simulated host: every call of the seam is entered here, costs a microsecond,
// counts against a budget, and learns whether it is the one that must fail.
// Nothing real stands behind it; fixtures reach it through SimHost.
#pragma once

#include "platform/RuntimeFailure.h"
#include "tests/world/SimTimeline.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace brennik::world {

/// The calls of the seam that can fail.
enum class Op : uint8_t {
    Startup,
    Socket,
    Connect,
    SetNonBlocking,
    BytesWaiting,
    SelectWritable,
    Receive,
    Send,
    CloseSocket,
    GetHostByName,
    ComOpen,
    ComClose,
    ComRead,
    ComWrite,
    ComGetState,
    ComSetState,
    ComSetTimeouts,
    OstRtl,
    OpenText,
    AppendLine,
    StreamRead,  ///< Read, ReadLine, ReadAll and AtEndOfStream
    StreamWrite, ///< Write and WriteLine
    StreamClose, ///< Close; the stream is closed all the same
    Find,
    GetTimes,
    FolderExists,
    CreateFolder,
    DeleteFolder,
    GetFileSize,
    GetFolderSize,
    DeleteFile,
    CopyFile,
    MoveFile,
    CopyFolder,
    SetAttributes,
    StaysInside,
    ReadProfileString,
    WriteProfileString,
    StartHidden,
    ChangeDrive,
    ChangeDirectory,
    CurrentDirectory,
    Count_
};

const char* NameOf(Op op) noexcept;

/// How a call fails. What is left open is the usual way of that call: socket calls give -1,
/// Startup 1, a resolve nothing; file calls throw DeviceIoError, those that don't throw find
/// nothing; a profile string reads as its default and writes as 0; a process isn't started
/// (FileNotFound), a drive or folder isn't found (PathNotFound).
struct Fault {
    /// The last error that a failing socket call (a result below 0) leaves.
    int32_t lLastError = 10054;
    /// The result in place of the usual one. 0 or more on Receive: so many bytes at most are
    /// received. On Send: so many bytes at most are taken. On Connect 0: made at once. On
    /// SelectWritable 0: the time limit passes. On BytesWaiting: so many are told. On Socket:
    /// that handle, which is none.
    std::optional<int32_t> lResult{};
    /// What a file or process call throws in place of the usual failure.
    std::optional<FailureKind> kind{};
};

/// Thrown by each call behind the last one of the budget. No std::exception on purpose, so that
/// it is told apart; a catch-all swallows it all the same, so the overrun is also recorded, every
/// later call throws again, and a run that goes on regardless is aborted.
struct BudgetExhausted {};

class CallLedger {
  public:
    explicit CallLedger(SimTimeline& timeline) : timeline_(timeline) {}
    CallLedger(const CallLedger&) = delete;
    CallLedger& operator=(const CallLedger&) = delete;

    /// Enters a call that can't fail.
    void Enter() {
        if (++nCalls_ > nBudget_) {
            Overrun();
        }
        timeline_.Advance(1);
    }

    /// Enters a call that can fail; gives the fault that it must meet, or null. The pointer holds
    /// until the next call.
    const Fault* Enter(Op op) {
        Enter();
        ++nFailable_;
        if (nFailable_ != nFailAt_ && !bPlanned_) [[likely]] {
            return nullptr;
        }
        return TakeFault(op);
    }

    /// Calls entered so far, and those among them that can fail.
    int64_t nCalls() const { return nCalls_; }
    int64_t nFailable() const { return nFailable_; }

    /// Calls allowed from now on.
    void SetBudget(int64_t nMore) { nBudget_ = nCalls_ + nMore; }
    bool BudgetExceeded() const { return bExceeded_; }
    /// Takes note of an overrun that was expected and allows so many more calls.
    void ForgiveOverrun(int64_t nMore);

    /// Calls that may still be made (each throwing) behind an overrun, before the process is
    /// aborted with a message.
    static constexpr int64_t kGraceCalls = 100000;

    /// Fails the nth failable call from now on (1 is the next), once. 0 fails none.
    void FailNthCall(int64_t n, Fault fault = {});
    /// The call that FailNthCall met, if it has come.
    std::optional<Op> FailedOp() const { return failedOp_; }

    /// Fails the next nTimes calls of one operation, after nSkip of them that pass. Plans for the
    /// same operation follow each other.
    void FailNext(Op op, Fault fault = {}, int32_t nTimes = 1, int32_t nSkip = 0);
    /// Drops every planned failure.
    void ClearFaults();

    /// The order of the calls as text, when recording is on: entries as "Send 5", "Sleep 50".
    void RecordCalls(bool bRecord) { bRecording_ = bRecord; }
    bool Recording() const { return bRecording_; }
    void Record(std::string strEntry) { trace.push_back(std::move(strEntry)); }
    std::vector<std::string> trace;

  private:
    struct Plan {
        Fault fault;
        int32_t nSkip;
        int32_t nTimes;
    };
    const Fault* TakeFault(Op op);
    [[noreturn]] void Overrun();

    SimTimeline& timeline_;
    int64_t nCalls_ = 0;
    int64_t nBudget_ = 5000000;
    bool bExceeded_ = false;
    int64_t nFailable_ = 0;
    int64_t nFailAt_ = -1;
    Fault nthFault_;
    std::optional<Op> failedOp_;
    bool bPlanned_ = false;
    std::array<std::vector<Plan>, static_cast<size_t>(Op::Count_)> plans_;
    Fault current_;
    bool bRecording_ = false;
};

} // namespace brennik::world
