// send_frames BLOCKS BLOCKSIZE: the frame sender as a program, for one session with one file. The
// first line on its standard output is the port of 127.0.0.1 on which it waits.

#include "bench/FrameSender.h"
#include "bench/Processes.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

int main(int argc, char** argv) {
    using namespace brennik::bench;
    if (argc != 3)
        Fail("usage: send_frames BLOCKS BLOCKSIZE");
    const Job job{1, std::atoll(argv[1]), static_cast<size_t>(std::atoll(argv[2]))};
    ::alarm(kLongestChildSeconds);
    const Listener listener;
    std::printf("%u\n", unsigned{listener.Port()});
    std::fflush(stdout);
    SenderTimes times;
    return ServeOneSession(listener, job, times);
}
