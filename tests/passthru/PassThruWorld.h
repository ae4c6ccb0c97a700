// A whole pass-through run in the simulated host: a service over TCP, the program, and a device on
// a serial line, the two ends played by a test. Both note what they hear into one list, so that the
// order over both wires shows.
#pragma once

#include "config/TBrennikClientConfig.h"
#include "session/TBrennikProtocol.h"
#include "tests/passthru/Device.h"
#include "tests/session/Packets.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace brennik::passthru {

using world::kMillisecond;
using world::kSecond;
using world::Op;
using Lines = std::vector<std::string>;

/// What a device of another shop asks for; what is made of it with the values of the profile.
std::string DeviceRequest(const std::string& strKeyword, const std::string& strKind);
std::string EditedRequest(const std::string& strKeyword, const std::string& strKind);

inline const std::string kEnquiry = "3.9,9,Q,a,b,c,d,e,DTID,f,DAPP";
inline const std::string kEditedEnquiry = "3.9,9,Q,a,b,c,d,e,T1,f,APP";

/// The server's replies to it.
inline const std::string kAccepted = "3.9,9,A,a,b,c,d,e,fine";
inline const std::string kRefused = "3.9,9,E,a,b,c,d,e,not known";

inline constexpr const char* kDownloadCommand = "3.9,2,U,Q,0,0,,,T,";
inline constexpr const char* kStatusQuery = "3.9,0,LS,Q,0,0,,,";
inline constexpr const char* kReadyReply = "3.9,0,LS,Q,0,0,,,R";

class PassThruTest : public world::WorldTest {
  protected:
    PassThruTest();

    /// The device asks so when it is polled for the next time, and acknowledges every frame.
    void Ask(const std::string& strRequest);
    /// The server answers that request with ACK and the first payload, and each ACK with the next.
    void Serve(const std::string& strRequest, const std::vector<std::string>& payloads);
    /// Both: one whole download of a small file that ends with that packet.
    void Download(const std::string& strKeyword, const std::string& strKind,
                  const std::string& strEnd = "S");
    /// The profile wants an upload; the device agrees, asks for it, and sends the first payload
    /// behind the ACK of its request, each further one behind that of the one before. The server
    /// acknowledges every frame.
    void Upload(const std::vector<std::string>& payloads);
    /// The profile has the device told to download; it agrees each time and asks so.
    void TellToDownload(const std::string& strRequest = DeviceRequest("XDL", "F"));
    /// The profile forces a full download; the device replies so, and asks for one when it agreed.
    void ForceFullDownload(const std::string& strReply = "3.9,1,T,Q,0,0,,,A");
    /// The profile has a local list of one file, for which the device asks when it is polled.
    void AskForLocalList();
    /// The device asks by an enquiry when it is polled for the next time, to which the server
    /// gives that reply.
    void Enquire(const std::string& strReply);
    /// The server refuses the enquiry and the device acknowledges every frame; behind the refusal
    /// it asks for a partial download.
    void FallBack();
    /// Behind the end of a session the device answers status queries, and is polled again behind
    /// its first answer.
    void AnswerStatusQueries();

    /// A cancel is asked for as soon as that is heard, told as in the list of the wires.
    void CancelAt(const std::string& strHeard);

    /// The state that only has a name never stands in the log of a run.
    int32_t Run();
    /// Another run of the same engine.
    int32_t RunAgain();

    /// The log without dates and tags; "INFO   : " is left out.
    Lines Log() const;
    Lines LogWith(const std::string& strPart) const;
    void ExpectError(int32_t lCode, const std::string& strText) const;
    /// Nothing of the run is left open.
    void ExpectNothingOpen() const;

    /// What both ends heard, "S:" or "D:" in front; the polls of a device are told once.
    Lines wires;

    TBrennikClientConfig config;
    Device& device;
    Device server{host.timeline};
    std::unique_ptr<TBrennikProtocol> engine;
    world::SimLine& Line() { return host.comPorts.Line("COM2"); }
    int32_t nServerConnections = 0;

  private:
    class ServerEnd;
};

} // namespace brennik::passthru
