#include "log_files_env.h"

#include <winsock2.h>
#include <windows.h>

#include <gtest/gtest.h>
#include <zlib.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <io.h>

namespace dsl_test {

namespace {

const wchar_t* w(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

}  // namespace

gzFile open_gz(const std::u16string& path, const char* mode) { return ::gzopen_w(w(path), mode); }

standard_folder_file_t::~standard_folder_file_t() { ::DeleteFileW(w(path_)); }

// A debugger's side of OutputDebugStringA without a debugger: the shared buffer and the two
// events through which the system hands each text to a monitor. A writer waits until the
// monitor has taken the previous text, so a thread of its own takes each one as it comes.
struct debug_output_capture_t::state_t {
  HANDLE buffer_ready = nullptr;
  HANDLE data_ready = nullptr;
  HANDLE mapping = nullptr;
  const char* view = nullptr;
  std::atomic<bool> stop{false};
  std::mutex lock;
  std::string text;
  std::thread monitor;

  void run() {
    while (!stop) {
      if (::WaitForSingleObject(data_ready, 50) != WAIT_OBJECT_0) continue;
      const char* shown = view + sizeof(DWORD);  // the writer's process id comes first
      {
        std::lock_guard<std::mutex> guard(lock);
        text += std::string(shown, strnlen(shown, 4096 - sizeof(DWORD)));
      }
      ::SetEvent(buffer_ready);
    }
  }
};

debug_output_capture_t::debug_output_capture_t() : state_(std::make_unique<state_t>()) {
  state_->buffer_ready = ::CreateEventW(nullptr, FALSE, TRUE, L"DBWIN_BUFFER_READY");
  state_->data_ready = ::CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY");
  state_->mapping = ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096,
                                         L"DBWIN_BUFFER");
  if (state_->mapping != nullptr) {
    state_->view = static_cast<const char*>(
        ::MapViewOfFile(state_->mapping, FILE_MAP_READ, 0, 0, 4096));
  }
  EXPECT_NE(state_->view, nullptr) << "no debug output monitor could be set up";
  if (state_->view != nullptr) state_->monitor = std::thread([this] { state_->run(); });
}

debug_output_capture_t::~debug_output_capture_t() {
  take();
  if (state_->view != nullptr) ::UnmapViewOfFile(state_->view);
  if (state_->mapping != nullptr) ::CloseHandle(state_->mapping);
  if (state_->data_ready != nullptr) ::CloseHandle(state_->data_ready);
  if (state_->buffer_ready != nullptr) ::CloseHandle(state_->buffer_ready);
}

// The writer has handed its text over when it returns; a short wait lets the monitor copy it.
std::string debug_output_capture_t::take() {
  if (state_->monitor.joinable()) {
    ::Sleep(200);
    state_->stop = true;
    state_->monitor.join();
  }
  std::lock_guard<std::mutex> guard(state_->lock);
  std::string out;
  out.swap(state_->text);
  return out;
}

void start_sockets() {
  static const bool started = [] {
    WSADATA data;
    return ::WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }();
  EXPECT_TRUE(started);
}

udp_receiver_t::udp_receiver_t(uint16_t port) {
  start_sockets();
  const SOCKET s = ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
  if (s == INVALID_SOCKET) return;
  socket_ = static_cast<std::intptr_t>(s);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (::bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return;
  int length = sizeof address;
  if (::getsockname(s, reinterpret_cast<sockaddr*>(&address), &length) != 0) return;
  port_ = ntohs(address.sin_port);
  bound_ = true;
}

udp_receiver_t::~udp_receiver_t() {
  if (socket_ != -1) ::closesocket(static_cast<SOCKET>(socket_));
}

bool udp_receiver_t::receive(std::string& datagram, uint32_t timeout_ms) {
  if (!bound_) return false;
  const SOCKET s = static_cast<SOCKET>(socket_);
  fd_set read_set;
  FD_ZERO(&read_set);
  FD_SET(s, &read_set);
  timeval timeout;
  timeout.tv_sec = static_cast<long>(timeout_ms / 1000);
  timeout.tv_usec = static_cast<long>((timeout_ms % 1000) * 1000);
  if (::select(0, &read_set, nullptr, nullptr, &timeout) != 1) return false;
  char buffer[65536];
  const int got = ::recv(s, buffer, sizeof buffer, 0);
  if (got < 0) return false;
  datagram.assign(buffer, static_cast<size_t>(got));
  return true;
}

}  // namespace dsl_test
