// ocisim-image: a machine restored from a volume snapshot. The copy takes the machine (its
// scenario with the state a statement left) and folders of files as a snapshot would catch
// them, then boots the copy the way a restored Windows server boots: each instance comes up by
// its service's start mode, as Oracle would bring it up. One thread.
#pragma once
#include <string>

#include "node.h"

namespace ocisim::image {

struct boot_options_t {
  // Attaches that answer ORA-12560 before an instance's service answers, as while a service
  // is still starting.
  long long polls = 0;
};

// Boots every <instance> of `machine` in place:
//  - service_start="manual" or "disabled": the service stays stopped, the instance down;
//  - service_start="auto" (the default) with autostart="false": the service runs, the
//    instance is idle (down);
//  - otherwise an ASM instance is started; a database instance is mounted and, unless a data
//    file is in backup mode (the open would fail with ORA-10873 until END BACKUP), opened:
//    a clean or crash-consistent image comes up OPEN, whatever state it had at the snapshot;
//    plugged databases come up MOUNTED (PDB$SEED READ ONLY), or in their saved_state;
//  - every booted instance gets a new start-up (count, time) and forgets a pending shut-down.
void boot(node_t& machine, const boot_options_t& options);

}  // namespace ocisim::image
