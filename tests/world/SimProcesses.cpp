#include "tests/world/SimProcesses.h"

#include <algorithm>

namespace brennik::world {

void SimProcesses::Note(const char* strCall, const std::string& strArgument) {
    calls.push_back(std::string(strCall) + " " + strArgument);
    if (ledger_.Recording()) {
        ledger_.Record(calls.back());
    }
}

uint32_t SimProcesses::GetCurrentProcessId() {
    ledger_.Enter();
    return kProcessId;
}

uint32_t SimProcesses::GetCurrentThreadId() {
    ledger_.Enter();
    return kThreadId;
}

int32_t SimProcesses::StartHidden(const std::string& strCommandLine) {
    const Fault* fault = ledger_.Enter(Op::StartHidden);
    Note("StartHidden", strCommandLine);
    if (fault != nullptr) {
        throw RuntimeFailure(fault->kind.value_or(FailureKind::FileNotFound));
    }
    const size_t nWord = std::min(strCommandLine.find_first_not_of(' '), strCommandLine.size());
    const size_t nEnd = strCommandLine.find(' ', nWord);
    const std::string strProgram = strCommandLine.substr(nWord, nEnd - nWord);
    if (strProgram.empty() || !files_.Get(strProgram)) {
        throw RuntimeFailure(FailureKind::FileNotFound);
    }
    const int32_t lProcess = lNextProcess_++;
    ends_[lProcess] = timeline_.Now() + runTime_;
    if (OnRun) {
        OnRun(strCommandLine);
    }
    return lProcess;
}

void SimProcesses::WaitForExit(int32_t lProcessId) {
    ledger_.Enter();
    Note("WaitForExit", std::to_string(lProcessId));
    const auto end = ends_.find(lProcessId);
    if (end != ends_.end()) {
        timeline_.AdvanceTo(end->second);
        ends_.erase(lProcessId);
    }
}

void SimProcesses::ChangeDrive(const std::string& strDrive) {
    const Fault* fault = ledger_.Enter(Op::ChangeDrive);
    Note("ChangeDrive", strDrive);
    if (fault != nullptr) {
        throw RuntimeFailure(fault->kind.value_or(FailureKind::PathNotFound));
    }
    if (strDrive.empty()) {
        return;
    }
    const char letter = strDrive.front();
    const char upper =
        letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    if (files_.Drives().count(upper) == 0) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
}

std::string SimProcesses::CurrentDirectory() {
    const Fault* fault = ledger_.Enter(Op::CurrentDirectory);
    const std::string& strFolder = files_.CurrentFolder();
    if (fault != nullptr || !files_.Exists(strFolder)) {
        throw RuntimeFailure(fault != nullptr ? fault->kind.value_or(FailureKind::PathNotFound)
                                              : FailureKind::PathNotFound);
    }
    return strFolder;
}

void SimProcesses::ChangeDirectory(const std::string& strFolder) {
    const Fault* fault = ledger_.Enter(Op::ChangeDirectory);
    Note("ChangeDirectory", strFolder);
    if (fault != nullptr) {
        throw RuntimeFailure(fault->kind.value_or(FailureKind::PathNotFound));
    }
    files_.SetCurrentFolder(strFolder);
}

std::string SimProcesses::ProgramFolder() {
    ledger_.Enter();
    return strProgramFolder_;
}

void SimProcesses::SetProgramFolder(const std::string& strFolder) {
    strProgramFolder_ = strFolder;
    files_.SetProgramFolder(strFolder);
}

} // namespace brennik::world
