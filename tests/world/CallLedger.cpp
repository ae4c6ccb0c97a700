#include "tests/world/CallLedger.h"

#include <cstdio>
#include <cstdlib>

namespace brennik::world {

const char* NameOf(Op op) noexcept {
    static constexpr std::array<const char*, static_cast<size_t>(Op::Count_)> names{
        "Startup",           "Socket",
        "Connect",           "SetNonBlocking",
        "BytesWaiting",      "SelectWritable",
        "Receive",           "Send",
        "CloseSocket",       "GetHostByName",
        "ComOpen",           "ComClose",
        "ComRead",           "ComWrite",
        "ComGetState",       "ComSetState",
        "ComSetTimeouts",    "OstRtl",
        "OpenText",          "AppendLine",
        "StreamRead",        "StreamWrite",
        "StreamClose",       "Find",
        "GetTimes",          "FolderExists",
        "CreateFolder",      "DeleteFolder",
        "GetFileSize",       "GetFolderSize",
        "DeleteFile",        "CopyFile",
        "MoveFile",          "CopyFolder",
        "SetAttributes",     "StaysInside",
        "ReadProfileString", "WriteProfileString",
        "StartHidden",       "ChangeDrive",
        "ChangeDirectory",   "CurrentDirectory",
    };
    return op < Op::Count_ ? names[static_cast<size_t>(op)] : "";
}

void CallLedger::Overrun() {
    bExceeded_ = true;
    if (nCalls_ - nBudget_ > kGraceCalls) {
        // Whoever swallowed every exception so far would swallow the next one too.
        std::fprintf(stderr,
                     "The code under test went on for %lld calls behind its budget of %lld calls: "
                     "a loop that never ends.\n",
                     static_cast<long long>(kGraceCalls), static_cast<long long>(nBudget_));
        std::abort();
    }
    throw BudgetExhausted{};
}

void CallLedger::ForgiveOverrun(int64_t nMore) {
    bExceeded_ = false;
    SetBudget(nMore);
}

void CallLedger::FailNthCall(int64_t n, Fault fault) {
    nFailAt_ = n > 0 ? nFailable_ + n : -1;
    nthFault_ = fault;
    failedOp_.reset();
}

void CallLedger::FailNext(Op op, Fault fault, int32_t nTimes, int32_t nSkip) {
    plans_[static_cast<size_t>(op)].push_back(Plan{fault, nSkip, nTimes});
    bPlanned_ = true;
}

void CallLedger::ClearFaults() {
    nFailAt_ = -1;
    bPlanned_ = false;
    for (auto& plans : plans_) {
        plans.clear();
    }
}

const Fault* CallLedger::TakeFault(Op op) {
    auto& plans = plans_[static_cast<size_t>(op)];
    const Fault* fault = nullptr;
    if (!plans.empty()) {
        Plan& plan = plans.front();
        if (plan.nSkip > 0) {
            --plan.nSkip;
        } else {
            current_ = plan.fault;
            fault = &current_;
            if (--plan.nTimes <= 0) {
                plans.erase(plans.begin());
            }
        }
    }
    if (nFailable_ == nFailAt_) {
        failedOp_ = op;
        current_ = nthFault_;
        fault = &current_;
    }
    return fault;
}

} // namespace brennik::world
