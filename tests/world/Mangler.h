// What the wire of the simulated network does to bytes on their way: nothing without a mangler.
// One stands between both ends of every connection; it may split, join, delay, drop, double and
// flip. Order is kept: what is put out later never arrives earlier.
#pragma once

#include "tests/world/SimTimeline.h"

#include <string_view>

namespace brennik::world {

enum class Direction { ToServer, ToClient };

/// Where a mangler puts what comes out of the wire.
class Outlet {
  public:
    virtual ~Outlet() = default;

    /// Lets the bytes arrive as one piece, `delay` microseconds later than the latency alone.
    /// Pieces that arrive at the same moment are received as one.
    virtual void Put(std::string_view strBytes, Microseconds delay = 0) = 0;
};

class Mangler {
  public:
    virtual ~Mangler() = default;

    /// One write of either end. What isn't put out is lost, unless kept and put out with a later
    /// write.
    virtual void Pass(Direction direction, std::string_view strBytes, Outlet& outlet) = 0;
};

} // namespace brennik::world
