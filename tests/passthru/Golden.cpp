#include "tests/passthru/Golden.h"

#include "platform/Host.h"

namespace brennik::passthru {

std::vector<std::string> Golden(const std::string& strName) {
    const auto stream = RealHost().files.OpenText(
        BRENNIK_SOURCE_DIR "/tests/passthru/golden/" + strName, OpenMode::Read);
    std::vector<std::string> lines;
    while (!stream->AtEndOfStream())
        lines.push_back(stream->ReadLine());
    return lines;
}

} // namespace brennik::passthru
