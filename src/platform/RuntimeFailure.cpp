#include "platform/RuntimeFailure.h"

namespace brennik {

const char* DescriptionOf(FailureKind kind) noexcept {
    switch (kind) {
    case FailureKind::Overflow:
        return "Overflow";
    case FailureKind::TypeMismatch:
        return "Type mismatch";
    case FailureKind::SubscriptOutOfRange:
        return "Subscript out of range";
    case FailureKind::InvalidProcedureCall:
        return "Invalid procedure call";
    case FailureKind::ObjectNotSet:
        return "Object not set";
    case FailureKind::OutOfMemory:
        return "Out of memory";
    case FailureKind::PathNotFound:
        return "Path not found";
    case FailureKind::FileNotFound:
        return "File not found";
    case FailureKind::FileAlreadyExists:
        return "File already exists";
    case FailureKind::BadFileMode:
        return "Bad file mode";
    case FailureKind::BadFileNumber:
        return "Bad file number";
    case FailureKind::InputPastEndOfFile:
        return "Input past end of file";
    case FailureKind::PermissionDenied:
        return "Permission denied";
    case FailureKind::DiskFull:
        return "Disk full";
    case FailureKind::DeviceIoError:
        return "Device I/O error";
    case FailureKind::TooManyFiles:
        return "Too many files";
    case FailureKind::Internal:
        break;
    }
    return "Internal error";
}

} // namespace brennik
