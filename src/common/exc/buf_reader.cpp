#include "common/exc/buf_reader.h"

#include <cstring>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "common/text/numbers.h"

namespace exc {

byte_writer_t::byte_writer_t(std::shared_ptr<byte_buffer_t> buffer, size_t position)
    : buffer_(std::move(buffer)), position_(position) {
  if (!buffer_) buffer_ = std::make_shared<byte_buffer_t>();
}

void byte_writer_t::write_bytes(const void* data, size_t size) {
  const size_t needed = position_ + size;
  if (needed > buffer_->size()) {
    const size_t rounded = (needed + kGrowStep - 1) / kGrowStep * kGrowStep;
    buffer_->resize(rounded);
  }
  if (size != 0) std::memcpy(buffer_->data() + position_, data, size);
  position_ = needed;
}

void byte_writer_t::write_u32(uint32_t value) {
  const uint8_t bytes[4] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8),
                            static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 24)};
  write_bytes(bytes, sizeof bytes);
}

void byte_writer_t::write_bool(bool value) {
  const uint8_t byte = value ? 1 : 0;
  write_bytes(&byte, 1);
}

void byte_writer_t::write_string(const std::string& text) {
  write_u32(static_cast<uint32_t>(text.size()));
  write_bytes(text.data(), text.size());
}

CBufReader::CBufReader(size_t max_string_length, std::shared_ptr<const byte_buffer_t> buffer,
                       size_t position)
    : max_string_length_(max_string_length), buffer_(std::move(buffer)), position_(position) {}

CBufReader::CBufReader(size_t max_string_length) : max_string_length_(max_string_length) {}

void CBufReader::set_buffer(std::shared_ptr<const byte_buffer_t> buffer, size_t position) {
  buffer_ = std::move(buffer);
  position_ = position;
}

const uint8_t* CBufReader::take(size_t size) {
  if (!buffer_) throw runtime_exc_t("CBufReader buffer not initialized.");
  if (position_ > buffer_->size() || size > buffer_->size() - position_) {
    throw runtime_exc_t("Out of the buffer, buffer size '%1', struct size '%2', buffer pointer '%3'.",
                        util::to_str(static_cast<uint64_t>(buffer_->size())),
                        util::to_str(static_cast<uint64_t>(size)),
                        util::to_str(static_cast<uint64_t>(position_)));
  }
  const uint8_t* p = buffer_->data() + position_;
  position_ += size;
  return p;
}

uint32_t CBufReader::read_u32() {
  try {
    const uint8_t* p = take(4);
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
  } catch (const std::exception& e) {
    rethrow_with_trace("Failed to extract integer value from buffer.", e);
  }
}

bool CBufReader::read_bool() {
  try {
    return *take(1) != 0;
  } catch (const std::exception& e) {
    rethrow_with_trace("Failed to extract boolean value from buffer.", e);
  }
}

std::string CBufReader::read_string() {
  try {
    const uint32_t length = read_u32();
    if (length > max_string_length_) {
      throw runtime_exc_t("Invalid length of the string '%1'.", util::to_str(length));
    }
    const uint8_t* p = take(length);
    // Read as a C string: an embedded zero ends it.
    std::string text(reinterpret_cast<const char*>(p), length);
    const size_t zero = text.find('\0');
    if (zero != std::string::npos) text.resize(zero);
    return text;
  } catch (const std::exception& e) {
    rethrow_with_trace("Failed to extract multi-byte string from buffer .", e);
  }
}

}  // namespace exc
