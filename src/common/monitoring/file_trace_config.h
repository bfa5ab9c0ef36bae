// file_trace_config_t: the switches of the per-file trace events and the recorder they would
// go to. Both stay empty in this library, so every switch reads as off and no event is sent;
// the file layer asks once per opened file. Process-wide, made on first use; read-only after.
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace monitoring {

class file_trace_config_t {
 public:
  static const file_trace_config_t& instance();

  // Bit `bit` of flag word `word`; off for a word the vector does not have.
  bool flag(size_t word, unsigned bit) const;

  // The events of an open file: word 1 holds seek (bit 1), read (3), write (5), flush (7) and
  // resize (9); word 2 holds open and close (bit 1).
  bool seek() const { return flag(1, 1); }
  bool read() const { return flag(1, 3); }
  bool write() const { return flag(1, 5); }
  bool flush() const { return flag(1, 7); }
  bool resize() const { return flag(1, 9); }
  bool open_close() const { return flag(2, 1); }

  const std::vector<uint32_t>& flags() const { return flags_; }
  const std::shared_ptr<void>& recorder() const { return recorder_; }

 private:
  file_trace_config_t() = default;

  std::vector<uint32_t> flags_;
  std::shared_ptr<void> recorder_;
};

}  // namespace monitoring
