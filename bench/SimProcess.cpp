#include "bench/SimProcess.h"

#include "bench/Processes.h"

namespace brennik::bench {

namespace {

constexpr char kListening[] = "listening on ";

} // namespace

SimProcess::SimProcess(const Options& options, const std::vector<std::string>& command) {
    std::vector<std::string> arguments{options.strPrograms + "/brenniksim"};
    arguments.insert(arguments.end(), command.begin(), command.end());
    arguments.emplace_back("--quiet");
    std::string strLine;
    process_ = StartAnnouncing(arguments, strLine);
    if (strLine.rfind(kListening, 0) != 0)
        Fail("brenniksim did not start");
    strListening_ = strLine.substr(sizeof kListening - 1);
}

SimProcess::~SimProcess() {
    if (process_ > 0)
        StopChild(process_);
}

int64_t SimProcess::AwaitEnd() {
    const ChildEnd ended = WaitFor(process_);
    process_ = -1;
    if (!ended.bGood)
        Fail("brenniksim did not come to its good end");
    return ended.lEndedAt;
}

uint16_t SimProcess::Port() const {
    return static_cast<uint16_t>(std::stoul(strListening_.substr(strListening_.rfind(':') + 1)));
}

} // namespace brennik::bench
