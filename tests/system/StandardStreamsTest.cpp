#include "platform/StandardStreams.h"

#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace brennik {
namespace {

using namespace system_tests;

/// What the three standard descriptors are, and the number of the next one.
std::string Standing() {
    std::string strText;
    for (int n = 0; n <= 2; ++n) {
        std::error_code failed;
        const auto target =
            std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(n), failed);
        const int nFlags = ::fcntl(n, F_GETFD);
        strText += (failed ? "closed" : target.string()) +
                   (nFlags == FD_CLOEXEC ? " not for children, " : ", ");
    }
    return strText;
}

TEST(StandardStreams, ClosedOnesAreOpenedOnNothing) {
    for (int nMask = 0; nMask < 8; ++nMask) {
        EXPECT_EQ(ReportOfChild([&] {
                      const int nOpen = ::open("/dev/zero", O_RDWR);
                      for (int n = 0; n <= 2; ++n) {
                          ::dup2(nOpen, n);
                          if ((nMask >> n) % 2 == 1) {
                              ::close(n);
                          }
                      }
                      OpenStandardStreams();
                      return Standing();
                  }),
                  std::string(nMask % 2 == 1 ? "/dev/null, " : "/dev/zero, ") +
                      (nMask / 2 % 2 == 1 ? "/dev/null, " : "/dev/zero, ") +
                      (nMask / 4 == 1 ? "/dev/null, " : "/dev/zero, "))
            << nMask;
    }
}

TEST(StandardStreams, CanBeReadAndWritten) {
    EXPECT_EQ(ReportOfChild([] {
                  for (int n = 0; n <= 2; ++n) {
                      ::close(n);
                  }
                  OpenStandardStreams();
                  char byte = 'x';
                  return std::to_string(::read(0, &byte, 1)) +
                         std::to_string(::write(1, &byte, 1)) +
                         std::to_string(::write(2, &byte, 1));
              }),
              "011");
}

} // namespace
} // namespace brennik
