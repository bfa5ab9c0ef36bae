#include "oci_library.h"

#include "test_platform.h"

namespace ocisim_test {

std::string oci_library_t::built_path() {
  return env_value("DSL_BIN_DIR") + "/ocisim/" + file_name();
}

bool oci_library_t::bind_all(std::string& error) {
  struct entry_t {
    const char* name;
    void** slot;
  };
  const entry_t entries[] = {
      {"OCIEnvCreate", reinterpret_cast<void**>(&api_.OCIEnvCreate)},
      {"OCIErrorGet", reinterpret_cast<void**>(&api_.OCIErrorGet)},
      {"OCIHandleAlloc", reinterpret_cast<void**>(&api_.OCIHandleAlloc)},
      {"OCIHandleFree", reinterpret_cast<void**>(&api_.OCIHandleFree)},
      {"OCIAttrSet", reinterpret_cast<void**>(&api_.OCIAttrSet)},
      {"OCIServerAttach", reinterpret_cast<void**>(&api_.OCIServerAttach)},
      {"OCIServerDetach", reinterpret_cast<void**>(&api_.OCIServerDetach)},
      {"OCISessionBegin", reinterpret_cast<void**>(&api_.OCISessionBegin)},
      {"OCISessionEnd", reinterpret_cast<void**>(&api_.OCISessionEnd)},
      {"OCIStmtPrepare", reinterpret_cast<void**>(&api_.OCIStmtPrepare)},
      {"OCIDefineByPos", reinterpret_cast<void**>(&api_.OCIDefineByPos)},
      {"OCIBindByName", reinterpret_cast<void**>(&api_.OCIBindByName)},
      {"OCIStmtExecute", reinterpret_cast<void**>(&api_.OCIStmtExecute)},
      {"OCIStmtFetch2", reinterpret_cast<void**>(&api_.OCIStmtFetch2)},
      {"OCIDBStartup", reinterpret_cast<void**>(&api_.OCIDBStartup)},
      {"OCIDBShutdown", reinterpret_cast<void**>(&api_.OCIDBShutdown)},
  };
  for (const entry_t& entry : entries) {
    *entry.slot = symbol(entry.name);
    if (*entry.slot == nullptr) {
      error = std::string("entry point ") + entry.name + " is missing";
      return false;
    }
  }
  return true;
}

}  // namespace ocisim_test
