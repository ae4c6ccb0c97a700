#include "sim/ServicePackets.h"

#include "sim/Codec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_view_literals;
using sim::ServedFile;
using sim::ServedTree;
using sim::ServicePackets;
using testing::ElementsAre;
using Result = ServicePackets::Result;

std::vector<std::string> Payloads(const ServedTree& tree, size_t nBlock) {
    ServicePackets packets(std::make_shared<ServedTree>(tree), nBlock);
    std::vector<std::string> payloads;
    std::string strFrame;
    while (packets.Next(strFrame) == Result::Frame) {
        sim::FrameReader reader;
        EXPECT_EQ(reader.Add(strFrame), sim::FrameReader::Result::Good);
        payloads.push_back(reader.strPayload());
    }
    return payloads;
}

std::string Joined(const std::vector<std::string>& payloads) {
    std::string strData;
    for (const std::string& strPayload : payloads) {
        strData += strPayload[0] == 'W' ? strPayload.substr(7) : "";
    }
    return strData;
}

std::string Pattern(size_t nBytes) {
    std::string strBytes(nBytes, '\0');
    for (size_t n = 0; n < nBytes; ++n) {
        strBytes[n] = static_cast<char>(n * 7 + n / 251);
    }
    return strBytes;
}

TEST(ServicePackets, SendsAFileAsOpenWritesAndClose) {
    ServedTree tree;
    tree.AddFile("", "", "x.txt", "abcdefg");
    EXPECT_THAT(Payloads(tree, 3), ElementsAre("OD000000070000000020150522110000XXXXXXXXx.txt",
                                               "W\x00\x03\x00\x00\x00\x00"
                                               "abc"sv,
                                               "W\x00\x03\x00\x00\x00\x03"
                                               "def"sv,
                                               "W\x00\x01\x00\x00\x00\x06g"sv, "C"));
}

TEST(ServicePackets, SendsNoDataOfAnEmptyFile) {
    ServedTree tree;
    tree.AddFile("", "", "empty", "");
    EXPECT_THAT(Payloads(tree, 1024),
                ElementsAre("OD000000000000000020150522110000XXXXXXXXempty", "C"));
}

TEST(ServicePackets, EndsAWholeLastBlockWithoutAnEmptyOne) {
    ServedTree tree;
    tree.AddFile("", "", "x", "abcdef");
    EXPECT_EQ(Payloads(tree, 3).size(), 4U);
    EXPECT_EQ(Payloads(tree, 6).size(), 3U);
    EXPECT_EQ(Payloads(tree, 1).size(), 8U);
}

TEST(ServicePackets, TellsDrivesAndGroupsByEmptyFiles) {
    ServedTree tree;
    tree.AddGroup("F", "2");
    EXPECT_THAT(Payloads(tree, 3),
                ElementsAre("OD000000000000000020150522110000XXXXXXXXSETDRIVE.F", "C",
                            "OD000000000000000020150522110000XXXXXXXXSETGROUP.2", "C"));
}

TEST(ServicePackets, SendsVariablesAndMessages) {
    ServedTree tree;
    tree.AddVariable("NAME=a=b");
    tree.AddMessage("Please wait");
    EXPECT_THAT(Payloads(tree, 3), ElementsAre("LNAME\x1C"
                                               "a=b",
                                               "MPlease wait"));
}

TEST(ServicePackets, TellsTheDateOfTheFile) {
    ServedTree tree;
    ServedFile file;
    file.strName = "x";
    file.modified = {1999, 12, 31, 23, 59, 58};
    file.open = [] { return [](int64_t, char*, size_t) { return size_t{0}; }; };
    tree.AddFile("", "", file);
    EXPECT_EQ(Payloads(tree, 3).front(), "OD000000000000000019991231235958XXXXXXXXx");
}

TEST(ServicePackets, CutsLargeFilesCorrectlyAtEveryBlockSize) {
    const std::string strBytes = Pattern(300'001);
    ServedTree tree;
    tree.AddFile("", "", "x", strBytes);
    for (const size_t nBlock : {1U, 1000U, 1024U, 32767U, 32768U, 60000U, 65535U}) {
        const auto payloads = Payloads(tree, nBlock);
        EXPECT_EQ(payloads.size(), 2 + (strBytes.size() + nBlock - 1) / nBlock) << nBlock;
        EXPECT_TRUE(Joined(payloads) == strBytes) << nBlock;
    }
}

TEST(ServicePackets, KeepsNothingOfTheFileBefore) {
    ServedTree tree;
    tree.AddFile("", "", "first", "aaaaaa");
    tree.AddFile("", "", "second", "bbbb");
    EXPECT_EQ(Joined(Payloads(tree, 4)), "aaaaaabbbb");
}

TEST(ServicePackets, ReadsAheadInPiecesThatDoNotGrowWithTheFile) {
    size_t nLargest = 0;
    ServedTree tree;
    ServedFile file;
    file.strName = "big";
    file.lSize = int64_t{1} << 25;
    file.open = [&nLargest] {
        return [&nLargest](int64_t, char*, size_t nCount) {
            nLargest = std::max(nLargest, nCount);
            return nCount;
        };
    };
    tree.AddFile("", "", file);
    ServicePackets packets(std::make_shared<ServedTree>(tree), 4096);
    std::string strFrame;
    while (packets.Next(strFrame) == Result::Frame) {
    }
    EXPECT_EQ(nLargest, 262144U);
    EXPECT_EQ(packets.lDataBytes(), file.lSize);
    EXPECT_EQ(packets.lFilesClosed(), 1);
}

TEST(ServicePackets, FailsWhenAFileCannotBeOpened) {
    ServedTree tree;
    ServedFile file;
    file.strName = "gone";
    file.lSize = 5;
    file.open = [] { return sim::ReadAt(); };
    tree.AddFile("", "", file);
    tree.AddFile("", "", "later", "x");
    ServicePackets packets(std::make_shared<ServedTree>(tree), 16);
    std::string strFrame;
    EXPECT_EQ(packets.Next(strFrame), Result::ReadFailed);
    EXPECT_EQ(packets.Next(strFrame), Result::NoMore);
}

TEST(ServicePackets, FailsWhenAFileIsShorterThanListed) {
    for (const size_t nBlock : {16U, 40000U}) {
        ServedTree tree;
        ServedFile file;
        file.strName = "shrunk";
        file.lSize = 50000;
        file.open = [] { return [](int64_t, char*, size_t) { return size_t{3}; }; };
        tree.AddFile("", "", file);
        ServicePackets packets(std::make_shared<ServedTree>(tree), nBlock);
        std::string strFrame;
        EXPECT_EQ(packets.Next(strFrame), Result::Frame);
        EXPECT_EQ(packets.Next(strFrame), Result::ReadFailed);
        EXPECT_EQ(packets.Next(strFrame), Result::NoMore);
    }
}

} // namespace
} // namespace brennik
