#include "common/logging/receiver_debug.h"

#include <cstring>
#include <memory>

#include "common/text/convert.h"
#include "common/win/reg_key.h"

namespace logging::receiver {

namespace {

const char kEnabledValue[] = "ExtLogEnabled";
const char kHostValue[] = "ExtLogHost";
const char kPortValue[] = "ExtLogPort";
constexpr uint32_t kLoopback = 0x7F000001;  // 127.0.0.1

// htons and htonl, done by hand: the receiver is made while the library loads, when calls into
// the socket library are best left alone.
uint16_t net16(uint16_t value) {
  const uint8_t bytes[2] = {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
  uint16_t result;
  std::memcpy(&result, bytes, sizeof result);
  return result;
}

uint32_t net32(uint32_t value) {
  const uint8_t bytes[4] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                            static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
  uint32_t result;
  std::memcpy(&result, bytes, sizeof result);
  return result;
}

}  // namespace

COutputDebugStringLog::COutputDebugStringLog() {
  address_.address = net32(kLoopback);
  address_.port = net16(kExtLogDefaultPort);
}

COutputDebugStringLog::~COutputDebugStringLog() { debug_sys::close_socket(socket_); }

void COutputDebugStringLog::write(const std::string& text) {
  debug_sys::output_debug_string(text);
  if (socket_ == debug_sys::kInvalidSocket) {
    socket_ = debug_sys::open_udp_socket();
    if (socket_ != debug_sys::kInvalidSocket) read_settings();
  }
  if (socket_ != debug_sys::kInvalidSocket && ext_log_enabled_) {
    debug_sys::send_datagram(socket_, address_, text);
  }
}

void COutputDebugStringLog::read_settings() {
  try {
    const win::win_reg_key_ptr_t key = win::open_subkey(/*parent=*/0, kExtLogKey, win::kKeyRead);
    if (!key) return;  // no key: the side channel stays silent
    if (key->get_dword(kEnabledValue) == 0) return;
    ext_log_enabled_ = true;
    try {
      std::string host;
      key->get_string(kHostValue, host);
      address_.address = debug_sys::inet_address(host);
    } catch (const std::exception&) {
      // The default host stays.
    }
    try {
      address_.port = net16(static_cast<uint16_t>(key->get_dword(kPortValue)));
    } catch (const std::exception&) {
      // The default port stays.
    }
  } catch (const std::exception&) {
    // Settings that cannot be read leave the channel silent.
  }
}

namespace {

// Made while the library loads, as the other channels are; never destroyed, since a
// destructor run at exit may still report on it.
const log_channel_t* const g_dbg_channel = new log_channel_t(
    std::make_shared<log_t>(std::make_shared<COutputDebugStringLog>()), "dbg");

}  // namespace

const log_channel_t& dbg() { return *g_dbg_channel; }

}  // namespace logging::receiver
