#include "bench/Options.h"

#include "bench/Processes.h"

#include <charconv>
#include <cstdio>
#include <string_view>

namespace brennik::bench {

Options Options::Read(int argc, char** argv) {
    Options options;
    for (int nArgument = 1; nArgument < argc; ++nArgument) {
        const std::string_view strArgument = argv[nArgument];
        const size_t nEquals = strArgument.find('=');
        const std::string_view strName = strArgument.substr(0, nEquals);
        const std::string_view strValue =
            nEquals == std::string_view::npos ? "" : strArgument.substr(nEquals + 1);
        if (strName == "--programs")
            options.strPrograms = strValue;
        else if (strName == "--folder")
            options.strParent = strValue;
        else if (strName == "--rounds")
            std::from_chars(strValue.data(), strValue.data() + strValue.size(), options.lRounds);
        else if (strName == "--quick")
            options.bQuick = true;
        else if (strName == "--peers")
            options.bPeers = true;
        else
            Fail("unknown option " + std::string(strArgument));
    }
    if (options.strPrograms.empty() || options.strParent.empty() || options.lRounds < 1)
        Fail("usage: DRIVER --programs=DIR --folder=DIR [--rounds=N] [--quick] [--peers]");
    return options;
}

void Print(const RawFigure& figure) {
    std::printf("%s\t%zu\t%s\t%d\t%lld\t%lld\t%lld\t%lld\n", figure.strFigure.c_str(), figure.nSize,
                figure.strVariant.c_str(), figure.lRound, static_cast<long long>(figure.lCount),
                static_cast<long long>(figure.lNanoseconds),
                static_cast<long long>(figure.lPeakKiB), static_cast<long long>(figure.lBytes));
    std::fflush(stdout);
}

} // namespace brennik::bench
