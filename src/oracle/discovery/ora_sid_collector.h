// The collectors: each describes one instance over its session and returns its record. The
// explore flow makes one per instance, runs Collect once and drops it. On the operation's
// thread, on a session that nothing else uses.
#pragma once
#include <memory>

#include "oracle/discovery/oracle_props.h"
#include "oracle/discovery/oracle_sid.h"

namespace specific::oracle {

class COracleSessionHolder;
struct SDbLogRecInfo;

class COraSidCollector {
 public:
  COraSidCollector(std::shared_ptr<COracleSessionHolder> holder, const SOracleSid& instance)
      : holder(std::move(holder)), instance(instance) {}
  virtual ~COraSidCollector() = default;
  virtual oracle_props_ptr_t Collect() = 0;

 protected:
  std::shared_ptr<COracleSessionHolder> holder;
  const SOracleSid& instance;  // owned by the caller, outlives the collector
};

// A database: files, logs, settings (the `database` element). Its failures leave Collect as
// "Failed to gather database properties." over the cause.
class CDbInfoCollector : public COraSidCollector {
 public:
  CDbInfoCollector(std::shared_ptr<COracleSessionHolder> holder, const SOracleSid& instance,
                   std::shared_ptr<SDbLogRecInfo> logRecInfo, bool option)
      : COraSidCollector(std::move(holder), instance),
        option(option),
        logRecInfo(std::move(logRecInfo)) {}
  oracle_props_ptr_t Collect() override;

 private:
  bool option;
  std::shared_ptr<SDbLogRecInfo> logRecInfo;
};

// An ASM instance: its disks and their groups (the `asm` element).
class CAsmInfoCollector : public COraSidCollector {
 public:
  using COraSidCollector::COraSidCollector;
  oracle_props_ptr_t Collect() override;
};

// The parameter file found by name in the home's `database` folder: spfile<SID>.ora, else
// init<SID>.ora, else "". Looks at the file system only; also used for error records.
std::u16string find_parameter_file(const SOracleSid& instance);

}  // namespace specific::oracle
