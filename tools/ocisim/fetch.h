// Moving values between the simulated server and the caller's buffers: a fetched row into
// the defines (SQLT_STR, SQLT_CHR, SQLT_INT, with Oracle's indicators, returned lengths and
// column return codes), and bind buffers into values and back. One statement, one thread.
#pragma once
#include <memory>
#include <vector>

#include "handles.h"

namespace ocisim {

// Writes `row` into element `slot` of each define. Sets `truncated` when a value was cut to
// its buffer; raises ORA-01405 for a NULL without an indicator, ORA-01406 for a cut without
// one, ORA-01722 or ORA-01455 for a number that does not fit an integer define.
void write_row(const std::vector<value_t>& row,
               const std::vector<std::shared_ptr<define_handle_t>>& defines, std::size_t slot,
               bool& truncated);

// The value a bind buffer holds now.
value_t read_bind(const bind_handle_t& bind);
// Stores an OUT value into a bind buffer (and its indicator, length and code).
void write_bind(const bind_handle_t& bind, const value_t& value);
// False when `value` is text that the text bind's buffer cannot hold whole (PL/SQL then
// refuses the assignment with ORA-06502 instead of cutting it).
bool out_text_fits(const bind_handle_t& bind, const value_t& value);

}  // namespace ocisim
