#include "bench/MeasuredRun.h"

#include "bench/Processes.h"

#include <filesystem>

namespace brennik::bench {

MeasuredRun::MeasuredRun(const Options& options, Workplace& workplace)
    : options_(options),
      workplace_(workplace),
      times_(SharedBetweenProcesses<SenderTimes>()),
      lExecAt_(SharedBetweenProcesses<int64_t>()) {
}

RunResult MeasuredRun::Client(const Job& job, int32_t lProfile, bool bContent) {
    workplace_.Clear();
    const pid_t sender = StartSender(job);
    RunResult result = Finish(sender, StartClient(lProfile), "the client");
    result.lStartToConnect = times_.lAccepted - lExecAt_;
    workplace_.Verify(job, bContent);
    std::error_code none;
    const auto nLog = std::filesystem::file_size(workplace_.Log(), none);
    result.lLogBytes = none ? 0 : static_cast<int64_t>(nLog);
    return result;
}

RunResult MeasuredRun::ClientAlone(const Job& job, int32_t lProfile) {
    workplace_.Clear();
    const ChildEnd ended = WaitFor(StartClient(lProfile));
    workplace_.Verify(job, false);
    RunResult result;
    result.lStartToEnd = ended.lEndedAt - lExecAt_;
    result.lNanoseconds = result.lStartToEnd;
    result.lPeakKiB = ended.lPeakKiB;
    return result;
}

RunResult MeasuredRun::PingPong(Receiver receiver, const Job& job) {
    workplace_.Clear();
    const pid_t sender = StartSender(job);
    const pid_t child =
        StartChild([&] { return ReceiveSession(receiver, Port(), job, workplace_.Received()); });
    const RunResult result = Finish(sender, child, "a ping-pong");
    if (receiver == Receiver::Checked)
        workplace_.Verify(job, false);
    return result;
}

pid_t MeasuredRun::StartSender(const Job& job) {
    times_ = {};
    return StartChild([&] { return ServeOneSession(listener_, job, times_); });
}

pid_t MeasuredRun::StartClient(int32_t lProfile) {
    return StartProgram({options_.strPrograms + "/brennikclient", "-configfiledir",
                         workplace_.Folder(), "-profileid", std::to_string(lProfile)},
                        &lExecAt_);
}

RunResult MeasuredRun::Finish(pid_t sender, pid_t receiver, const char* strWho) {
    const ChildEnd received = WaitFor(receiver);
    const ChildEnd sent = WaitFor(sender);
    if (!received.bGood || !sent.bGood || times_.lDone == 0)
        Fail(std::string("a session with ") + strWho + " did not come to its good end");
    RunResult result;
    result.lNanoseconds = times_.lDone - times_.lBegun;
    result.lStartToEnd = received.lEndedAt - lExecAt_;
    result.lPeakKiB = received.lPeakKiB;
    return result;
}

} // namespace brennik::bench
