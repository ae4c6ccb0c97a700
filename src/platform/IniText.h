// The rules of INI text, free of files: finding one value, and making the text with one changed.
// Section and key names match without regard to case, blanks around names and values are dropped,
// one pair of matching quotes around a value is dropped, lines that begin with ";" are comments,
// a byte order mark is skipped, and the first section of a name counts.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace brennik {

/// The value as a reader gets it; nothing when the section or the key is missing.
std::optional<std::string> FindIniValue(std::string_view strContent, std::string_view strSection,
                                        std::string_view strKey);

bool HasIniSection(std::string_view strContent, std::string_view strSection);

/// The text with the value set. Only the line of the key changes, or one is added behind the last
/// line of the section (the section itself at the end of the text); the result equals the input
/// when the value is there already.
std::string WithIniValue(std::string_view strContent, std::string_view strSection,
                         std::string_view strKey, std::string_view strValue);

/// False for a text with a line end or a zero byte in it: no name or value can hold these.
bool CanStandOnOneLine(std::string_view strText);

/// A whole text with its sections looked up once, and the keys of a section at its first read, for
/// many reads of one file: the time of all of them hardly grows faster than the file.
class IniIndex {
  public:
    explicit IniIndex(std::string strContent);

    const std::string& Content() const { return strContent_; }

    /// As FindIniValue over the content.
    std::optional<std::string> Find(std::string_view strSection, std::string_view strKey);

  private:
    struct Section {
        size_t nBegin = 0;
        size_t nEnd = 0;
        std::optional<std::vector<size_t>> keyLines; ///< where they begin, by name; once wanted
    };

    std::string strContent_;
    std::unordered_map<std::string, Section> sections_; ///< by upper-cased name
};

} // namespace brennik
