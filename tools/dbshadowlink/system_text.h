// The text the operating system gives for one of its error codes, in UTF-8, followed by the
// code itself. Used by the host's platform halves to say what the system answered.
#pragma once
#include <string>

namespace host {

// A Win32 error code on Windows, an errno value elsewhere.
std::string system_error_text(unsigned long code);

}  // namespace host
