// What bench/run tells a driver, as options --name=value, and the lines in which a driver tells
// its raw figures: one per run, fields parted by tabs, read by bench/report.py.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace brennik::bench {

struct Options {
    std::string strPrograms; ///< the folder with brennikclient, brenniksim and bare_connect
    std::string strParent;   ///< where the workplace is made
    int lRounds = 7;         ///< paired runs of each figure
    bool bQuick = false;     ///< a smoke run: everything happens, nothing is big
    bool bPeers = false;     ///< beside other programs, where a driver knows some

    static Options Read(int argc, char** argv);
};

/// One run: lCount things took lNanoseconds. strFigure and nSize name the figure, strVariant which
/// of its sides this is; runs of one lRound make a pair.
struct RawFigure {
    std::string strFigure;
    size_t nSize = 0;
    std::string strVariant;
    int lRound = 0;
    int64_t lCount = 0;
    int64_t lNanoseconds = 0;
    int64_t lPeakKiB = 0;
    int64_t lBytes = 0; ///< of the log or of a file, where the figure has one
};

void Print(const RawFigure& figure);

} // namespace brennik::bench
