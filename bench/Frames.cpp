#include "bench/Frames.h"

#include "bench/ReferenceChecks.h"

#include <cstdio>
#include <random>

namespace brennik::bench {

namespace {

constexpr char kStx = 0x02;
constexpr char kEtx = 0x03;
constexpr size_t kBlocks = 4;

void AppendCheck(std::string& strFrame) {
    const uint16_t lCrc = SlicedCrc16<16>(std::string_view(strFrame).substr(1));
    strFrame += static_cast<char>(lCrc >> 8);
    strFrame += static_cast<char>(lCrc & 0xFF);
}

std::string PlainFrame(const std::string& strPayload) {
    std::string strFrame = kStx + strPayload + kEtx;
    AppendCheck(strFrame);
    return strFrame;
}

std::string WriteFrame(const std::string& strData) {
    std::string strFrame{kStx, 'W'};
    strFrame += static_cast<char>(strData.size() >> 8);
    strFrame += static_cast<char>(strData.size() & 0xFF);
    strFrame.append(4, '\0');
    strFrame += strData;
    AppendCheck(strFrame);
    return strFrame;
}

} // namespace

std::string FileNameOf(int64_t lFile) {
    char name[32];
    std::snprintf(name, sizeof name, "f%06lld.dt", static_cast<long long>(lFile));
    return name;
}

std::vector<std::string> DataBlocks(size_t nBlock) {
    std::mt19937 random(20261114);
    std::uniform_int_distribution<int> anyByte(0, 255);
    std::vector<std::string> blocks(kBlocks);
    for (std::string& strBlock : blocks) {
        strBlock.resize(nBlock);
        for (char& cByte : strBlock)
            cByte = static_cast<char>(anyByte(random));
    }
    return blocks;
}

std::vector<std::string> WriteFrames(size_t nBlock) {
    std::vector<std::string> frames;
    for (const std::string& strBlock : DataBlocks(nBlock))
        frames.push_back(WriteFrame(strBlock));
    return frames;
}

std::string OpenFrame(const std::string& strName, int64_t lSize) {
    char size[16];
    std::snprintf(size, sizeof size, "%08llX", static_cast<unsigned long long>(lSize));
    return PlainFrame(std::string("OD") + size + "00000000" + "20150522110000" + "XXXXXXXX" +
                      strName);
}

std::string CloseFrame() {
    return PlainFrame("C");
}

std::string SuccessFrame() {
    return PlainFrame("S");
}

} // namespace brennik::bench
