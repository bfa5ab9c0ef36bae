// COutputDebugStringLog: the receiver of the "dbg" channel. Every message goes to the
// debugger's output; when the machine's settings ask for it, each message also goes as one
// UDP datagram (the composed text with its line ends, nothing added) to a collector, by
// default 127.0.0.1:37183. The settings are read once, when the socket is first made. Used
// under the lock of the dbg channel's own log.
#pragma once
#include <cstdint>
#include <string>

#include "common/logging/log_channel.h"
#include "common/logging/receiver.h"
#include "common/logging/receiver_debug_sys.h"

namespace logging::receiver {

constexpr char16_t kExtLogKey[] = u"SOFTWARE\\TrelO\\Trelo NFS";
constexpr uint16_t kExtLogDefaultPort = 37183;

class COutputDebugStringLog : public log_file_t {
 public:
  COutputDebugStringLog();
  ~COutputDebugStringLog() override;
  COutputDebugStringLog(const COutputDebugStringLog&) = delete;
  COutputDebugStringLog& operator=(const COutputDebugStringLog&) = delete;

  // Debug output always. Then, while there is no socket, one is made (on Windows that fails
  // until the host has started Winsock, and is tried again with the next message) and the
  // settings are read; with the side channel enabled the text is sent. Send errors are
  // ignored.
  void write(const std::string& text) override;
  std::string path() const override { return path_; }
  std::string eol() const override { return eol_; }
  uint64_t size() const override { return 0; }
  void compress_into(zip_writer_t& zip) override {}

  bool ext_log_enabled() const { return ext_log_enabled_; }
  const debug_sys::ipv4_endpoint_t& address() const { return address_; }

 private:
  // ExtLogEnabled (0 keeps the channel silent), ExtLogHost and ExtLogPort of kExtLogKey; a
  // host or port that cannot be read keeps its default. Any other failure, a missing key
  // included, leaves the channel silent.
  void read_settings();

  std::string path_;
  std::string eol_ = "\n";
  bool ext_log_enabled_ = false;
  debug_sys::ipv4_endpoint_t address_;
  debug_sys::socket_t socket_ = debug_sys::kInvalidSocket;
};

// The "dbg" channel, on a log of its own whose receiver is a COutputDebugStringLog. Built when
// the library is loaded; nothing in this library writes to it.
const log_channel_t& dbg();

}  // namespace logging::receiver
