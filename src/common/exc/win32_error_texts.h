// Windows' English texts of the Win32 codes that the host build's platform layer produces, so
// that a failure reads the same on both builds. Codes not listed here have no such text.
#pragma once
#include <cstdint>

namespace exc {

// The text without its line end, or null when the code is not in the table.
const char* win32_error_text(uint32_t code);

}  // namespace exc
