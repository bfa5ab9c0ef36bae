// COracleManager: the operations behind the exports. Each gives its work a log step where it
// has one, builds what the subsystem needs, and on failure adds one trace line naming the
// operation. It holds no data; every object an operation builds lives for that operation.
#pragma once
#include <cstdint>
#include <string>

#include "oracle/client/conn.h"

namespace specific::oracle {

class COracleManager {
 public:
  static COracleManager& instance();

  std::u16string explore(bool option, const conn_t& conn, const std::u16string& configXml);
  void delete_logs_by_time(const std::u16string& home, const std::u16string& sid, int32_t minutes,
                           const conn_t& conn);
  void delete_logs_by_size(const std::u16string& home, const std::u16string& sid, uint64_t size,
                           const conn_t& conn);
  std::u16string prepare(const std::u16string& configXml, const conn_t& conn,
                         const std::u16string& osUser, const std::u16string& osPassword);
  void finish(const std::u16string& dbPrepareXml, const conn_t& conn);
  std::u16string backup_logs(const std::u16string& home, const std::u16string& sid,
                             const std::u16string& usn, const std::u16string& lastRecId,
                             const conn_t& conn);
  std::u16string logs_folder();
  std::u16string enum_logs();
  void remove_logs_in_temp(const std::u16string& logsXml);
  bool restore_required();
  void do_restore();
  void test();
};

}  // namespace specific::oracle
