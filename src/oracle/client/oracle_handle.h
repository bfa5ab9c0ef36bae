// Owners of OCI handles: COracleEnv (the environment with its one error handle and the text of
// the last failure), COracleError (that error handle) and COracleHandle (any other handle), and
// the one function that turns an OCI return code into an exception. All are reached through
// shared pointers; a handle holds its environment so the environment outlives it.
//
// An environment, its handles and its errorText are used by one thread at a time: the session
// worker while the session is being made, the calling thread afterwards. A session whose worker
// was cut off sets `abandoned` on all of them: the cut-off thread may hold client-internal
// locks, so nothing may be called on these handles again, not even to free them.
#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "oracle/client/oci_api.h"

namespace specific::oracle {

class COracleEnv;

// The OCI error handle of an environment (type 2).
class COracleError {
 public:
  // Allocates the handle with `env` as parent; a non-zero result throws runtime_exc_t
  // "Failed to create OCI error. Code: %1".
  explicit COracleError(OCIEnv* env);
  ~COracleError();  // frees the handle if there is one; never throws
  COracleError(const COracleError&) = delete;
  COracleError& operator=(const COracleError&) = delete;

  OCIError* handle() const { return handle_; }

 private:
  OCIError* handle_ = nullptr;
};

class COracleEnv {
 public:
  // A new environment: OCIEnvCreate in threaded mode, then its error handle. The environment
  // is in the client's narrow character set: no text passed to OCI or returned by it here is
  // UTF-16. Throws runtime_exc_t "Failed to create OCI env. Code: %1".
  static std::shared_ptr<COracleEnv> create();

  // Unless abandoned: the error handle is released first, then the environment is freed.
  ~COracleEnv();
  COracleEnv(const COracleEnv&) = delete;
  COracleEnv& operator=(const COracleEnv&) = delete;

  OCIEnv* handle() const { return env_; }
  const std::shared_ptr<COracleError>& error() const { return error_; }
  OCIError* error_handle() const { return error_ ? error_->handle() : nullptr; }

  // The text of the last failure, kept for the exception that follows it.
  const std::u16string& error_text() const { return errorText_; }
  void set_error_text(const std::u16string& text) { errorText_ = text; }

  bool abandoned() const { return abandoned_; }
  void abandon() { abandoned_ = true; }

 private:
  COracleEnv() = default;

  OCIEnv* env_ = nullptr;
  std::shared_ptr<COracleError> error_;
  std::u16string errorText_;
  bool abandoned_ = false;
};

// Owner of one OCI handle of any other type.
class COracleHandle {
 public:
  // Allocates a handle of `type` with the environment as parent; the result goes through the
  // error check.
  static std::shared_ptr<COracleHandle> create(const std::shared_ptr<COracleEnv>& env, ub4 type);
  // Takes over a handle OCI has already allocated, such as a define handle (type 6).
  static std::shared_ptr<COracleHandle> adopt(const std::shared_ptr<COracleEnv>& env,
                                              void* handle, ub4 type);

  // Frees the handle unless it is null or abandoned; the result is not looked at.
  ~COracleHandle();
  COracleHandle(const COracleHandle&) = delete;
  COracleHandle& operator=(const COracleHandle&) = delete;

  void* handle() const { return handle_; }
  ub4 type() const { return type_; }
  const std::shared_ptr<COracleEnv>& env() const { return env_; }

  template <typename T>
  T* as() const {
    return static_cast<T*>(handle_);
  }

  bool abandoned() const { return abandoned_; }
  void abandon() { abandoned_ = true; }

 private:
  COracleHandle(std::shared_ptr<COracleEnv> env, void* handle, ub4 type);

  std::shared_ptr<COracleEnv> env_;
  void* handle_ = nullptr;
  ub4 type_ = 0;
  bool abandoned_ = false;
};

// The error check. Returns 0 for OCI_SUCCESS, OCI_SUCCESS_WITH_INFO and OCI_NO_DATA without
// asking OCI anything. Any other code but OCI_ERROR stores and throws runtime_exc_t
// "Unexpected Oracle error has occurred. Code: %1". For OCI_ERROR the first error record is
// read; when its ORA- number is `allowedCode` (0 allows none) that number is returned and
// nothing is stored; otherwise the client's message (or "Undefined Oracle error has occurred")
// is stored in the environment's errorText and COracleExc "Oracle error has occurred. %1" is
// thrown with the ORA- number as its code.
sb4 check_oci_result(COracleEnv& env, sword code, sb4 allowedCode = 0);

// The size of the buffer the error check reads a message into.
constexpr ub4 kOciErrorBufferSize = 2048;

}  // namespace specific::oracle
