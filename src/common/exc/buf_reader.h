// The binary form of exceptions: a growing byte writer and the bounded reader CBufReader.
// All integers are little-endian u32; strings are a u32 length and their bytes.
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace exc {

using byte_buffer_t = std::vector<uint8_t>;

// Appends to a shared buffer at a running position. When a write would pass the buffer's
// size, the buffer grows to the size needed rounded up to a multiple of 1 MiB.
class byte_writer_t {
 public:
  static constexpr size_t kGrowStep = 1048576;

  explicit byte_writer_t(std::shared_ptr<byte_buffer_t> buffer, size_t position = 0);

  void write_u32(uint32_t value);
  void write_bool(bool value);
  void write_string(const std::string& text);
  void write_bytes(const void* data, size_t size);

  size_t position() const { return position_; }
  const std::shared_ptr<byte_buffer_t>& buffer() const { return buffer_; }

 private:
  std::shared_ptr<byte_buffer_t> buffer_;
  size_t position_;
};

class CBufReader {
 public:
  CBufReader(size_t max_string_length, std::shared_ptr<const byte_buffer_t> buffer,
             size_t position = 0);
  explicit CBufReader(size_t max_string_length);

  void set_buffer(std::shared_ptr<const byte_buffer_t> buffer, size_t position = 0);

  uint32_t read_u32();
  bool read_bool();
  std::string read_string();

  size_t position() const { return position_; }

 private:
  const uint8_t* take(size_t size);

  size_t max_string_length_;
  std::shared_ptr<const byte_buffer_t> buffer_;
  size_t position_ = 0;
};

}  // namespace exc
