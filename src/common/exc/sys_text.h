// The system's own words for an error code, in one place. Windows asks FormatMessageW (English)
// and, for the Internet range 12000 to 12175, wininet.dll; elsewhere, and when the system has
// no text, the standard library's system category answers.
#pragma once
#include <cstdint>
#include <string>

namespace exc {

// UTF-8 text; one trailing "\r\n" removed. Never throws on account of the code.
std::string system_error_text(uint32_t code);

// The description of the thread's current COM error object, if there is one; empty otherwise.
std::string com_error_description();

}  // namespace exc
