// Checks the bytes of an input file (a document, a list or a script) before their text is
// passed on: the files are UTF-8, with or without a byte-order mark. Pure; any thread.
#pragma once
#include <string>

namespace host {

// Returns the text without a UTF-8 byte-order mark. Throws usage_error_t, naming `file`, for
// UTF-16 text, ill-formed UTF-8 or a NUL character (which would cut the text short at the
// library's boundary).
std::string checked_input_text(std::string bytes, const std::string& file);

}  // namespace host
