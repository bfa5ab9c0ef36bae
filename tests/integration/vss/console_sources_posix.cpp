// The console tests' process runner, built into this program as well.
#include "../console/process_runner_posix.cpp"
