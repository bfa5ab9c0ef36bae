#include "oracle/client/oracle_handle.h"

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/text/numbers.h"
#include "oracle/client/ora_interface.h"
#include "oracle/client/oracle_exc.h"

namespace specific::oracle {

// COracleError ------------------------------------------------------------------------------

COracleError::COracleError(OCIEnv* env) {
  void* handle = nullptr;
  const sword rc = CWinOraInterface::instance()->handle_alloc(env, &handle, OCI_HTYPE_ERROR);
  if (rc != OCI_SUCCESS) {
    throw exc::runtime_exc_t("Failed to create OCI error. Code: %1", util::to_str(rc));
  }
  handle_ = static_cast<OCIError*>(handle);
}

COracleError::~COracleError() {
  if (handle_) CWinOraInterface::instance()->handle_free(handle_, OCI_HTYPE_ERROR);
}

// COracleEnv --------------------------------------------------------------------------------

std::shared_ptr<COracleEnv> COracleEnv::create() {
  // Built in place, so that a failure of the error handle still frees the environment.
  std::shared_ptr<COracleEnv> env(new COracleEnv());
  OCIEnv* handle = nullptr;
  const sword rc = CWinOraInterface::instance()->env_create(&handle, OCI_THREADED);
  if (rc != OCI_SUCCESS) {
    throw exc::runtime_exc_t("Failed to create OCI env. Code: %1", util::to_str(rc));
  }
  env->env_ = handle;
  env->error_ = std::make_shared<COracleError>(handle);
  return env;
}

COracleEnv::~COracleEnv() {
  if (abandoned_) return;  // the member still goes; its handle is freed only if unshared
  error_.reset();
  if (env_) CWinOraInterface::instance()->handle_free(env_, OCI_HTYPE_ENV);
}

// COracleHandle -----------------------------------------------------------------------------

COracleHandle::COracleHandle(std::shared_ptr<COracleEnv> env, void* handle, ub4 type)
    : env_(std::move(env)), handle_(handle), type_(type) {}

std::shared_ptr<COracleHandle> COracleHandle::create(const std::shared_ptr<COracleEnv>& env,
                                                     ub4 type) {
  void* handle = nullptr;
  const sword rc = CWinOraInterface::instance()->handle_alloc(env->handle(), &handle, type);
  check_oci_result(*env, rc);
  return std::shared_ptr<COracleHandle>(new COracleHandle(env, handle, type));
}

std::shared_ptr<COracleHandle> COracleHandle::adopt(const std::shared_ptr<COracleEnv>& env,
                                                    void* handle, ub4 type) {
  return std::shared_ptr<COracleHandle>(new COracleHandle(env, handle, type));
}

COracleHandle::~COracleHandle() {
  if (handle_ && !abandoned_) CWinOraInterface::instance()->handle_free(handle_, type_);
}

// The error check ---------------------------------------------------------------------------

sb4 check_oci_result(COracleEnv& env, sword code, sb4 allowedCode) {
  if (code == OCI_SUCCESS || code == OCI_SUCCESS_WITH_INFO || code == OCI_NO_DATA) return 0;

  if (code != OCI_ERROR) {
    // No error record stands behind these codes (an invalid handle, a need for data): the
    // code is all there is to tell.
    const std::string text =
        util::fmt_t::format("Unexpected Oracle error has occurred. Code: %1", util::to_str(code));
    env.set_error_text(util::to_unicode(text));
    throw exc::runtime_exc_t(text);
  }

  OraText buffer[kOciErrorBufferSize] = {};
  sb4 errorCode = 0;
  CWinOraInterface::instance()->error_get(env.error_handle(), /*record=*/1, &errorCode, buffer,
                                          sizeof buffer, OCI_HTYPE_ERROR);

  // An allowed code is an answer the caller expects, not a failure: nothing is recorded.
  if (allowedCode != 0 && errorCode == allowedCode) return allowedCode;

  // The buffer is read up to its first NUL and never past its end, whatever OCI wrote.
  const auto* bytes = reinterpret_cast<const char*>(buffer);
  size_t length = 0;
  while (length < sizeof buffer && bytes[length] != '\0') ++length;
  const std::string message(bytes, length);
  env.set_error_text(message.empty() ? u"Undefined Oracle error has occurred"
                                     : util::to_unicode(message));
  throw COracleExc(util::fmt_t::format("Oracle error has occurred. %1",
                                       util::to_multibyte(env.error_text())),
                   static_cast<uint32_t>(errorCode));
}

}  // namespace specific::oracle
