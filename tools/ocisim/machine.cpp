#include "machine.h"

#include <cstdio>
#include <mutex>

#include "errors.h"

namespace ocisim {

namespace {

std::string fnv_hash(const std::string& text) {
  unsigned long long hash = 1469598103934665603ULL;
  for (unsigned char c : text) {
    hash ^= c;
    hash *= 1099511628211ULL;
  }
  char buffer[24];
  std::snprintf(buffer, sizeof buffer, "%016llx", hash);
  return buffer;
}

std::string normal_home(const std::string& home) {
  std::string result = upper(home);
  for (char& c : result) {
    if (c == '/') c = '\\';
  }
  while (!result.empty() && result.back() == '\\') result.pop_back();
  return result;
}

}  // namespace

std::string upper(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

std::string lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool instance_matches(const node_t& instance, const std::string& sid, const std::string& home) {
  if (sid.empty() || upper(instance.get("sid")) != upper(sid)) return false;
  return home.empty() || normal_home(instance.get("home")) == normal_home(home);
}

std::string machine_t::scenario_path() { return env_value("OCISIM_SCENARIO"); }

std::string machine_t::state_path() {
  const std::string explicit_path = env_value("OCISIM_STATE");
  if (!explicit_path.empty()) return explicit_path;
  const std::string scenario = scenario_path();
  return scenario.empty() ? std::string() : scenario + ".state";
}

namespace {

// The last machine this process read, and the versions of the files it came from.
struct cache_t {
  std::mutex lock;
  std::string scenario;
  std::string state;
  file_identity_t scenario_identity;
  file_identity_t state_identity;
  std::string hash;
  std::shared_ptr<const node_t> root;
};

cache_t& cache() {
  static cache_t* instance = new cache_t;  // outlives workers that are still running at exit
  return *instance;
}

}  // namespace

machine_t::machine_t() {
  const std::string scenario = scenario_path();
  if (scenario.empty()) {
    auto empty = std::make_shared<node_t>();
    empty->name = "machine";
    read_ = empty;
    return;
  }
  const std::string state = state_path();
  lock_ = std::make_unique<file_lock_t>(state + ".lock");

  const file_identity_t scenario_identity = file_identity(scenario);
  const file_identity_t state_identity = file_identity(state);
  // A small scenario is read and hashed at every call, so that an edit is seen even when it
  // keeps the file's size within one tick of the file system's clock; a large one is known
  // by its identity alone, which keeps a large machine cheap to reach.
  const bool small = scenario_identity.exists && scenario_identity.size <= 65536;
  std::string text;
  if (small) {
    if (!read_file(scenario, text)) throw ora(600, {"ocisim", "scenario", "cannot read " + scenario});
    hash_ = fnv_hash(text);
  }
  {
    cache_t& c = cache();
    std::lock_guard<std::mutex> guard(c.lock);
    if (c.root && c.scenario == scenario && c.state == state && c.state_identity == state_identity &&
        (small ? c.hash == hash_ : c.scenario_identity == scenario_identity)) {
      read_ = c.root;
      hash_ = c.hash;
      return;
    }
  }

  if (!small) {
    if (!read_file(scenario, text)) throw ora(600, {"ocisim", "scenario", "cannot read " + scenario});
    hash_ = fnv_hash(text);
  }
  auto root = std::make_shared<node_t>();
  std::string error;
  if (!parse_xml(text, *root, error)) {
    throw ora(600, {"ocisim", "scenario", scenario + " " + error});
  }
  // The state file stands for the scenario it was made from; an edited scenario starts over.
  std::string saved;
  auto saved_root = std::make_shared<node_t>();
  if (read_file(state, saved) && parse_xml(saved, *saved_root, error) &&
      saved_root->get("scenario_hash") == hash_) {
    saved_root->erase("scenario_hash");
    root = saved_root;
  }
  read_ = root;
  cache_t& c = cache();
  std::lock_guard<std::mutex> guard(c.lock);
  c.scenario = scenario;
  c.state = state;
  c.scenario_identity = scenario_identity;
  c.state_identity = state_identity;
  c.hash = hash_;
  c.root = read_;
}

const node_t& machine_t::root() const { return edited_ ? *edited_ : *read_; }

const node_t* machine_t::find_instance(const std::string& sid, const std::string& home) const {
  for (const node_t* instance : root().all("instance")) {
    if (instance_matches(*instance, sid, home)) return instance;
  }
  return nullptr;
}

node_t& machine_t::edit_root() {
  if (!edited_) edited_ = std::make_unique<node_t>(*read_);
  return *edited_;
}

node_t* machine_t::edit_instance(const std::string& sid, const std::string& home) {
  for (node_t* instance : edit_root().all("instance")) {
    if (instance_matches(*instance, sid, home)) return instance;
  }
  return nullptr;
}

void machine_t::save() {
  const std::string state = state_path();
  if (state.empty() || !edited_) return;
  node_t copy = *edited_;
  copy.attributes.insert(copy.attributes.begin(), {"scenario_hash", hash_});
  if (!write_file(state, to_xml(copy))) {
    throw ora(600, {"ocisim", "state", "cannot write " + state});
  }
  // What was written is what the next call here would read. The tree as first read stays
  // alive with this object, so references a caller took into it remain good.
  if (!first_read_) first_read_ = read_;
  read_ = std::shared_ptr<const node_t>(std::move(edited_));
  cache_t& c = cache();
  std::lock_guard<std::mutex> guard(c.lock);
  c.scenario = scenario_path();
  c.state = state;
  c.scenario_identity = file_identity(c.scenario);
  c.state_identity = file_identity(state);
  c.hash = hash_;
  c.root = read_;
}

}  // namespace ocisim
