#include "image_boot.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace ocisim::image {

namespace {

bool in_backup(const node_t& instance) {
  for (const node_t* file : instance.all("data_file")) {
    if (file->get("backup", "NOT ACTIVE") == "ACTIVE") return true;
  }
  return false;
}

void pdbs_after_start(node_t& instance) {
  for (node_t* pdb : instance.all("pdb")) {
    if (pdb->get("name") == "PDB$SEED") pdb->set("open_mode", "READ ONLY");
    else pdb->set("open_mode", pdb->get("saved_state", "MOUNTED"));
  }
}

void boot_instance(node_t& instance, const std::string& now, const boot_options_t& options) {
  instance.erase("shutdown_pending");
  instance.erase("opened_mode");
  const std::string start = instance.get("service_start", "auto");
  if (start != "auto") {
    instance.set("service", "stopped");
    instance.set("state", "down");
    return;
  }
  instance.set("service", "running");
  if (options.polls > 0) {
    // The first faults that apply fire first: the service is not there yet for `polls` tries.
    node_t fault;
    fault.name = "fault";
    fault.set("on", "attach");
    fault.set("error", "12560");
    fault.set("times", std::to_string(options.polls));
    instance.children.insert(instance.children.begin(), fault);
  }
  if (instance.get("autostart", "true") == "false") {
    instance.set("state", "down");
    return;
  }
  const std::string startups = instance.get("startups", "1");
  instance.set("startups", std::to_string(std::strtoll(startups.c_str(), nullptr, 10) + 1));
  instance.set("startup_time", now);
  const bool is_asm = instance.get("type", instance.get("sid").rfind('+', 0) == 0 ? "asm" : "database") == "asm";
  if (is_asm) {
    instance.set("state", "started");
    return;
  }
  pdbs_after_start(instance);
  if (in_backup(instance)) {
    instance.set("state", "mounted");
    instance.set("opened_once", "no");
  } else {
    instance.set("state", "open");
    instance.set("opened_once", "yes");
  }
}

}  // namespace

// The machine's clock as the scenario writes dates: its fixed `now`, else the real time.
std::string machine_now_text(const node_t& machine) {
  if (machine.has("now")) return machine.get("now");
  const std::time_t t = std::time(nullptr);
  std::tm parts{};
#ifdef _WIN32
  localtime_s(&parts, &t);
#else
  localtime_r(&t, &parts);
#endif
  char buffer[32];
  std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &parts);
  return buffer;
}

void boot(node_t& machine, const boot_options_t& options) {
  const std::string now = machine_now_text(machine);
  for (node_t* instance : machine.all("instance")) boot_instance(*instance, now, options);
}

}  // namespace ocisim::image
