// The program brenniksim as one end of a measurement: started, listening, and gone at the end.
// It is a child process with a far end in it; nothing stands in its place.
#pragma once

#include "bench/Options.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace brennik::bench {

class SimProcess {
  public:
    /// Starts the command with its options and "--quiet", and reads where it listens.
    SimProcess(const Options& options, const std::vector<std::string>& command);
    ~SimProcess();
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    /// When it has ended by itself, as with "--once".
    int64_t AwaitEnd();

    const std::string& strListening() const { return strListening_; }

    /// The port of an address and port.
    uint16_t Port() const;

  private:
    pid_t process_ = -1;
    std::string strListening_;
};

} // namespace brennik::bench
