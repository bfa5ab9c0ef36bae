// The service tests' helper (tests/unit/win_services), built into this program too.
#include "../win_services/svc_machine_win32.cpp"
