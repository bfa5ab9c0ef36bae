#include "integration/oracle_client/ocisim_platform_win32.cpp"
