#include "sim/host/CommandPieces.h"

#include "sim/host/OptionReader.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace brennik::sim {

void Print(const std::string& strLine) {
    std::printf("%s\n", strLine.c_str());
    std::fflush(stdout);
}

int64_t NumberOf(const std::string& strOption, const std::string& strValue, int64_t lLeast,
                 int64_t lMost) {
    int64_t lNumber = 0;
    const char* end = strValue.data() + strValue.size();
    const auto parsed = std::from_chars(strValue.data(), end, lNumber);
    if (parsed.ec != std::errc() || parsed.ptr != end || lNumber < lLeast || lNumber > lMost) {
        throw UsageProblem{strOption + " needs a whole number from " + std::to_string(lLeast) +
                           " to " + std::to_string(lMost) + ", not \"" + strValue + "\""};
    }
    return lNumber;
}

std::string ContentOf(const std::string& strFile) {
    const int fd = ::open(strFile.c_str(), O_RDONLY | O_CLOEXEC);
    std::string strContent;
    char buffer[4096];
    ssize_t nRead = fd < 0 ? -1 : 1;
    while (nRead > 0) {
        nRead = ::read(fd, buffer, sizeof buffer);
        strContent.append(buffer, nRead > 0 ? static_cast<size_t>(nRead) : 0);
    }
    const int error = errno;
    if (fd >= 0) {
        ::close(fd);
    }
    if (nRead < 0) {
        throw UsageProblem{strFile + ": " + std::strerror(error)};
    }
    return strContent;
}

int FailCommand(const char* strCommand, const std::string& strError) {
    std::fprintf(stderr, "brenniksim %s: %s\n", strCommand, strError.c_str());
    return 1;
}

} // namespace brennik::sim
