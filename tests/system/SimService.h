// The program brenniksim as a child process, and the steps of a client that is made by hand.
// What stands behind it is the program itself; nothing here shares code with it or with the client.
#pragma once

#include "tests/system/PlainPeer.h"
#include "tests/system/ProgramRun.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik::system_tests {

/// Frames, worked out by hand: the request of the client below, and the variable "A=B".
inline constexpr std::string_view kRequest = "\x02VFI,P,XDL,F,A,T,E,16,0,P,R,C\x03\xCB\xE8";
inline constexpr std::string_view kVariable = "\x02LA\x1C"
                                              "B\x03\x05\x81";

struct Ended {
    int nExit;
    std::string strOutput;
    std::string strErrors;
};

/// Runs brenniksim to its end.
Ended RunSim(std::vector<std::string> arguments);

/// A running command of it whose first line has been read. It ends as any ProgramRun does.
class SimProgram {
  public:
    SimProgram(const std::string& strCommand, std::vector<std::string> arguments,
               const std::function<void()>& inChild = {});

    /// What the first line names as the place where it listens.
    std::string strListening() const;

    ProgramRun& Program() { return program_; }

    /// What it printed behind the first line.
    std::string strReport() const { return program_.strOut().substr(nFirstLine()); }

  private:
    size_t nFirstLine() const { return program_.strOut().find('\n') + 1; }

    ProgramRun program_;
};

class SimService : public SimProgram {
  public:
    explicit SimService(std::vector<std::string> arguments,
                        const std::function<void()>& inChild = {})
        : SimProgram("service", std::move(arguments), inChild) {}

    /// The port of an address and port of this machine.
    uint16_t iPort() const;
};

class SimDevice : public SimProgram {
  public:
    explicit SimDevice(std::vector<std::string> arguments)
        : SimProgram("device", std::move(arguments)) {}
};

/// Reads ENQ, makes the request and reads its ACK.
void Begin(PlainPeer& peer);

/// Reads a frame of a known size, acknowledges it and gives its payload.
std::string TakePayload(PlainPeer& peer, size_t nPayload, bool bWrite = false);

} // namespace brennik::system_tests
