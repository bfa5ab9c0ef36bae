#include "common/logging/receiver_debug_sys.h"

#include <winsock2.h>
#include <windows.h>

namespace logging::receiver::debug_sys {

void output_debug_string(const std::string& text) { ::OutputDebugStringA(text.c_str()); }

socket_t open_udp_socket() {
  const SOCKET s = ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
  return s == INVALID_SOCKET ? kInvalidSocket : static_cast<socket_t>(s);
}

void close_socket(socket_t socket) {
  if (socket != kInvalidSocket) ::closesocket(static_cast<SOCKET>(socket));
}

void send_datagram(socket_t socket, const ipv4_endpoint_t& to, const std::string& bytes) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = to.address;
  address.sin_port = to.port;
  ::sendto(static_cast<SOCKET>(socket), bytes.data(), static_cast<int>(bytes.size()),
           /*flags=*/0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

uint32_t inet_address(const std::string& text) { return ::inet_addr(text.c_str()); }

}  // namespace logging::receiver::debug_sys
