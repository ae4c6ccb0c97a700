#include "platform/RuntimeFailure.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

TEST(RuntimeFailure, EveryKindHasItsDescription) {
    struct Row {
        FailureKind kind;
        const char* strText;
    };
    const Row rows[] = {
        {FailureKind::Overflow, "Overflow"},
        {FailureKind::TypeMismatch, "Type mismatch"},
        {FailureKind::SubscriptOutOfRange, "Subscript out of range"},
        {FailureKind::InvalidProcedureCall, "Invalid procedure call"},
        {FailureKind::ObjectNotSet, "Object not set"},
        {FailureKind::OutOfMemory, "Out of memory"},
        {FailureKind::PathNotFound, "Path not found"},
        {FailureKind::FileNotFound, "File not found"},
        {FailureKind::FileAlreadyExists, "File already exists"},
        {FailureKind::BadFileMode, "Bad file mode"},
        {FailureKind::BadFileNumber, "Bad file number"},
        {FailureKind::InputPastEndOfFile, "Input past end of file"},
        {FailureKind::PermissionDenied, "Permission denied"},
        {FailureKind::DiskFull, "Disk full"},
        {FailureKind::DeviceIoError, "Device I/O error"},
        {FailureKind::TooManyFiles, "Too many files"},
        {FailureKind::Internal, "Internal error"},
    };
    for (const Row& row : rows) {
        EXPECT_STREQ(DescriptionOf(row.kind), row.strText);
        EXPECT_STREQ(RuntimeFailure(row.kind).what(), row.strText);
        EXPECT_EQ(RuntimeFailure(row.kind).Kind(), row.kind);
    }
}

} // namespace
} // namespace brennik
