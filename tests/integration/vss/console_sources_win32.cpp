// The console tests' process runner and its text helpers, built into this program as well.
#include "../console/process_runner_win32.cpp"
#include "../console/test_text.cpp"
