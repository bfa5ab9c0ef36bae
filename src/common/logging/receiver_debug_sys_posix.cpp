#include "common/logging/receiver_debug_sys.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>

namespace logging::receiver::debug_sys {

void output_debug_string(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
}

socket_t open_udp_socket() {
  const int s = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
  return s < 0 ? kInvalidSocket : static_cast<socket_t>(s);
}

void close_socket(socket_t socket) {
  if (socket != kInvalidSocket) ::close(static_cast<int>(socket));
}

void send_datagram(socket_t socket, const ipv4_endpoint_t& to, const std::string& bytes) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = to.address;
  address.sin_port = to.port;
  // MSG_NOSIGNAL has no meaning for UDP; flags stay 0 as on Windows.
  (void)::sendto(static_cast<int>(socket), bytes.data(), bytes.size(), /*flags=*/0,
                 reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

uint32_t inet_address(const std::string& text) { return ::inet_addr(text.c_str()); }

}  // namespace logging::receiver::debug_sys
