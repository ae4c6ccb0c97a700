// The source tree as the lint tests see it: every C++ file with its path and its text.
// Read from the disk once; the tests of the rules make files of their own in its place.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brennik::lint {

struct SourceFile {
    std::string strPath; ///< from the root of the tree, with "/"
    std::string strText;
};

/// Every .h and .cpp below src, sim, tests, bench and fuzz, in the order of their paths.
std::vector<SourceFile> ReadSourceTree(const std::string& strRoot);

/// The text of one file below the root; empty when there is none.
std::string ReadTextFile(const std::string& strRoot, std::string_view strPath);

/// The text with what stands inside string and character literals made blank, and comments too
/// unless they are to be kept. Line ends stay, so that line numbers hold.
std::string BlankOutLiterals(std::string_view strText, bool bKeepComments);

std::vector<std::string> SplitLines(std::string_view strText);

} // namespace brennik::lint
