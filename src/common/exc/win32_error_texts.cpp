#include "common/exc/win32_error_texts.h"

namespace exc {

namespace {

struct entry_t {
  uint32_t code;
  const char* text;
};

const entry_t kTexts[] = {
    {0, "The operation completed successfully."},
    {1, "Incorrect function."},
    {2, "The system cannot find the file specified."},
    {3, "The system cannot find the path specified."},
    {5, "Access is denied."},
    {6, "The handle is invalid."},
    {13, "The data is invalid."},
    {32, "The process cannot access the file because it is being used by another process."},
    {33, "The process cannot access the file because another process has locked a portion of the file."},
    {50, "The request is not supported."},
    {66, "The network resource type is not correct."},
    {80, "The file exists."},
    {87, "The parameter is incorrect."},
    {112, "There is not enough space on the disk."},
    {123, "The filename, directory name, or volume label syntax is incorrect."},
    {145, "The directory is not empty."},
    {161, "The specified path is invalid."},
    {183, "Cannot create a file when that file already exists."},
    {206, "The filename or extension is too long."},
    {234, "More data is available."},
    {259, "No more data is available."},
    {267, "The directory name is invalid."},
    {1060, "The specified service does not exist as an installed service."},
    {1113, "No mapping for the Unicode character exists in the target multi-byte code page."},
    {1460, "This operation returned because the timeout period expired."},
};

}  // namespace

const char* win32_error_text(uint32_t code) {
  for (const auto& e : kTexts) {
    if (e.code == code) return e.text;
  }
  return nullptr;
}

}  // namespace exc
