#include "common/exc/rethrow.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/ora_sid_collector.h"

namespace specific::oracle {

namespace {

// Disks outside any group fall out of the join: they belong to nothing the agent can back up.
const char kSqlAsmDisks[] =
    "SELECT D.PATH,DG.NAME,D.MODE_STATUS FROM V$ASM_DISK D, V$ASM_DISKGROUP DG WHERE "
    "DG.GROUP_NUMBER=D.GROUP_NUMBER";

}  // namespace

oracle_props_ptr_t CAsmInfoCollector::Collect() {
  logging::log_step_t step(logging::oralib(), "Gathering ASM properties for SID: [%1]",
                           util::to_utf8(instance.sid));
  try {
    auto props = std::make_shared<CAsmInstanceProps>(instance.sid);
    const auto rows = holder->get_session()->make_query()->exec(kSqlAsmDisks, 3,
                                                                /*upperCase=*/false);
    while (const auto row = rows->next_row()) {
      if (row->size() != 3) continue;
      auto disk = std::make_shared<CAsmDiskProps>();
      disk->path = (*row)[0];
      disk->name = (*row)[1];  // the group's name: every disk of one group carries it
      disk->state = (*row)[2];
      props->disks.push_back(std::move(disk));
    }
    step.ok();
    return props;
  } catch (const std::exception& e) {
    exc::rethrow_with_context("Failed to gather ASM properties.", e);
  }
}

}  // namespace specific::oracle
