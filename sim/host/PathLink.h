// A symbolic link by which others find something that has another name each time.
// It stands on the file system; tests of the far ends need none.
#pragma once

#include <string>

namespace brennik::sim {

class PathLink {
  public:
    explicit PathLink(std::string strPath);

    /// Takes the link away, if it is still ours.
    ~PathLink();
    PathLink(const PathLink&) = delete;
    PathLink& operator=(const PathLink&) = delete;

    const std::string& strPath() const { return strPath_; }

    /// Makes the link, or lets it lead elsewhere, in one step that nobody can look into. A symbolic
    /// link that stands there already is replaced, whoever made it; anything else is left alone and
    /// is a failure. False with the reason in strError.
    bool LeadTo(const std::string& strTarget, std::string& strError);

    /// Takes the link away, if it still leads where we let it lead.
    void Remove();

  private:
    std::string strPath_;
    std::string strTarget_; ///< empty while there is no link of ours
};

} // namespace brennik::sim
