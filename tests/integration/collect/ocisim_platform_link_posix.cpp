#include "integration/oracle_client/ocisim_platform_posix.cpp"
