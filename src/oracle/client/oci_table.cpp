#include "oracle/client/oci_table.h"

namespace specific::oracle {

namespace {

template <typename Fn>
void** slot_of(Fn& member) {
  return reinterpret_cast<void**>(&member);
}

}  // namespace

std::array<oci_entry_t, kOciEntryCount> oci_entries(oci_table_t& table) {
  return {{
      {"OCIEnvCreate", slot_of(table.OCIEnvCreate)},
      {"OCIErrorGet", slot_of(table.OCIErrorGet)},
      {"OCIHandleAlloc", slot_of(table.OCIHandleAlloc)},
      {"OCIHandleFree", slot_of(table.OCIHandleFree)},
      {"OCIAttrSet", slot_of(table.OCIAttrSet)},
      {"OCIServerAttach", slot_of(table.OCIServerAttach)},
      {"OCIServerDetach", slot_of(table.OCIServerDetach)},
      {"OCISessionBegin", slot_of(table.OCISessionBegin)},
      {"OCISessionEnd", slot_of(table.OCISessionEnd)},
      {"OCIStmtPrepare", slot_of(table.OCIStmtPrepare)},
      {"OCIDefineByPos", slot_of(table.OCIDefineByPos)},
      {"OCIBindByName", slot_of(table.OCIBindByName)},
      {"OCIStmtExecute", slot_of(table.OCIStmtExecute)},
      {"OCIStmtFetch2", slot_of(table.OCIStmtFetch2)},
      {"OCIDBStartup", slot_of(table.OCIDBStartup)},
      {"OCIDBShutdown", slot_of(table.OCIDBShutdown)},
  }};
}

}  // namespace specific::oracle
