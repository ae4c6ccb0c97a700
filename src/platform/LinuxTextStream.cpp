#include "platform/LinuxTextStream.h"

#include "platform/LinuxErrors.h"

#include <algorithm>
#include <unistd.h>

namespace brennik {

namespace {

constexpr size_t kReadAhead = 65536;
/// A file without line ends, or one that never ends, must not take all memory.
constexpr size_t kLongestLine = 16777216;
constexpr size_t kLongestText = 268435456;

void AppendBounded(std::string& strText, std::string_view strMore, size_t nLimit) {
    if (strMore.size() > nLimit - strText.size()) {
        throw RuntimeFailure(FailureKind::OutOfMemory);
    }
    strText += strMore;
}

} // namespace

LinuxTextStream::LinuxTextStream(Descriptor file, OpenMode mode)
    : file_(std::move(file)), bReading_(mode == OpenMode::Read) {
}

std::string LinuxTextStream::Read(size_t nCount) {
    Require(true);
    std::string strData;
    while (strData.size() < nCount) {
        const std::string_view strAhead = Ahead().substr(0, nCount - strData.size());
        if (strAhead.empty()) {
            break;
        }
        AppendBounded(strData, strAhead, kLongestText);
        nTaken_ += strAhead.size();
    }
    return strData;
}

std::string LinuxTextStream::ReadLine() {
    Require(true);
    std::string strLine;
    if (Ahead().empty()) {
        throw RuntimeFailure(FailureKind::InputPastEndOfFile);
    }
    for (std::string_view strAhead = Ahead(); !strAhead.empty(); strAhead = Ahead()) {
        const size_t nFeed = strAhead.find('\n');
        AppendBounded(strLine, strAhead.substr(0, nFeed), kLongestLine);
        if (nFeed != std::string_view::npos) {
            nTaken_ += nFeed + 1;
            if (!strLine.empty() && strLine.back() == '\r') {
                strLine.pop_back();
            }
            break;
        }
        nTaken_ += strAhead.size();
    }
    return strLine;
}

std::string LinuxTextStream::ReadAll() {
    Require(true);
    std::string strText;
    for (std::string_view strAhead = Ahead(); !strAhead.empty(); strAhead = Ahead()) {
        AppendBounded(strText, strAhead, kLongestText);
        nTaken_ += strAhead.size();
    }
    return strText;
}

bool LinuxTextStream::AtEndOfStream() {
    Require(true);
    return Ahead().empty();
}

void LinuxTextStream::Write(std::string_view strData) {
    Require(false);
    if (!WriteAll(file_.Get(), strData)) {
        ThrowErrno();
    }
}

void LinuxTextStream::WriteLine(std::string_view strData) {
    std::string strLine;
    strLine.reserve(strData.size() + 2);
    strLine += strData;
    strLine += "\r\n";
    Write(strLine);
}

void LinuxTextStream::Close() {
    // A file on a distant disk may tell only now that its last bytes could not be kept.
    if (!file_.Close()) {
        ThrowErrno();
    }
}

void LinuxTextStream::Require(bool bReading) const {
    if (!file_.IsOpen()) {
        throw RuntimeFailure(FailureKind::BadFileNumber);
    }
    if (bReading_ != bReading) {
        throw RuntimeFailure(FailureKind::BadFileMode);
    }
}

std::string_view LinuxTextStream::Ahead() {
    if (nTaken_ == strBuffer_.size()) {
        strBuffer_.resize(kReadAhead);
        const ssize_t nRead =
            Resumed([&] { return ::read(file_.Get(), strBuffer_.data(), strBuffer_.size()); });
        nTaken_ = 0;
        strBuffer_.resize(nRead > 0 ? static_cast<size_t>(nRead) : 0);
        if (nRead < 0) {
            ThrowErrno();
        }
    }
    return std::string_view(strBuffer_).substr(nTaken_);
}

} // namespace brennik
