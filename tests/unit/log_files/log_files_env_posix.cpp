#include "log_files_env.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <zlib.h>

#include "common/win/path_map_posix.h"

namespace dsl_test {

gzFile open_gz(const std::u16string& path, const char* mode) {
  return ::gzopen(win::host::host_path(path).c_str(), mode);
}

// The standard folder lies below the test's own DBSHADOWLINK_ROOT here, which the test folder
// removes with everything in it.
standard_folder_file_t::~standard_folder_file_t() = default;

struct debug_output_capture_t::state_t {
  console_capture_t console{console_capture_t::standard_error};
};

debug_output_capture_t::debug_output_capture_t() : state_(std::make_unique<state_t>()) {}

debug_output_capture_t::~debug_output_capture_t() = default;

std::string debug_output_capture_t::take() { return state_->console.take(); }

void start_sockets() {}

udp_receiver_t::udp_receiver_t(uint16_t port) {
  const int s = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
  if (s < 0) return;
  socket_ = s;
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (::bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return;
  socklen_t length = sizeof address;
  if (::getsockname(s, reinterpret_cast<sockaddr*>(&address), &length) != 0) return;
  port_ = ntohs(address.sin_port);
  bound_ = true;
}

udp_receiver_t::~udp_receiver_t() {
  if (socket_ >= 0) ::close(static_cast<int>(socket_));
}

bool udp_receiver_t::receive(std::string& datagram, uint32_t timeout_ms) {
  if (!bound_) return false;
  pollfd p = {static_cast<int>(socket_), POLLIN, 0};
  if (::poll(&p, 1, static_cast<int>(timeout_ms)) != 1) return false;
  char buffer[65536];
  const ssize_t got = ::recv(static_cast<int>(socket_), buffer, sizeof buffer, 0);
  if (got < 0) return false;
  datagram.assign(buffer, static_cast<size_t>(got));
  return true;
}

}  // namespace dsl_test
