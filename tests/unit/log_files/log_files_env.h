// What the log-file tests share: a private folder with a registry of the test's own making,
// reading archives, parsing the lines of a log file, and the platform's means of watching the
// debug output, the console and UDP datagrams.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <zlib.h>

#include "support/test_folder.h"
#include "support/reg_machine.h"

namespace dsl_test {

// A value of a .reg fixture made on the fly.
struct reg_value_t {
  std::string name;
  std::string text;        // a REG_SZ when `is_dword` is false
  bool is_dword = false;
  uint32_t dword = 0;
};

// A test's machine: registry keys below HKEY_LOCAL_MACHINE as given, put in place for the
// life of this object (a .reg file in a scratch folder, then reg_machine_t).
class machine_settings_t {
 public:
  struct key_t {
    std::string path;  // below HKEY_LOCAL_MACHINE, e.g. "SOFTWARE\\Trelo\\Trelo Safekeep"
    std::vector<reg_value_t> values;
  };
  explicit machine_settings_t(const std::vector<key_t>& keys);
  ~machine_settings_t();

 private:
  std::string folder_;
  std::unique_ptr<reg_machine_t> machine_;
};

// The settings key of the log directory with LogDirectory set to `dir` (UTF-8).
machine_settings_t::key_t log_directory_key(const std::string& dir);

// zlib's gzopen of a Windows path, as this platform takes it.
gzFile open_gz(const std::u16string& path, const char* mode);
// The whole decompressed content of the gzip file at `path` (a Windows path), read with
// gzopen/gzread; fails the test when it cannot be read.
std::string read_gz(const std::u16string& path);
// Writes `bytes` as a gzip file at `path`.
void write_gz(const std::u16string& path, const std::string& bytes);

// The lines of a log text cut at "\r\n", without their ends.
std::vector<std::string> crlf_lines(const std::string& text);

// A file of the machine-wide standard log folder ("<common data>\Trelo\Backup\<name>"), which
// on Windows lies outside the test's folder: removed again when this object goes.
class standard_folder_file_t {
 public:
  explicit standard_folder_file_t(const std::u16string& name);
  ~standard_folder_file_t();
  const std::u16string& path() const { return path_; }

 private:
  std::u16string path_;
};

// The text a run of the library wrote to the standard output or error stream meanwhile.
class console_capture_t {
 public:
  enum stream_t { standard_output, standard_error };
  explicit console_capture_t(stream_t stream);
  ~console_capture_t();
  std::string take();

 private:
  stream_t stream_;
  bool taken_ = false;
};

// The debugger's view of OutputDebugStringA (Windows) or the standard error stream (host).
class debug_output_capture_t {
 public:
  debug_output_capture_t();
  ~debug_output_capture_t();
  // Everything shown meanwhile, in order.
  std::string take();

 private:
  struct state_t;
  std::unique_ptr<state_t> state_;
};

// A UDP socket on 127.0.0.1 that receives what the debug channel sends. Port 0 takes a free
// one.
class udp_receiver_t {
 public:
  explicit udp_receiver_t(uint16_t port = 0);
  ~udp_receiver_t();
  bool bound() const { return bound_; }
  uint16_t port() const { return port_; }
  // One datagram, waiting up to `timeout_ms`; false when none came.
  bool receive(std::string& datagram, uint32_t timeout_ms);

 private:
  std::intptr_t socket_ = -1;
  uint16_t port_ = 0;
  bool bound_ = false;
};

// Makes socket calls possible (WSAStartup on Windows; nothing on the host).
void start_sockets();

}  // namespace dsl_test
