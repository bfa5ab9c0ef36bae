// The OCI handles of the simulated client: real objects, one per handle, known to a
// process-wide registry so that every entry point can tell a live handle of the right type
// from anything else (which Oracle answers with OCI_INVALID_HANDLE). Freeing a handle frees
// the handles that hang from it (an environment's, a statement's defines and binds). The
// registry is safe from any thread; one handle is used by one thread at a time, as OCI says.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "errors.h"
#include "oracle/client/oci_api.h"
#include "server.h"

namespace ocisim {

struct handle_t {
  ub4 type = 0;
  unsigned id = 0;
  handle_t* parent = nullptr;  // the environment, or the statement of a define or bind
  std::vector<char> user_memory;
  virtual ~handle_t() = default;
};

// The last error of a call, as OCIErrorGet hands it out.
struct error_record_t {
  std::mutex lock;
  bool set = false;
  int code = 0;
  std::string message;
};

struct env_handle_t : handle_t {
  ub4 mode = 0;
  error_record_t error;
};

struct error_handle_t : handle_t {
  error_record_t error;
};

struct server_handle_t : handle_t {
  bool attached = false;
  std::string sid;
  std::string home;
};

struct session_handle_t : handle_t {
  std::string user;
  std::string password;
  bool begun = false;
  session_info_t info;
};

struct svcctx_handle_t : handle_t {
  void* server = nullptr;   // as set with OCI_ATTR_SERVER; checked at each use
  void* session = nullptr;  // as set with OCI_ATTR_SESSION
};

struct define_handle_t : handle_t {
  ub4 position = 0;
  void* value = nullptr;
  sb4 value_size = 0;
  ub2 data_type = 0;
  sb2* indicator = nullptr;
  ub2* returned_length = nullptr;
  ub2* return_code = nullptr;
};

struct bind_handle_t : handle_t {
  std::string name;  // upper-case, without the colon
  void* value = nullptr;
  sb4 value_size = 0;
  ub2 data_type = 0;
  sb2* indicator = nullptr;
  ub2* actual_length = nullptr;
  ub2* return_code = nullptr;
};

struct stmt_handle_t : handle_t {
  // The defines made on this statement; a freed one has expired.
  std::vector<std::weak_ptr<define_handle_t>> defines;
  bool prepared = false;
  std::string text;
  bool query = false;  // a SELECT, as the client tells from the text
  bool executed = false;
  bool cursor_done = false;
  table_t rows;
  size_t next_row = 0;
  fetch_fault_t fetch_fault;
};

struct admin_handle_t : handle_t {};

// Makes a handle of `type` (an OCI_HTYPE_*) with `parent`; null for a type that cannot be
// allocated. The handle's address is the OCI handle.
std::shared_ptr<handle_t> create_handle(ub4 type, handle_t* parent);
// The live handle at `pointer` if it has `type`, else null.
std::shared_ptr<handle_t> find_handle(const void* pointer, ub4 type);
template <typename T>
std::shared_ptr<T> find(const void* pointer, ub4 type) {
  return std::static_pointer_cast<T>(find_handle(pointer, type));
}
// The live handles whose parent is `parent`.
std::vector<std::shared_ptr<handle_t>> child_handles(const handle_t* parent);
// Frees the handle and all that hang from it; false when it is no live handle of `type`.
bool free_handle(const void* pointer, ub4 type);

// "env#1", "stmt#7", "null", or the address of something that is no live handle.
std::string handle_label(const void* pointer);
const char* handle_type_name(ub4 type);

}  // namespace ocisim
