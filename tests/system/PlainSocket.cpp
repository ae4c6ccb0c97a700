#include "tests/system/PlainSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace brennik::system_tests {

PlainSocket::PlainSocket(uint16_t iPort)
    : PlainPeer(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(iPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(Descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        Close();
    }
}

void PlainSocket::Send(std::string_view strBytes) {
    static_cast<void>(::send(Descriptor(), strBytes.data(), strBytes.size(), MSG_NOSIGNAL));
}

std::string_view PlainSocket::EndName(bool bInOrder) const {
    return bInOrder ? "closed" : "reset";
}

} // namespace brennik::system_tests
