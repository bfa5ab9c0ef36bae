// The service tests' helper (tests/unit/win_services), built into this program as well.
#include "../../unit/win_services/svc_machine_win32.cpp"
