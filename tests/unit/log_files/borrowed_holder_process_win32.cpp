// The file-layer tests' second process that holds a file, compiled into this program too.
#include "../win_files/holder_process_win32.cpp"
