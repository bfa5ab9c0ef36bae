// The platform half of the debug receiver: the debugger's output (OutputDebugStringA on
// Windows, the standard error stream on the host build) and one UDP socket. On Windows the
// socket calls need Winsock started by the host process; nothing here starts it. Never throw.
#pragma once
#include <cstdint>
#include <string>

namespace logging::receiver::debug_sys {

using socket_t = std::intptr_t;
constexpr socket_t kInvalidSocket = -1;

// An IPv4 address and port, both in network byte order, as a sockaddr_in holds them.
struct ipv4_endpoint_t {
  uint32_t address = 0;
  uint16_t port = 0;
};

void output_debug_string(const std::string& text);

// socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP); kInvalidSocket on failure.
socket_t open_udp_socket();
void close_socket(socket_t socket);
// sendto with flags 0; the result is of no interest.
void send_datagram(socket_t socket, const ipv4_endpoint_t& to, const std::string& bytes);

// inet_addr: the dotted text in network order, or INADDR_NONE when it is not an address.
uint32_t inet_address(const std::string& text);

}  // namespace logging::receiver::debug_sys
