// An open descriptor of the operating system that closes itself, and the small loops around it:
// resuming interrupted calls, writing all of a text, reading a whole file.
// Room-internal: nothing above the seam knows descriptors.
#pragma once

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace brennik {

class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int nDescriptor) : nDescriptor_(nDescriptor) {}
    ~Descriptor() { static_cast<void>(Close()); } // nobody is left to hear of it
    Descriptor(Descriptor&& other) noexcept : nDescriptor_(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return nDescriptor_ >= 0; }
    int Get() const { return nDescriptor_; }
    int Release() { return std::exchange(nDescriptor_, -1); }

    /// False, with errno set, when the last bytes could not be kept. A second call does nothing.
    [[nodiscard]] bool Close();

  private:
    int nDescriptor_ = -1;
};

/// Makes a system call again for as long as a signal interrupts it.
template <class Call>
auto Resumed(Call&& call) {
    for (;;) {
        const auto result = call();
        if (result != -1 || errno != EINTR) {
            return result;
        }
    }
}

/// Opens a file, close-on-exec; neither a FIFO nor a device ever makes it wait. Not open, with
/// errno set, on failure. nMode is for files that it creates.
Descriptor OpenDescriptor(const std::string& strPath, int nFlags, unsigned nMode = 0666);
Descriptor OpenDescriptorAt(int nFolder, const std::string& strName, int nFlags,
                            unsigned nMode = 0666);

/// Writes all of the text, with one call where the file takes it. False with errno set; what was
/// taken until then stays.
[[nodiscard]] bool WriteAll(int nDescriptor, std::string_view strData);

/// What is left to read; nothing, with errno set, when it can't be read or is more than nLimit
/// bytes (EFBIG).
std::optional<std::string> ReadAllOf(int nDescriptor, size_t nLimit);

} // namespace brennik
