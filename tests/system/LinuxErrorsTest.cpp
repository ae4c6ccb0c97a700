#include "platform/LinuxErrors.h"

#include "platform/Descriptor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

namespace brennik {
namespace {

TEST(LinuxErrors, SocketErrorsGetTheNumbersThatTheLogicTests) {
    const std::pair<int, int32_t> rows[] = {
        {ENETDOWN, 10050},    {ENETUNREACH, 10051}, {ENETRESET, 10052},    {ECONNABORTED, 10053},
        {EPIPE, 10053},       {ECONNRESET, 10054},  {EINPROGRESS, 10035},  {EAGAIN, 10035},
        {EWOULDBLOCK, 10035}, {ETIMEDOUT, 10060},   {ECONNREFUSED, 10061}, {EHOSTUNREACH, 10065},
    };
    for (const auto& [nErrno, lError] : rows) {
        EXPECT_EQ(SocketErrorOf(nErrno), lError) << nErrno;
    }
}

TEST(LinuxErrors, EveryOtherSocketErrorPassesAsItIs) {
    for (const int nErrno : {EBADF, ENOTSOCK, ENOTCONN, EMFILE, EINVAL, 0, 9999}) {
        EXPECT_EQ(SocketErrorOf(nErrno), nErrno);
    }
}

TEST(LinuxErrors, FileErrorsGetTheirDescriptions) {
    const std::pair<int, FailureKind> rows[] = {
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
        {EAGAIN, FailureKind::OutOfMemory},
        {EBADF, FailureKind::BadFileNumber},
        {EINVAL, FailureKind::InvalidProcedureCall},
        {EOVERFLOW, FailureKind::Overflow},
        {ESRCH, FailureKind::Internal},
        {9999, FailureKind::Internal},
    };
    for (const auto& [nErrno, kind] : rows) {
        EXPECT_EQ(FailureKindOf(nErrno), kind) << nErrno;
    }
}

TEST(LinuxErrors, ThrowsWhatErrnoStandsFor) {
    errno = ENOSPC;
    try {
        ThrowErrno();
    } catch (const RuntimeFailure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::DiskFull);
    }
}

TEST(Descriptor, AnInterruptedCallIsMadeAgain) {
    int nCalls = 0;
    EXPECT_EQ(Resumed([&] {
                  ++nCalls;
                  errno = EINTR;
                  return nCalls < 4 ? -1 : 17;
              }),
              17);
    EXPECT_EQ(nCalls, 4);
}

TEST(Descriptor, ACallThatFailsOtherwiseIsMadeOnce) {
    int nCalls = 0;
    EXPECT_EQ(Resumed([&] {
                  ++nCalls;
                  errno = EIO;
                  return -1;
              }),
              -1);
    EXPECT_EQ(nCalls, 1);
}

} // namespace
} // namespace brennik
