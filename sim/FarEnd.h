// A far end of a connection as a plain state machine: it is told what happened and when, and says
// what it does through the wire that it is given. It owns no socket and no clock.
// For real brenniksim drives it from a poll loop (sim/host/); tests drive it in virtual time.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace brennik::sim {

/// Microseconds of some steady clock whose zero is of no meaning.
using Microseconds = int64_t;

/// What a far end can do to its connection. Lent for the length of one call.
class Wire {
  public:
    virtual ~Wire() = default;

    /// Puts bytes on the wire, behind all that was put there before.
    virtual void Send(std::string_view strBytes) = 0;

    /// Closes in good order once all that was sent is out.
    virtual void Close() = 0;

    /// Tears the connection down at once, so that the other end meets a reset.
    virtual void Reset() = 0;
};

class FarEnd {
  public:
    virtual ~FarEnd() = default;

    /// A connection was made (a line came up). Called once, before anything else.
    virtual void Connected(Wire& wire, Microseconds now) = 0;

    /// Bytes arrived, in any cutting.
    virtual void Received(Wire& wire, Microseconds now, std::string_view strBytes) = 0;

    /// The moment that NextDeadline named has come.
    virtual void Elapsed(Wire& wire, Microseconds now) = 0;

    /// The other end has gone; nothing is called after this.
    virtual void Disconnected(Microseconds now) = 0;

    /// When Elapsed is due next, if at all.
    virtual std::optional<Microseconds> NextDeadline() const = 0;
};

} // namespace brennik::sim
