#include "platform/LinuxErrors.h"

#include "platform/Sockets.h"

#include <cerrno>

namespace brennik {

namespace {

struct FailureRow {
    int nErrno;
    FailureKind kind;
};

constexpr FailureRow kFailures[] = {
    {ENOENT, FailureKind::FileNotFound},
    {ENOTDIR, FailureKind::PathNotFound},
    {ENAMETOOLONG, FailureKind::PathNotFound},
    {ELOOP, FailureKind::PathNotFound},
    {EEXIST, FailureKind::FileAlreadyExists},
    {EACCES, FailureKind::PermissionDenied},
    {EPERM, FailureKind::PermissionDenied},
    {EROFS, FailureKind::PermissionDenied},
    {EISDIR, FailureKind::PermissionDenied},
    {ETXTBSY, FailureKind::PermissionDenied},
    {EBUSY, FailureKind::PermissionDenied},
    {ENOTEMPTY, FailureKind::PermissionDenied},
    {ENOSPC, FailureKind::DiskFull},
    {EDQUOT, FailureKind::DiskFull},
    {EFBIG, FailureKind::DiskFull},
    {EIO, FailureKind::DeviceIoError},
    {ENXIO, FailureKind::DeviceIoError},
    {ENODEV, FailureKind::DeviceIoError},
    {EMFILE, FailureKind::TooManyFiles},
    {ENFILE, FailureKind::TooManyFiles},
    {ENOMEM, FailureKind::OutOfMemory},
    {EAGAIN, FailureKind::OutOfMemory}, // no more processes; no file of ours ever waits
    {EBADF, FailureKind::BadFileNumber},
    {EINVAL, FailureKind::InvalidProcedureCall},
    {EOVERFLOW, FailureKind::Overflow},
};

struct SocketRow {
    int nErrno;
    int32_t lError;
};

constexpr SocketRow kSocketErrors[] = {
    {ENETDOWN, socketerror::kNetworkDown},         {ENETUNREACH, socketerror::kNetworkUnreachable},
    {ENETRESET, socketerror::kNetworkReset},       {ECONNABORTED, socketerror::kConnectionAborted},
    {EPIPE, socketerror::kConnectionAborted},      {ECONNRESET, socketerror::kConnectionReset},
    {EINPROGRESS, socketerror::kWouldBlock},       {EAGAIN, socketerror::kWouldBlock},
    {ETIMEDOUT, socketerror::kTimedOut},           {ECONNREFUSED, socketerror::kConnectionRefused},
    {EHOSTUNREACH, socketerror::kHostUnreachable},
};

} // namespace

FailureKind FailureKindOf(int nErrno) noexcept {
    for (const FailureRow& row : kFailures) {
        if (row.nErrno == nErrno) {
            return row.kind;
        }
    }
    return FailureKind::Internal;
}

int32_t SocketErrorOf(int nErrno) noexcept {
    for (const SocketRow& row : kSocketErrors) {
        if (row.nErrno == nErrno) {
            return row.lError;
        }
    }
    return nErrno;
}

void ThrowErrno() {
    throw RuntimeFailure(FailureKindOf(errno));
}

} // namespace brennik
