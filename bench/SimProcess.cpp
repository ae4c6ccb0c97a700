#include "bench/SimProcess.h"

#include "bench/Processes.h"

#include <cstdio>
#include <unistd.h>

namespace brennik::bench {

namespace {

constexpr char kListening[] = "listening on ";

} // namespace

SimProcess::SimProcess(const Options& options, const std::vector<std::string>& command) {
    int ends[2];
    if (::pipe(ends) != 0)
        Fail("pipe");
    std::vector<std::string> arguments{options.strPrograms + "/brenniksim"};
    arguments.insert(arguments.end(), command.begin(), command.end());
    arguments.emplace_back("--quiet");
    process_ = StartProgram(arguments, nullptr, ends[1]);
    ::close(ends[1]);
    FILE* output = ::fdopen(ends[0], "r");
    char line[4096] = "";
    if (std::fgets(line, sizeof line, output) == nullptr ||
        std::string(line).rfind(kListening, 0) != 0)
        Fail("brenniksim did not start");
    std::fclose(output);
    strListening_ = std::string(line).substr(sizeof kListening - 1);
    strListening_.pop_back();
}

SimProcess::~SimProcess() {
    StopChild(process_);
}

uint16_t SimProcess::Port() const {
    return static_cast<uint16_t>(std::stoul(strListening_.substr(strListening_.rfind(':') + 1)));
}

} // namespace brennik::bench
