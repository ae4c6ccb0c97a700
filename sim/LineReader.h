// Cuts what arrives at a device into the things that it understands: control characters between
// frames, and frames. Any bytes in any cutting; what it keeps is bounded.
// Pure work on bytes, for real and in tests alike.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brennik::sim {

class LineReader {
  public:
    enum class Result {
        Nothing,    ///< all bytes are taken, and a frame may have begun
        Control,    ///< ENQ, ACK or NAK
        Frame,      ///< a whole frame with a right check
        WrongFrame, ///< a whole frame with a wrong check
        Other,      ///< bytes that mean nothing, or a frame that became too long
    };

    /// Takes bytes from the front, up to the end of the first thing in them, and says what it is.
    Result Next(std::string_view& strBytes);

    char cControl() const { return cControl_; }
    const std::string& strPayload() const { return strPayload_; }

    /// The last frame is a management message: its payload has that form, and its check is the one
    /// byte of such frames in place of two.
    bool bManagement() const { return bManagement_; }

    /// The number of bytes of the last Other.
    size_t nOther() const { return nOther_; }

    /// A frame has begun and isn't whole yet.
    bool bInFrame() const { return !strFrame_.empty(); }

    /// Forgets a frame that has begun.
    void Drop() { strFrame_.clear(); }

    /// Takes every frame for an ordinary one from now on, whatever the form of its payload; or not.
    void OrdinaryOnly(bool bOnly) { bOrdinaryOnly_ = bOnly; }

    /// Lets an ENQ ahead of the ETX break a plain frame off, or takes it for a part of the frame.
    /// An other end that polls has given up the frame that it had begun.
    void EnqEndsFrame(bool bEnds) { bEnqEndsFrame_ = bEnds; }

  private:
    Result BetweenFrames(std::string_view& strBytes);
    void Abandon();
    bool TakeUpTo(size_t nSize, std::string_view& strBytes);
    bool TakeFrame(std::string_view& strBytes);
    bool TakePlainFrame(std::string_view& strBytes);
    Result Check();

    std::string strFrame_; ///< from its start character on
    size_t nCovered_ = 0;  ///< bytes that the check covers, once that is known
    bool bOrdinaryOnly_ = false;
    bool bEnqEndsFrame_ = false;

    char cControl_ = 0;
    bool bManagement_ = false;
    size_t nOther_ = 0;
    std::string strPayload_;
};

} // namespace brennik::sim
