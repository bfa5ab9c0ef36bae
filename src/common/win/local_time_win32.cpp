#include "common/win/local_time.h"

#include <windows.h>

namespace win {

bool current_local_time(local_time_t& out) {
  SYSTEMTIME now{};
  GetLocalTime(&now);  // cannot fail
  out.year = now.wYear;
  out.month = now.wMonth;
  out.day = now.wDay;
  out.hour = now.wHour;
  out.minute = now.wMinute;
  out.second = now.wSecond;
  return true;
}

}  // namespace win
