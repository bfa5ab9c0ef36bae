#include "fetch.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace ocisim {

namespace {

template <typename T>
T* element(T* base, std::size_t slot) {
  return base == nullptr ? nullptr : base + slot;
}

// Stores an integer of the define's width; false when it does not fit.
bool store_integer(void* target, sb4 size, std::int64_t number) {
  switch (size) {
    case 1: {
      if (number < INT8_MIN || number > INT8_MAX) return false;
      const std::int8_t v = static_cast<std::int8_t>(number);
      std::memcpy(target, &v, sizeof v);
      return true;
    }
    case 2: {
      if (number < INT16_MIN || number > INT16_MAX) return false;
      const std::int16_t v = static_cast<std::int16_t>(number);
      std::memcpy(target, &v, sizeof v);
      return true;
    }
    case 4: {
      if (number < INT32_MIN || number > INT32_MAX) return false;
      const std::int32_t v = static_cast<std::int32_t>(number);
      std::memcpy(target, &v, sizeof v);
      return true;
    }
    case 8:
      std::memcpy(target, &number, sizeof number);
      return true;
    default:
      return false;
  }
}

}  // namespace

void write_row(const std::vector<value_t>& row,
               const std::vector<std::shared_ptr<define_handle_t>>& defines, std::size_t slot,
               bool& truncated) {
  for (const auto& define : defines) {
    if (define->position == 0 || define->position > row.size()) continue;
    const value_t& value = row[define->position - 1];
    sb2* indicator = element(define->indicator, slot);
    ub2* length = element(define->returned_length, slot);
    ub2* code = element(define->return_code, slot);
    char* buffer = define->value == nullptr
                       ? nullptr
                       : static_cast<char*>(define->value) +
                             slot * static_cast<std::size_t>(std::max<sb4>(define->value_size, 0));
    if (value.is_null()) {
      // The buffer keeps what it had.
      if (code != nullptr) *code = 1405;
      if (length != nullptr) *length = 0;
      if (indicator == nullptr) throw ora(1405);
      *indicator = -1;
      continue;
    }
    if (define->data_type == SQLT_INT) {
      value_t number;
      if (value.kind == value_t::kind_t::number) {
        number = value;
      } else if (!parse_number(to_text(value), number)) {
        throw ora(1722);
      }
      const double rounded = number.integral ? static_cast<double>(number.integer) : number.real;
      if (!number.integral && (rounded > 9.2e18 || rounded < -9.2e18)) throw ora(1455);
      const std::int64_t whole = number.integral ? number.integer : static_cast<std::int64_t>(rounded);
      if (buffer == nullptr || !store_integer(buffer, define->value_size, whole)) throw ora(1455);
      if (indicator != nullptr) *indicator = 0;
      if (length != nullptr) *length = static_cast<ub2>(define->value_size);
      if (code != nullptr) *code = 0;
      continue;
    }
    const std::string text = to_text(value);
    const std::size_t capacity = static_cast<std::size_t>(std::max<sb4>(define->value_size, 0));
    // SQLT_STR keeps one byte for its terminator; SQLT_CHR has none.
    const std::size_t room = define->data_type == SQLT_STR ? (capacity > 0 ? capacity - 1 : 0) : capacity;
    const bool cut = text.size() > room;
    const std::size_t copied = cut ? room : text.size();
    if (buffer != nullptr) {
      std::memcpy(buffer, text.data(), copied);
      if (define->data_type == SQLT_STR && capacity > 0) buffer[copied] = '\0';
    }
    if (length != nullptr) *length = static_cast<ub2>(copied);
    if (code != nullptr) *code = cut ? 1406 : 0;
    if (cut) {
      if (indicator == nullptr) throw ora(1406);
      // The original length, or -2 when it does not fit the indicator.
      *indicator = text.size() > static_cast<std::size_t>(std::numeric_limits<sb2>::max())
                       ? static_cast<sb2>(-2)
                       : static_cast<sb2>(text.size());
      truncated = true;
    } else if (indicator != nullptr) {
      *indicator = 0;
    }
  }
}

value_t read_bind(const bind_handle_t& bind) {
  if (bind.indicator != nullptr && *bind.indicator == -1) return value_t::null();
  if (bind.value == nullptr) return value_t::null();
  const char* data = static_cast<const char*>(bind.value);
  const std::size_t size = static_cast<std::size_t>(std::max<sb4>(bind.value_size, 0));
  switch (bind.data_type) {
    case SQLT_INT: {
      std::int64_t number = 0;
      if (size == 1) { std::int8_t v; std::memcpy(&v, data, 1); number = v; }
      else if (size == 2) { std::int16_t v; std::memcpy(&v, data, 2); number = v; }
      else if (size == 4) { std::int32_t v; std::memcpy(&v, data, 4); number = v; }
      else if (size == 8) { std::memcpy(&number, data, 8); }
      else throw ora(3115);
      return value_t::of_integer(number);
    }
    case SQLT_CHR: {
      const std::size_t length = bind.actual_length != nullptr ? std::min<std::size_t>(*bind.actual_length, size) : size;
      return value_t::of_text(std::string(data, length));
    }
    default: {
      std::size_t length = 0;
      while (length < size && data[length] != '\0') ++length;
      return value_t::of_text(std::string(data, length));
    }
  }
}

bool out_text_fits(const bind_handle_t& bind, const value_t& value) {
  if (value.is_null() || bind.value == nullptr || bind.data_type == SQLT_INT) return true;
  const std::size_t size = static_cast<std::size_t>(std::max<sb4>(bind.value_size, 0));
  const std::size_t room = bind.data_type == SQLT_STR ? (size > 0 ? size - 1 : 0) : size;
  return to_text(value).size() <= room;
}

void write_bind(const bind_handle_t& bind, const value_t& value) {
  if (value.is_null()) {
    if (bind.indicator != nullptr) *bind.indicator = -1;
    if (bind.return_code != nullptr) *bind.return_code = 1405;
    return;
  }
  if (bind.value == nullptr) return;
  const std::size_t size = static_cast<std::size_t>(std::max<sb4>(bind.value_size, 0));
  if (bind.data_type == SQLT_INT) {
    value_t number = value;
    if (value.kind != value_t::kind_t::number && !parse_number(to_text(value), number)) throw ora(1722);
    if (!store_integer(bind.value, bind.value_size,
                       number.integral ? number.integer : static_cast<std::int64_t>(number.real))) {
      throw ora(1455);
    }
  } else {
    const std::string text = to_text(value);
    const std::size_t room = bind.data_type == SQLT_STR ? (size > 0 ? size - 1 : 0) : size;
    const std::size_t copied = std::min(room, text.size());
    std::memcpy(bind.value, text.data(), copied);
    if (bind.data_type == SQLT_STR && size > 0) static_cast<char*>(bind.value)[copied] = '\0';
    if (bind.actual_length != nullptr) *bind.actual_length = static_cast<ub2>(copied);
    if (text.size() > room) {
      if (bind.return_code != nullptr) *bind.return_code = 1406;
      if (bind.indicator != nullptr) *bind.indicator = static_cast<sb2>(text.size());
      return;
    }
  }
  if (bind.indicator != nullptr) *bind.indicator = 0;
  if (bind.return_code != nullptr) *bind.return_code = 0;
}

}  // namespace ocisim
