#include "handles.h"

#include <cstdio>

namespace ocisim {

namespace {

struct registry_t {
  std::mutex lock;
  std::map<const void*, std::shared_ptr<handle_t>> handles;
  unsigned next_id = 0;
};

registry_t& registry() {
  // Never destroyed: a worker the caller abandoned may still be inside the client when the
  // process ends, and must not find the registry gone.
  static registry_t* instance = new registry_t;
  return *instance;
}

void erase_tree(registry_t& r, const handle_t* root) {
  std::vector<const handle_t*> children;
  for (const auto& entry : r.handles) {
    if (entry.second->parent == root) children.push_back(entry.second.get());
  }
  for (const handle_t* child : children) erase_tree(r, child);
  r.handles.erase(root);
}

}  // namespace

const char* handle_type_name(ub4 type) {
  switch (type) {
    case OCI_HTYPE_ENV: return "env";
    case OCI_HTYPE_ERROR: return "err";
    case OCI_HTYPE_SVCCTX: return "svc";
    case OCI_HTYPE_STMT: return "stmt";
    case OCI_HTYPE_BIND: return "bind";
    case OCI_HTYPE_DEFINE: return "def";
    case OCI_HTYPE_SERVER: return "srv";
    case OCI_HTYPE_SESSION: return "ses";
    case OCI_HTYPE_ADMIN: return "adm";
    default: return "handle";
  }
}

std::shared_ptr<handle_t> create_handle(ub4 type, handle_t* parent) {
  std::shared_ptr<handle_t> handle;
  switch (type) {
    case OCI_HTYPE_ENV: handle = std::make_shared<env_handle_t>(); break;
    case OCI_HTYPE_ERROR: handle = std::make_shared<error_handle_t>(); break;
    case OCI_HTYPE_SVCCTX: handle = std::make_shared<svcctx_handle_t>(); break;
    case OCI_HTYPE_STMT: handle = std::make_shared<stmt_handle_t>(); break;
    case OCI_HTYPE_BIND: handle = std::make_shared<bind_handle_t>(); break;
    case OCI_HTYPE_DEFINE: handle = std::make_shared<define_handle_t>(); break;
    case OCI_HTYPE_SERVER: handle = std::make_shared<server_handle_t>(); break;
    case OCI_HTYPE_SESSION: handle = std::make_shared<session_handle_t>(); break;
    case OCI_HTYPE_ADMIN: handle = std::make_shared<admin_handle_t>(); break;
    default: return nullptr;
  }
  handle->type = type;
  handle->parent = parent;
  registry_t& r = registry();
  std::lock_guard<std::mutex> guard(r.lock);
  handle->id = ++r.next_id;
  r.handles[handle.get()] = handle;
  return handle;
}

std::shared_ptr<handle_t> find_handle(const void* pointer, ub4 type) {
  if (pointer == nullptr) return nullptr;
  registry_t& r = registry();
  std::lock_guard<std::mutex> guard(r.lock);
  const auto found = r.handles.find(pointer);
  if (found == r.handles.end() || found->second->type != type) return nullptr;
  return found->second;
}

std::vector<std::shared_ptr<handle_t>> child_handles(const handle_t* parent) {
  std::vector<std::shared_ptr<handle_t>> result;
  registry_t& r = registry();
  std::lock_guard<std::mutex> guard(r.lock);
  for (const auto& entry : r.handles) {
    if (entry.second->parent == parent) result.push_back(entry.second);
  }
  return result;
}

bool free_handle(const void* pointer, ub4 type) {
  if (pointer == nullptr) return false;
  registry_t& r = registry();
  std::lock_guard<std::mutex> guard(r.lock);
  const auto found = r.handles.find(pointer);
  if (found == r.handles.end() || found->second->type != type) return false;
  erase_tree(r, found->second.get());
  return true;
}

std::string handle_label(const void* pointer) {
  if (pointer == nullptr) return "null";
  registry_t& r = registry();
  std::lock_guard<std::mutex> guard(r.lock);
  const auto found = r.handles.find(pointer);
  if (found == r.handles.end()) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%p", pointer);
    return buffer;
  }
  return std::string(handle_type_name(found->second->type)) + "#" + std::to_string(found->second->id);
}

}  // namespace ocisim
