// Where the files a scenario names live on this machine: a name in an ASM disk group
// (+GROUP/DB/TYPE/file) lies in the folder the ASM instance maps that group to, any other name
// is a Windows path; both go through the host build's drive mapping. Any thread.
#pragma once
#include <string>

#include "node.h"

namespace ocisim {

// The Windows path of a database file name: the disk group's folder joined with the rest of
// an ASM name, or the name itself. Empty for a disk group the machine does not have.
std::string windows_file_path(const node_t& machine, const std::string& name);
// The native path to open; empty when the file cannot be placed (unknown disk group, or no
// DBSHADOWLINK_ROOT on the host build, where nothing outside the mapped root is touched).
std::string native_file_path(const node_t& machine, const std::string& name);

// Joins a folder and a name the way the name's own form asks: '/' inside ASM, '\' elsewhere.
std::string join_oracle_path(const std::string& folder, const std::string& name);

}  // namespace ocisim
