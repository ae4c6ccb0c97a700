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

    /// Closes in good order once all that was sent is out. A serial line knows no such thing: it is
    /// hung up then, and is there again at once for the next session.
    virtual void Close() = 0;

    /// Tears the connection down at once, so that the other end meets a reset. A serial line is
    /// hung up at once, and is there again at once for the next session.
    virtual void Reset() = 0;

    /// Hangs a serial line up at once, as if its plug were pulled: what is under way is lost, and
    /// the line is gone altogether until it comes back, so many microseconds from now, for the next
    /// session. On any other connection it is a reset, and the time means nothing: another
    /// connection can be made at once.
    virtual void HangUp(Microseconds /*back*/) { Reset(); }
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
