// The host build's registry: one read-only tree loaded from the .reg file named by the
// environment variable DBSHADOWLINK_REGISTRY (format in reg_file.h), the first time a registry or
// service call needs it. An unset or empty variable, or a file that does not exist, is an empty
// registry. A file that cannot be read or parsed is remembered as such: every open of a key or of
// the service manager then fails with that error, which names the file and the line.
// Only the _posix halves of the registry and service calls, and host-only tests, include this.
// Thread-safe.
#pragma once
#include <memory>
#include <string>

#include "common/win/reg_file.h"

namespace win::reg_store {

constexpr char kRegistryVariable[] = "DBSHADOWLINK_REGISTRY";

// The tree, loading it on first use; throws a copy of the load failure when there was one.
std::shared_ptr<const reg_file::tree_t> current();

// Forgets what was loaded, so that the next use reads DBSHADOWLINK_REGISTRY and its file again.
// Meant for tests, which point the variable at one fixture after another. Keys and services that
// are already open keep the tree they were opened on.
void reload();

}  // namespace win::reg_store
