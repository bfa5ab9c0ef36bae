// A Windows service that does nothing but answer the service control manager: it reports
// running once started, follows pause, continue and stop, and ends when stopped. The service
// tests install it under test names to see the states a real service goes through.
#include <windows.h>

namespace {

SERVICE_STATUS_HANDLE g_status_handle = nullptr;
SERVICE_STATUS g_status{};
HANDLE g_stop_event = nullptr;

void report(DWORD state) {
  g_status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  g_status.dwCurrentState = state;
  g_status.dwControlsAccepted =
      state == SERVICE_START_PENDING
          ? 0
          : SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_PAUSE_CONTINUE | SERVICE_ACCEPT_SHUTDOWN;
  g_status.dwWin32ExitCode = NO_ERROR;
  g_status.dwWaitHint = 0;
  SetServiceStatus(g_status_handle, &g_status);
}

DWORD WINAPI handle_control(DWORD control, DWORD /*event_type*/, LPVOID /*event_data*/,
                            LPVOID /*context*/) {
  switch (control) {
    case SERVICE_CONTROL_STOP:
    case SERVICE_CONTROL_SHUTDOWN:
      report(SERVICE_STOP_PENDING);
      SetEvent(g_stop_event);
      return NO_ERROR;
    case SERVICE_CONTROL_PAUSE:
      report(SERVICE_PAUSED);
      return NO_ERROR;
    case SERVICE_CONTROL_CONTINUE:
      report(SERVICE_RUNNING);
      return NO_ERROR;
    case SERVICE_CONTROL_INTERROGATE:
      SetServiceStatus(g_status_handle, &g_status);
      return NO_ERROR;
    default:
      return ERROR_CALL_NOT_IMPLEMENTED;
  }
}

void WINAPI service_main(DWORD /*argc*/, LPWSTR* argv) {
  g_status_handle = RegisterServiceCtrlHandlerExW(argv[0], handle_control, /*lpContext=*/nullptr);
  if (g_status_handle == nullptr) return;
  g_stop_event = CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                              /*bInitialState=*/FALSE, /*lpName=*/nullptr);
  report(SERVICE_START_PENDING);
  report(SERVICE_RUNNING);
  WaitForSingleObject(g_stop_event, INFINITE);
  report(SERVICE_STOPPED);
}

}  // namespace

int main() {
  // An own-process service: the name in the table is not looked at.
  wchar_t name[] = L"";
  SERVICE_TABLE_ENTRYW table[] = {{name, service_main}, {nullptr, nullptr}};
  return StartServiceCtrlDispatcherW(table) ? 0 : static_cast<int>(GetLastError());
}
