#include "support/Failure.h"

#include "platform/RuntimeFailure.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

namespace brennik {
namespace {

template <class Body>
std::string DescriptionOfThrow(Body&& body) {
    return Guarded(
        [&]() -> std::string {
            body();
            return "nothing thrown";
        },
        [](std::string strDescription) { return strDescription; });
}

struct LowerObject {
    std::string strErrorMessage() const { return "lower text"; }
    int32_t lErrorCode() const { return 17; }
};

TEST(Failure, DescribesRuntimeFailuresByTheirKind) {
    const std::vector<std::pair<FailureKind, std::string>> kinds = {
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
    for (const auto& known : kinds) {
        EXPECT_EQ(DescriptionOfThrow([&] { throw RuntimeFailure(known.first); }), known.second);
    }
}

TEST(Failure, DescribesWhatTheLanguageThrows) {
    EXPECT_EQ(DescriptionOfThrow([] { throw std::bad_alloc(); }), "Out of memory");
    EXPECT_EQ(DescriptionOfThrow([] { throw std::length_error("l"); }), "Out of memory");
    EXPECT_EQ(DescriptionOfThrow([] { throw std::out_of_range("o"); }), "Subscript out of range");
    EXPECT_EQ(DescriptionOfThrow([] { throw std::runtime_error("r"); }), "Internal error");
    EXPECT_EQ(DescriptionOfThrow([] { throw 5; }), "Internal error");
    EXPECT_EQ(DescriptionOfThrow([] {}), "nothing thrown");
}

TEST(Failure, ErrorStateSetsTextAndCodeTogether) {
    ErrorState error;
    EXPECT_EQ(error.strErrorMessage(), "");
    EXPECT_EQ(error.lErrorCode(), 0);
    error.Set(1000022, "text");
    EXPECT_EQ(error.strErrorMessage(), "text");
    EXPECT_EQ(error.lErrorCode(), 1000022);
    error.SetTextOnly("other");
    EXPECT_EQ(error.strErrorMessage(), "other");
    EXPECT_EQ(error.lErrorCode(), 1000022);
    error.CopyFrom(LowerObject{});
    EXPECT_EQ(error.strErrorMessage(), "lower text");
    EXPECT_EQ(error.lErrorCode(), 17);
}

TEST(Failure, GuardedWithCodeSetsPrefixDescriptionAndCode) {
    ErrorState error;
    const int32_t lStatus = GuardedWithCode(error, "T.Op() Failed - ", int32_t{1}, []() -> int32_t {
        throw RuntimeFailure(FailureKind::PathNotFound);
    });
    EXPECT_EQ(lStatus, 1);
    EXPECT_EQ(error.strErrorMessage(), "T.Op() Failed - Path not found");
    EXPECT_EQ(error.lErrorCode(), 1000000);
}

TEST(Failure, ASuccessLeavesTextAndCode) {
    ErrorState error;
    error.Set(7, "old");
    EXPECT_EQ(GuardedWithCode(error, "T.Op() Failed - ", int32_t{1}, [] { return 0; }), 0);
    EXPECT_EQ(error.strErrorMessage(), "old");
    EXPECT_EQ(error.lErrorCode(), 7);
    std::string strText = "old";
    EXPECT_TRUE(GuardedWithText(strText, "T.Op() Failed - ", false, [] { return true; }));
    EXPECT_EQ(strText, "old");
}

TEST(Failure, GuardedWithTextSetsPrefixAndDescription) {
    std::string strText;
    EXPECT_EQ(GuardedWithText(strText, "Op - ", -1,
                              []() -> int { throw RuntimeFailure(FailureKind::DiskFull); }),
              -1);
    EXPECT_EQ(strText, "Op - Disk full");
}

TEST(Failure, QuietlyDropsTheFailureAndWhatFollowsIt) {
    int nReached = 0;
    Quietly([&] {
        ++nReached;
        if (nReached == 1) {
            throw RuntimeFailure(FailureKind::Overflow);
        }
        nReached = 100;
    });
    EXPECT_EQ(nReached, 1);
}

} // namespace
} // namespace brennik
