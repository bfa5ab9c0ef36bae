// The frame every export runs in: its body inside one guard that catches std::exception,
// logs the export's context with the exception, and hands the caller the exception's text.
// Out texts are malloc'd UTF-16 buffers that the caller releases with OracleLibStrFree.
#pragma once
#include <exception>
#include <string>

#include "DbShadowLink.h"

namespace specific::oracle::frame {

// A malloc'd copy of `text` with its NUL: twice the length plus 2 bytes.
DSL_WCHAR* make_out_string(const std::u16string& text);

// The exported argument as an owned string, read up to its first NUL.
std::u16string copy_arg(const DSL_WCHAR* arg);

// Logs `context` with the exception at error level and returns a malloc'd copy of what(),
// widened; an empty text when what() is null, "ANSI -> UNICODE failed." when it cannot be
// widened.
DSL_WCHAR* exception_to_text(const std::string& context, const std::exception& e);

// Runs `body`; on a std::exception stores the error text through `error` and returns
// DSL_E_FAIL. Anything not derived from std::exception passes on unhandled.
template <typename Body>
DSL_RESULT guarded(const char* context, DSL_WCHAR** error, Body&& body) {
  try {
    body();
    return DSL_S_OK;
  } catch (const std::exception& e) {
    *error = exception_to_text(context, e);
    return DSL_E_FAIL;
  }
}

}  // namespace specific::oracle::frame
