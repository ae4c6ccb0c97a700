#include "bench/MeasuredRun.h"

#include <algorithm>
#include <filesystem>

namespace brennik::bench {

namespace {

constexpr int64_t kFewestFrames = 200;

} // namespace

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

RunResult MeasuredRun::InWindows(const Job& job) {
    workplace_.Clear();
    WindowUser user(workplace_.Folder());
    const pid_t sender = StartSender(job);
    const pid_t client = StartProgram({options_.strPrograms + "/brennikclient"}, &lExecAt_);
    user.RunFirstProfile();
    // Nobody looks for a window while the session goes on: that would take its time from it.
    const ChildEnd sent = WaitFor(sender);
    user.CloseBoxAndQuit();
    const RunResult result = ResultOf(sent, WaitFor(client), "the client in windows");
    workplace_.Verify(job, false);
    return result;
}

// As many frames as the bare ping-pong makes in that time.
Job MeasuredRun::JobLasting(double dSeconds, size_t nBlock) {
    Job job{1, 400, nBlock};
    const RunResult trial = PingPong(Receiver::Bare, job);
    const double dFrames = dSeconds * 1e9 * static_cast<double>(job.DataFrames()) /
                           static_cast<double>(trial.lNanoseconds);
    job.lBlocksOfFile = std::clamp<int64_t>(static_cast<int64_t>(dFrames), kFewestFrames,
                                            kMostBytesOfRun / static_cast<int64_t>(nBlock));
    return job;
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
    return ResultOf(WaitFor(sender), received, strWho);
}

RunResult MeasuredRun::ResultOf(const ChildEnd& sent, const ChildEnd& received,
                                const char* strWho) {
    if (!received.bGood || !sent.bGood || times_.lDone == 0)
        Fail(std::string("a session with ") + strWho + " did not come to its good end");
    RunResult result;
    result.lNanoseconds = times_.lDone - times_.lBegun;
    result.lStartToEnd = received.lEndedAt - lExecAt_;
    result.lPeakKiB = received.lPeakKiB;
    return result;
}

} // namespace brennik::bench
