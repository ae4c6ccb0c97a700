// The one exception of the system: a run-time failure with a short English description.
// Operations of the seam and the conversions above it throw it; the catch-all of each public
// operation (support/Failure.h) turns it into a text and a code. It never leaves a class.
// The descriptions are a fixed list, so that a log reads the same on every machine.
#pragma once

#include <exception>

namespace brennik {

enum class FailureKind {
    Overflow,
    TypeMismatch,
    SubscriptOutOfRange,
    InvalidProcedureCall,
    ObjectNotSet,
    OutOfMemory,
    PathNotFound,
    FileNotFound,
    FileAlreadyExists,
    BadFileMode,
    BadFileNumber,
    InputPastEndOfFile,
    PermissionDenied,
    DiskFull,
    DeviceIoError,
    TooManyFiles,
    Internal,
};

/// The description of a failure as it stands in messages behind "Failed - ".
const char* DescriptionOf(FailureKind kind) noexcept;

class RuntimeFailure : public std::exception {
  public:
    explicit RuntimeFailure(FailureKind kind) noexcept : kind_(kind) {}

    FailureKind Kind() const noexcept { return kind_; }
    const char* what() const noexcept override { return DescriptionOf(kind_); }

  private:
    FailureKind kind_;
};

} // namespace brennik
