// The tables and dynamic views an instance answers, built afresh from the machine for each
// statement: V$INSTANCE, V$DATABASE, V$VERSION, the file views, V$ARCHIVED_LOG, V$PARAMETER,
// V$PDBS, V$BACKUP, the ASM views, DUAL and the directory views. Each view also checks that
// the instance is far enough up to answer it, as Oracle does. Any thread, one machine each.
#pragma once
#include <string>

#include "node.h"
#include "sql_select.h"

namespace ocisim {

// How far an instance is up, in the order Oracle brings it up.
enum class level_t { down = 0, started = 1, mounted = 2, open = 3 };

level_t instance_level(const node_t& instance);
// V$INSTANCE.STATUS of a running instance: STARTED, MOUNTED, OPEN or OPEN MIGRATE.
std::string instance_status(const node_t& instance);
bool is_asm(const node_t& instance);
// The major version number of the instance ("19.0.0.0.0" gives 19); 0 when unknown.
int major_version(const node_t& instance);
// V$DATABASE.OPEN_MODE now: MOUNTED, or the database's open mode once open.
std::string current_open_mode(const node_t& instance);

// The view of that upper-case name; raises ORA-00942 for a name the instance does not have,
// ORA-01507 for a view that needs a mounted database, ORA-01219 for one that needs it open.
table_t build_view(const std::string& name, const node_t& machine, const node_t& instance);

}  // namespace ocisim
