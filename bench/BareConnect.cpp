// bare_connect PORT: a program that does nothing but connect to 127.0.0.1, so that the start of
// the real one has something to be compared with.

#include "bench/PingPong.h"

#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    brennik::bench::ConnectTo(static_cast<uint16_t>(std::atoi(argv[1])));
    return 0;
}
