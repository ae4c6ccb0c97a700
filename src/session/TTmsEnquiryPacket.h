// The enquiry with which a device in TMS mode opens its conversation, and the reply that refuses
// it: one record of comma-separated fields each. Plain text work, used as it is.
#pragma once

#include <string>

namespace brennik {

/// The two edits rebuild the packet, which trims fields and quotes them anew; one of too few
/// fields stays as it is.
class TTmsEnquiryPacket {
  public:
    void SubstituteTerminalId(const std::string& strTerminalId, std::string& strPacket);
    void SubstituteApplicationId(const std::string& strApplicationID, std::string& strPacket);

    /// True for a reply that tells an error, whose text is then strErrorMessage. One without the
    /// field of the text is thrown to the caller as a SubscriptOutOfRange, since this operation
    /// has no catch-all.
    bool IsErrorPacket(const std::string& strPacket);

    /// The text of the last error reply.
    const std::string& strErrorMessage() const { return strErrorMessage_; }

  private:
    std::string strErrorMessage_;
};

} // namespace brennik
