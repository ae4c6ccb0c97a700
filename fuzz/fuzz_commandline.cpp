// The raw command line: any text, searched for every option.
#include "fuzz/Require.h"
#include "shell/CommandLine.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace brennik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string strCmdLine(reinterpret_cast<const char*>(data), size);
    for (const char* strName : {"-help", "-configfiledir", "-profileid", "-comport", "-a", ""}) {
        std::string strValue;
        const int16_t iResult = GetCommandLineArg(strName, strValue, strCmdLine);
        fuzz::Require(iResult == 0 || iResult == 1, "present or absent");
        fuzz::Require(strValue.size() <= size, "no value is longer than the line");
        if (strCmdLine.find(strName) == std::string::npos)
            fuzz::Require(iResult == 1, "what does not occur is absent");
    }
    const std::string strJoined = CommandLineFromArguments({"-a", strCmdLine, "-b", "1"});
    std::string strValue;
    if (!strCmdLine.empty() && strCmdLine.find(' ') != std::string::npos &&
        strCmdLine.front() != '"' && strCmdLine.front() != '-' &&
        strCmdLine.find("-a") == std::string::npos) {
        fuzz::Require(GetCommandLineArg("-a", strValue, strJoined) == 0 && strValue == strCmdLine,
                      "an argument with blanks comes through as it is");
    }
    return 0;
}
