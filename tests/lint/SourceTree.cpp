#include "tests/lint/SourceTree.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace brennik::lint {

namespace {

bool IsWordCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

/// Walks over a text and blanks out what is inside literals and comments.
class Blanker {
  public:
    Blanker(std::string_view strText, bool bKeepComments)
        : strText_(strText), bKeepComments_(bKeepComments) {}

    std::string Run() {
        while (nPosition_ < strText_.size()) {
            if (StartsHere("//")) {
                PassComment(strText_.find('\n', nPosition_), 0);
            } else if (StartsHere("/*")) {
                PassComment(strText_.find("*/", nPosition_ + 2), 2);
            } else if (StartsHere("R\"") && !FollowsWord()) {
                PassRawString();
            } else if (strText_[nPosition_] == '"') {
                PassQuoted('"');
            } else if (strText_[nPosition_] == '\'' && !FollowsNumber()) {
                PassQuoted('\'');
            } else {
                strResult_ += strText_[nPosition_++];
            }
        }
        return std::move(strResult_);
    }

  private:
    bool StartsHere(std::string_view strMark) const {
        return strText_.substr(nPosition_).starts_with(strMark);
    }

    bool FollowsWord() const { return nPosition_ > 0 && IsWordCharacter(strText_[nPosition_ - 1]); }

    /// A quote inside a number separates its digits.
    bool FollowsNumber() const {
        size_t nStart = nPosition_;
        while (nStart > 0 &&
               (IsWordCharacter(strText_[nStart - 1]) || strText_[nStart - 1] == '\'')) {
            --nStart;
        }
        return nStart < nPosition_ && strText_[nStart] >= '0' && strText_[nStart] <= '9';
    }

    void CopyTo(size_t nEnd) {
        strResult_ += strText_.substr(nPosition_, nEnd - nPosition_);
        nPosition_ = nEnd;
    }

    void BlankTo(size_t nEnd) {
        for (; nPosition_ < nEnd; ++nPosition_) {
            strResult_ += strText_[nPosition_] == '\n' ? '\n' : ' ';
        }
    }

    void PassComment(size_t nFound, size_t nMarkLength) {
        const size_t nEnd =
            nFound == std::string_view::npos ? strText_.size() : nFound + nMarkLength;
        if (bKeepComments_) {
            CopyTo(nEnd);
        } else {
            BlankTo(nEnd);
        }
    }

    void PassRawString() {
        const size_t nOpen = std::min(strText_.find('(', nPosition_), strText_.size());
        std::string strClosing = ")";
        strClosing += strText_.substr(nPosition_ + 2, nOpen - nPosition_ - 2);
        strClosing += '"';
        const size_t nClose = strText_.find(strClosing, nOpen);
        BlankTo(nClose == std::string_view::npos ? strText_.size() : nClose + strClosing.size());
    }

    void PassQuoted(char cQuote) {
        strResult_ += strText_[nPosition_++];
        size_t nEnd = nPosition_;
        while (nEnd < strText_.size() && strText_[nEnd] != cQuote && strText_[nEnd] != '\n') {
            nEnd += strText_[nEnd] == '\\' ? 2 : 1;
        }
        BlankTo(std::min(nEnd, strText_.size()));
        if (nPosition_ < strText_.size()) {
            strResult_ += strText_[nPosition_++];
        }
    }

    std::string_view strText_;
    bool bKeepComments_;
    size_t nPosition_ = 0;
    std::string strResult_;
};

} // namespace

std::string BlankOutLiterals(std::string_view strText, bool bKeepComments) {
    return Blanker(strText, bKeepComments).Run();
}

std::vector<std::string> SplitLines(std::string_view strText) {
    std::vector<std::string> strLines;
    while (!strText.empty()) {
        const size_t nEnd = std::min(strText.find('\n'), strText.size());
        strLines.emplace_back(strText.substr(0, nEnd));
        strText.remove_prefix(std::min(nEnd + 1, strText.size()));
    }
    return strLines;
}

std::string ReadTextFile(const std::string& strRoot, std::string_view strPath) {
    std::ifstream stream(std::filesystem::path(strRoot) / strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<SourceFile> ReadSourceTree(const std::string& strRoot) {
    std::vector<SourceFile> files;
    for (const char* strFolder : {"src", "sim", "tests", "bench", "fuzz"}) {
        const std::filesystem::path folder = std::filesystem::path(strRoot) / strFolder;
        if (!std::filesystem::is_directory(folder)) {
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            const std::string strExtension = entry.path().extension().string();
            if (entry.is_regular_file() && (strExtension == ".h" || strExtension == ".cpp")) {
                const std::string strPath =
                    entry.path().lexically_relative(strRoot).generic_string();
                files.push_back({strPath, ReadTextFile(strRoot, strPath)});
            }
        }
    }
    std::ranges::sort(files, {}, &SourceFile::strPath);
    return files;
}

} // namespace brennik::lint
