// The service control manager answered from the host build's registry store. A manager handle
// holds the tree it was connected to; a service handle holds that tree and the service's key, so
// the state it reports is the one of the store it was opened on.
#include <memory>

#include "common/win/handle_table_posix.h"
#include "common/win/reg_api.h"
#include "common/win/reg_file.h"
#include "common/win/reg_store_posix.h"
#include "common/win/svc_api.h"

namespace win::svc_api {

namespace {

constexpr char16_t kServicesPath[] = u"SYSTEM\\CurrentControlSet\\Services";
constexpr char16_t kCurrentStateValue[] = u"CurrentState";
constexpr uint32_t kMaxServiceNameLength = 256;

struct sc_object_t {
  std::shared_ptr<const reg_file::tree_t> tree;
  const reg_file::key_t* service = nullptr;  // null for the manager
  uint32_t access = 0;
};

host::handle_table_t<sc_object_t>& handles() {
  static host::handle_table_t<sc_object_t> instance;
  return instance;
}

sc_object_t* find_handle(svc_handle_t handle) { return handles().find(handle); }

svc_handle_t keep(std::unique_ptr<sc_object_t> object) {
  return handles().keep(std::move(object));
}

}  // namespace

uint32_t open_manager(uint32_t access, svc_handle_t& out) {
  auto object = std::make_unique<sc_object_t>();
  object->tree = reg_store::current();
  object->access = access;
  out = keep(std::move(object));
  return 0;
}

uint32_t open_service(svc_handle_t manager, const std::u16string& name, uint32_t access,
                      svc_handle_t& out) {
  const sc_object_t* owner = find_handle(manager);
  if (owner == nullptr || owner->service != nullptr) return kErrorInvalidHandle;
  // Service names are not paths: the manager refuses separators and empty or overlong names.
  if (name.empty() || name.size() > kMaxServiceNameLength ||
      name.find_first_of(u"\\/") != std::u16string::npos) {
    return kErrorInvalidName;
  }
  const reg_file::key_t* services =
      owner->tree->find(reg_file::root_t::local_machine, kServicesPath);
  const reg_file::key_t* service = services == nullptr ? nullptr : services->find_subkey(name);
  if (service == nullptr) return kErrorServiceDoesNotExist;
  auto object = std::make_unique<sc_object_t>();
  object->tree = owner->tree;
  object->service = service;
  object->access = access;
  out = keep(std::move(object));
  return 0;
}

uint32_t query_state(svc_handle_t service, uint32_t& state) {
  const sc_object_t* object = find_handle(service);
  if (object == nullptr || object->service == nullptr) return kErrorInvalidHandle;
  if ((object->access & (kServiceQueryStatus | kGenericRead | kGenericAll)) == 0) {
    return kErrorAccessDenied;
  }
  const reg_file::value_t* value = object->service->find_value(kCurrentStateValue);
  if (value == nullptr) {
    state = kServiceStopped;
    return 0;
  }
  // A state that is not a four-byte DWORD is a fault of the store file, not a state.
  if (value->type != kRegDword || value->data.size() != 4) return kErrorInvalidData;
  state = le_dword(value->data.data());
  return 0;
}

uint32_t close_handle(svc_handle_t handle) noexcept {
  return handles().close(handle) ? 0 : kErrorInvalidHandle;
}

}  // namespace win::svc_api
