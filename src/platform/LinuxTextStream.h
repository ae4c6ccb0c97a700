// One open regular file as a stream of bytes: buffered when read, one system call a write.
// Tests above the seam get streams over files in memory instead.
#pragma once

#include "platform/Descriptor.h"
#include "platform/Files.h"

#include <string>
#include <string_view>

namespace brennik {

class LinuxTextStream : public TextStream {
  public:
    /// Takes the open descriptor of a regular file.
    LinuxTextStream(Descriptor file, OpenMode mode);

    std::string Read(size_t nCount) override;
    std::string ReadLine() override;
    std::string ReadAll() override;
    bool AtEndOfStream() override;
    void Write(std::string_view strData) override;
    void WriteLine(std::string_view strData) override;
    void Close() override;

  private:
    void Require(bool bReading) const;
    /// What has been read ahead and not been taken; empty at the end of the file only.
    std::string_view Ahead();

    Descriptor file_;
    bool bReading_;
    std::string strBuffer_;
    size_t nTaken_ = 0;
};

} // namespace brennik
