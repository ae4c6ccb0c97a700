// One session between the frame sender and one receiver, each in its own process: either the real
// brennikclient or a ping-pong. The sender keeps the time.
#pragma once

#include "bench/FrameSender.h"
#include "bench/Options.h"
#include "bench/PingPong.h"
#include "bench/Processes.h"
#include "bench/WindowUser.h"
#include "bench/Workplace.h"

#include <optional>
#include <string>

namespace brennik::bench {

/// What a run brings at most: nothing is gained by more.
inline constexpr int64_t kMostBytesOfRun = int64_t{96} << 20;

struct RunResult {
    int64_t lNanoseconds = 0;    ///< from the first data frame to the last ACK, by the sender
    int64_t lStartToConnect = 0; ///< nanoseconds from exec to the connection; for the client only
    int64_t lStartToEnd = 0;     ///< nanoseconds from exec to the end of the process; likewise
    int64_t lPeakKiB = 0;        ///< of the receiver
    int64_t lLogBytes = 0;       ///< what the run added to the log
};

class MeasuredRun {
  public:
    /// Both are borrowed for as long as this lives.
    MeasuredRun(const Options& options, Workplace& workplace);

    uint16_t Port() const { return listener_.Port(); }

    /// A session of the real program with the profile of this number in the configuration file.
    /// What it received is compared with what was sent; with bContent every byte.
    RunResult Client(const Job& job, int32_t lProfile, bool bContent = false);

    /// The same with another service, named by the profile; lNanoseconds is the client's whole
    /// time.
    RunResult ClientAlone(const Job& job, int32_t lProfile);

    /// A session of the real program in windows, with the first profile. The time is that of the
    /// session, as ever: neither start nor end of the windows is in it.
    RunResult InWindows(const Job& job);

    /// A job of one file that lasts about so long with a bare ping-pong.
    Job JobLasting(double dSeconds, size_t nBlock);

    RunResult PingPong(Receiver receiver, const Job& job);

  private:
    pid_t StartSender(const Job& job);
    pid_t StartClient(int32_t lProfile);
    RunResult Finish(pid_t sender, pid_t receiver, const char* strWho);
    RunResult ResultOf(const ChildEnd& sent, const ChildEnd& received, const char* strWho);

    const Options& options_;
    Workplace& workplace_;
    Listener listener_;
    SenderTimes& times_;
    int64_t& lExecAt_;
};

} // namespace brennik::bench
