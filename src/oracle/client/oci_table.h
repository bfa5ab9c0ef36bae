// The one table through which the library reaches the Oracle client: a typed pointer for each
// of the sixteen OCI entry points it calls. The gate (CWinOraInterface) fills it once from the
// client library and hands it out read-only; tests may install a table of fakes instead.
#pragma once
#include <array>

#include "oracle/client/oci_api.h"

namespace specific::oracle {

struct oci_table_t {
  OCIEnvCreate_fn OCIEnvCreate = nullptr;
  OCIErrorGet_fn OCIErrorGet = nullptr;
  OCIHandleAlloc_fn OCIHandleAlloc = nullptr;
  OCIHandleFree_fn OCIHandleFree = nullptr;
  OCIAttrSet_fn OCIAttrSet = nullptr;
  OCIServerAttach_fn OCIServerAttach = nullptr;
  OCIServerDetach_fn OCIServerDetach = nullptr;
  OCISessionBegin_fn OCISessionBegin = nullptr;
  OCISessionEnd_fn OCISessionEnd = nullptr;
  OCIStmtPrepare_fn OCIStmtPrepare = nullptr;
  OCIDefineByPos_fn OCIDefineByPos = nullptr;
  OCIBindByName_fn OCIBindByName = nullptr;
  OCIStmtExecute_fn OCIStmtExecute = nullptr;
  OCIStmtFetch2_fn OCIStmtFetch2 = nullptr;
  OCIDBStartup_fn OCIDBStartup = nullptr;
  OCIDBShutdown_fn OCIDBShutdown = nullptr;
};

// The exported names and the slot each fills, in table order, for the loaders.
struct oci_entry_t {
  const char* name;
  void** slot;
};

constexpr unsigned kOciEntryCount = 16;

// The entries of `table`, each naming the exported symbol that fills its slot.
std::array<oci_entry_t, kOciEntryCount> oci_entries(oci_table_t& table);

}  // namespace specific::oracle
