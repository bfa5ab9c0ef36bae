// The file-layer tests' private folder, compiled into this program too.
#include "../win_files/test_folder_win32.cpp"
