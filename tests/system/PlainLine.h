// A plain serial line by which a test talks to a program of ours with bytes made by hand.
// Nothing here sleeps; every wait is for an event, with a generous limit.
#pragma once

#include "tests/system/PlainPeer.h"

#include <string>
#include <string_view>

namespace brennik::system_tests {

/// A line opened at once, its settings left as they are. Its only end is "(hung up)".
class PlainLine : public PlainPeer {
  public:
    explicit PlainLine(const std::string& strPath);

    void Send(std::string_view strBytes) override;

    /// Sets the line to a usual rate in bits per second and to pass bytes as they are, throwing
    /// nothing away.
    void SetRaw(int nRate = 115200);

    /// Sets it to what a person at a keyboard needs: lines, echo, translated line ends.
    void SetCooked();

    /// Bytes that have come and aren't read yet.
    int nWaiting() const;

    /// Takes the line for itself alone, for good.
    void TakeForItself();

  private:
    std::string_view EndName(bool bInOrder) const override;
};

} // namespace brennik::system_tests
