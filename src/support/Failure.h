// The one way in which failures end at a class boundary: a body runs, and what it throws becomes a
// prefix with a description behind it and a code, or nothing at all. Nobody writes the try and the
// catch by hand. ErrorState is the pair that a class shows as strErrorMessage and lErrorCode.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace brennik {

/// The code of every catch-all failure.
inline constexpr int32_t kUnexpectedFailure = 1000000;

/// The short description of the exception being handled; call it inside a catch block only.
std::string DescribeCurrentException();

/// Text and code of the last failure of one object. A success leaves both as they are.
class ErrorState {
  public:
    const std::string& strErrorMessage() const { return strErrorMessage_; }
    int32_t lErrorCode() const { return lErrorCode_; }

    void Set(int32_t lErrorCode, std::string strErrorMessage) {
        lErrorCode_ = lErrorCode;
        strErrorMessage_ = std::move(strErrorMessage);
    }

    /// For the few failures that are told by their text alone; the code stays what it was.
    void SetTextOnly(std::string strErrorMessage) { strErrorMessage_ = std::move(strErrorMessage); }

    /// Takes text and code of a lower object over: anything with the two properties.
    template <class Source>
    void CopyFrom(const Source& source) {
        Set(source.lErrorCode(), source.strErrorMessage());
    }

  private:
    std::string strErrorMessage_;
    int32_t lErrorCode_ = 0;
};

/// Runs the body and gives its result. What it throws goes as a description to onFailure, whose
/// result is then given instead.
template <class Body, class OnFailure>
auto Guarded(Body&& body, OnFailure&& onFailure) -> decltype(body()) {
    try {
        return body();
    } catch (...) {
        return onFailure(DescribeCurrentException());
    }
}

/// Runs the body of an operation that reports text and code: on failure the text is the prefix
/// and the description, the code kUnexpectedFailure, and the result is lOnFailure.
template <class Result, class Body>
Result GuardedWithCode(ErrorState& error, std::string_view strPrefix, Result onFailure,
                       Body&& body) {
    return Guarded([&]() -> Result { return body(); },
                   [&](const std::string& strDescription) -> Result {
                       error.Set(kUnexpectedFailure, std::string(strPrefix).append(strDescription));
                       return onFailure;
                   });
}

/// Runs the body of an operation that reports a text alone.
template <class Result, class Body>
Result GuardedWithText(std::string& strErrorMessage, std::string_view strPrefix, Result onFailure,
                       Body&& body) {
    return Guarded([&]() -> Result { return body(); },
                   [&](const std::string& strDescription) -> Result {
                       strErrorMessage = std::string(strPrefix).append(strDescription);
                       return onFailure;
                   });
}

/// Runs the body of an operation whose failures are dropped without a word.
template <class Body>
void Quietly(Body&& body) {
    Guarded([&] { body(); }, [](const std::string&) {});
}

} // namespace brennik
