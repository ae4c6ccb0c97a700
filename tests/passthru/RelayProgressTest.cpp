// What a relay shows of the frames that it has passed on: name, size and bytes of the file under
// way, and what the engine is at.
#include "tests/passthru/PassThruWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using session::Open;
using session::Write;
using ::testing::ElementsAre;

// "B" has no frame of its own, so that its length field may say what it likes: 9 for 4 bytes here.
const std::string kBlock("B\0\x09\0\0\0\0data", 11);

class RelayProgress : public PassThruTest {
  protected:
    /// A partial download of these payloads, which the session's end follows.
    void RunDownload(std::vector<std::string> payloads) {
        payloads.emplace_back("S");
        Ask(DeviceRequest("XDL", "P"));
        Serve(EditedRequest("XDL", "P"), payloads);
        EXPECT_EQ(Run(), 0);
    }
    void RunUpload(std::vector<std::string> payloads) {
        payloads.emplace_back("S");
        Upload(payloads);
        EXPECT_EQ(Run(), 0);
    }
    void ExpectProgress(const std::string& strName, int32_t lSize, int32_t lBytes,
                        BrennikState lState) const {
        EXPECT_EQ(engine->strDownloadFileName(), strName);
        EXPECT_EQ(engine->lDownloadFileSize(), lSize);
        EXPECT_EQ(engine->lFileBytesDownloaded(), lBytes);
        EXPECT_EQ(engine->lCurrentState(), lState);
    }
};

TEST_F(RelayProgress, TheBytesOfSeveralWritesAddUp) {
    RunDownload({Open("a.bin", 20), Write("data"), Write("more data", 4), Write("")});
    ExpectProgress("a.bin", 20, 13, BrennikState::DownloadingFile);
}

TEST_F(RelayProgress, ASecondFileBeginsAtNothing) {
    RunDownload({Open("a.bin", 4), Write("data"), "C", Open("b.bin", 6), Write("ab")});
    ExpectProgress("b.bin", 6, 2, BrennikState::DownloadingFile);
}

TEST_F(RelayProgress, ASecondFileWithoutDataHasNoBytes) {
    RunDownload({Open("a.bin", 4), Write("data"), "C", Open("b.bin", 6)});
    ExpectProgress("b.bin", 6, 0, BrennikState::DownloadingFile);
}

TEST_F(RelayProgress, AnAppendedFileIsShownAsAnyOther) {
    RunDownload({Open("a.bin", 4), Write("data"), "C", Open("b.bin", 6, 'A')});
    ExpectProgress("b.bin", 6, 0, BrennikState::DownloadingFile);
}

TEST_F(RelayProgress, AnAppendedFileAloneSetsTheState) {
    RunUpload({Open("b.bin", 6, 'A')});
    ExpectProgress("b.bin", 6, 0, BrennikState::UploadingFile);
}

TEST_F(RelayProgress, ABlockCountsWithTheLengthThatItStates) {
    RunDownload({Open("a.bin", 20), kBlock, Write("data")});
    ExpectProgress("a.bin", 20, 13, BrennikState::DownloadingFile);
    EXPECT_EQ(device.Count("[" + kBlock + "]"), 1);
}

TEST_F(RelayProgress, AWriteWithoutAnOpenFileSetsTheState) {
    RunDownload({Write("data")});
    ExpectProgress("", 0, 4, BrennikState::DownloadingFile);
}

TEST_F(RelayProgress, AWriteWithoutAnOpenFileSetsTheStateOfAnUpload) {
    RunUpload({Write("data"), Write("ab", 4)});
    ExpectProgress("", 0, 6, BrennikState::UploadingFile);
}

const std::vector<std::string> kOthers{"MHello", "LX\x1AY",   "Ppassword", "T20261114120000",
                                       "C",      "D\x04/tmp", "S"};

TEST_F(RelayProgress, OtherFramesShowNothing) {
    RunDownload({kOthers.begin(), kOthers.end() - 1});
    ExpectProgress("", 0, 0, BrennikState::Idle);
    EXPECT_EQ(device.Payloads(), kOthers) << "passed on all the same";
}

TEST_F(RelayProgress, OtherFramesLeaveWhatIsShown) {
    std::vector<std::string> payloads{Open("a.bin", 20), Write("data")};
    payloads.insert(payloads.end(), kOthers.begin(), kOthers.end() - 1);
    RunDownload(payloads);
    ExpectProgress("a.bin", 20, 4, BrennikState::DownloadingFile);
}

TEST_F(RelayProgress, BehindARefusedEnquiryItIsShownToo) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]",
              {Saying("\x06" + CrcFrame(Open("a.bin", 20)))});
    server.On("ACK", {"", CrcFrame(Write("data")), CrcFrame(Write("more", 4)), CrcFrame("C"),
                      CrcFrame("S")});
    EXPECT_EQ(Run(), 1);
    ExpectProgress("a.bin", 20, 8, BrennikState::UploadingFile);
}

TEST_F(RelayProgress, BehindARefusedEnquiryASecondFileBeginsAtNothing) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame(Open("a.bin", 4)))});
    server.On("ACK", {"", CrcFrame(Write("data")), CrcFrame(Open("b.bin", 6)), CrcFrame("S")});
    EXPECT_EQ(Run(), 1);
    ExpectProgress("b.bin", 6, 0, BrennikState::UploadingFile);
}

// ---- Frames that can't be shown: they are passed on, and the relay ends.

TEST_F(RelayProgress, AnUploadEndsBehindAFrameThatItDoesNotUnderstand) {
    for (const std::string strPayload : {"X", ""}) {
        wires.clear();
        Upload({strPayload, "S"});
        EXPECT_EQ(Run(), 1);
        ExpectError(1000022, "Unknown brennik packet type");
        EXPECT_THAT(Lines(wires.end() - 2, wires.end()),
                    ElementsAre("S:[" + strPayload + "]", "D:ACK"));
        EXPECT_EQ(server.Count("[S]"), 0);
    }
}

TEST_F(RelayProgress, ARelayEndsBehindAnOpenFileFrameThatIsTooShort) {
    const std::string strShort = Open("", 4).substr(0, 39);
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {Open("a.bin", 20), strShort, "S"});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000000, "TBrennikPacket.BreakOutOpenFilePacket() Failed - Type mismatch");
    EXPECT_THAT(Lines(wires.end() - 2, wires.end()), ElementsAre("D:[" + strShort + "]", "S:ACK"));
    ExpectProgress("a.bin", 20, 0, BrennikState::DownloadingFile);
    EXPECT_EQ(LogWith("[B]").size(), 1u);
}

TEST_F(RelayProgress, AnOpenFileFrameWithoutANameIsLongEnough) {
    RunDownload({Open("", 4)});
    ExpectProgress("", 4, 0, BrennikState::DownloadingFile);
}

} // namespace
} // namespace brennik::passthru
