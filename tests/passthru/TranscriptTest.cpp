// The transcript of a pass-through cycle in docs/wire-format.md is what a run really does.
#include "tests/passthru/PassThruWorld.h"

#include <sstream>

namespace brennik::passthru {
namespace {

/// What the document shows between "```transcript" and the end of the block.
std::string DocumentedTranscript() {
    const auto stream =
        RealHost().files.OpenText(BRENNIK_SOURCE_DIR "/docs/wire-format.md", OpenMode::Read);
    std::string strText;
    bool bInside = false;
    while (!stream->AtEndOfStream()) {
        const std::string strLine = stream->ReadLine();
        if (strLine.rfind("```", 0) == 0) {
            bInside = strLine == "```transcript";
        } else if (bInside) {
            strText += strLine + "\n";
        }
    }
    return strText;
}

/// A payload in a few words.
std::string Told(const std::string& strHeard) {
    if (strHeard.front() != '[')
        return strHeard;
    switch (strHeard[1]) {
    case 'O':
        return "open file a.bin, 4 bytes";
    case 'W':
        return "write data, 4 bytes";
    case 'C':
        return "close file";
    case 'S':
        return "session successful";
    default:
        return strHeard.substr(1, strHeard.size() - 2);
    }
}

class Transcript : public PassThruTest {};

TEST_F(Transcript, OfADownloadIsWhatTheDocumentShows) {
    Download("XDL", "F");
    device.On("[" + session::Write("data") + "]", {"\x15", "\x06"});
    server.On("NAK", {CrcFrame(session::Write("data"))});
    ASSERT_EQ(Run(), 0);
    std::ostringstream text;
    for (const std::string& strHeard : wires) {
        const bool bDevice = strHeard.front() == 'D';
        const std::string strWhat = strHeard.substr(2);
        // Nothing but the polling is the program's own: all else is what the other end has sent,
        // the request with the profile's values in it.
        const std::string strFrom = strWhat == "ENQ" ? "program" : bDevice ? "server" : "device";
        std::string strLine = strFrom + " to " + (bDevice ? "device" : "server");
        strLine.resize(20, ' ');
        text << strLine << Told(strWhat) << "\n";
    }
    EXPECT_EQ(DocumentedTranscript(), text.str());
    // The origin of each answer: as many as the other end has sent.
    EXPECT_EQ(server.Count("ACK") + server.Count("NAK"), 5);
    EXPECT_EQ(device.Count("ACK"), 1);
}

} // namespace
} // namespace brennik::passthru
