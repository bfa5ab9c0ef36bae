// Entry points that stay inside the client: environment, handles, errors and attributes.
#include <algorithm>
#include <cstring>

#include "call.h"

using namespace ocisim;

namespace {

void give_user_memory(handle_t& handle, std::size_t size, void** usrmempp) {
  if (usrmempp == nullptr) return;
  if (size == 0) {
    *usrmempp = nullptr;
    return;
  }
  handle.user_memory.assign(size, '\0');
  *usrmempp = handle.user_memory.data();
}

}  // namespace

extern "C" sword OCIEnvCreate(OCIEnv** envp, ub4 mode, void* ctxp,
                              void* (*malocfp)(void* ctxp, std::size_t size),
                              void* (*ralocfp)(void* ctxp, void* memptr, std::size_t newsize),
                              void (*mfreefp)(void* ctxp, void* memptr), std::size_t xtramem_sz,
                              void** usrmempp) {
  call_t call("OCIEnvCreate");
  call.arg("mode", std::to_string(mode));
  return call.guarded([&]() -> sword {
    if (envp == nullptr) return call.invalid_handle();
    // The memory callbacks are accepted and not used: the simulated client keeps its own heap.
    auto env = std::static_pointer_cast<env_handle_t>(create_handle(OCI_HTYPE_ENV, nullptr));
    env->mode = mode;
    give_user_memory(*env, xtramem_sz, usrmempp);
    *envp = reinterpret_cast<OCIEnv*>(env.get());
    return call.ok(handle_label(env.get()));
  });
}

extern "C" sword OCIErrorGet(void* hndlp, ub4 recordno, OraText* sqlstate, sb4* errcodep,
                             OraText* bufp, ub4 bufsiz, ub4 type) {
  call_t call("OCIErrorGet");
  call.handle("handle", hndlp).arg("record", std::to_string(recordno));
  return call.guarded([&]() -> sword {
    error_record_t* record = nullptr;
    std::shared_ptr<handle_t> holder;
    if (type == OCI_HTYPE_ERROR) {
      auto error = find<error_handle_t>(hndlp, OCI_HTYPE_ERROR);
      if (error) record = &error->error;
      holder = error;
    } else if (type == OCI_HTYPE_ENV) {
      auto env = find<env_handle_t>(hndlp, OCI_HTYPE_ENV);
      if (env) record = &env->error;
      holder = env;
    }
    if (record == nullptr) return call.invalid_handle();
    int code = 0;
    std::string message;
    {
      std::lock_guard<std::mutex> guard(record->lock);
      if (!record->set || recordno != 1) return call.no_data();
      code = record->code;
      message = record->message;
    }
    if (errcodep != nullptr) *errcodep = code;
    if (bufp != nullptr && bufsiz > 0) {
      // Cut at the buffer's size, always terminated.
      const std::size_t length = std::min<std::size_t>(message.size(), bufsiz - 1);
      std::memcpy(bufp, message.data(), length);
      bufp[length] = '\0';
    }
    (void)sqlstate;  // not supported since Oracle 8; left untouched
    return call.ok(error_code_text(code));
  });
}

extern "C" sword OCIHandleAlloc(const void* parenth, void** hndlpp, const ub4 type,
                                const std::size_t xtramem_sz, void** usrmempp) {
  call_t call("OCIHandleAlloc");
  call.handle("parent", parenth).arg("type", handle_type_name(type));
  return call.guarded([&]() -> sword {
    auto env = find<env_handle_t>(parenth, OCI_HTYPE_ENV);
    if (!env || hndlpp == nullptr) return call.invalid_handle();
    switch (type) {
      case OCI_HTYPE_ERROR:
      case OCI_HTYPE_SVCCTX:
      case OCI_HTYPE_STMT:
      case OCI_HTYPE_SERVER:
      case OCI_HTYPE_SESSION:
      case OCI_HTYPE_ADMIN:
        break;
      default:
        // Defines and binds come from their calls; environments from OCIEnvCreate.
        return call.invalid_handle();
    }
    auto handle = create_handle(type, env.get());
    give_user_memory(*handle, xtramem_sz, usrmempp);
    *hndlpp = handle.get();
    return call.ok(handle_label(handle.get()));
  });
}

extern "C" sword OCIHandleFree(void* hndlp, const ub4 type) {
  call_t call("OCIHandleFree");
  call.handle("handle", hndlp).arg("type", handle_type_name(type));
  return call.guarded([&]() -> sword {
    if (!free_handle(hndlp, type)) return call.invalid_handle();
    return call.ok();
  });
}

extern "C" sword OCIAttrSet(void* trgthndlp, ub4 trghndltyp, void* attributep, ub4 size,
                            ub4 attrtype, OCIError* errhp) {
  call_t call("OCIAttrSet");
  call.handle("handle", trgthndlp);
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    if (trghndltyp == OCI_HTYPE_SVCCTX && (attrtype == OCI_ATTR_SERVER || attrtype == OCI_ATTR_SESSION)) {
      const bool server = attrtype == OCI_ATTR_SERVER;
      call.arg("attr", server ? "SERVER" : "SESSION").handle("value", attributep);
      auto svc = find<svcctx_handle_t>(trgthndlp, OCI_HTYPE_SVCCTX);
      if (!svc || !find_handle(attributep, server ? OCI_HTYPE_SERVER : OCI_HTYPE_SESSION)) {
        return call.invalid_handle();
      }
      (server ? svc->server : svc->session) = attributep;
      return call.ok();
    }
    if (trghndltyp == OCI_HTYPE_SESSION &&
        (attrtype == OCI_ATTR_USERNAME || attrtype == OCI_ATTR_PASSWORD)) {
      const bool user = attrtype == OCI_ATTR_USERNAME;
      auto session = find<session_handle_t>(trgthndlp, OCI_HTYPE_SESSION);
      if (!session) return call.invalid_handle();
      const std::string value = attributep == nullptr
                                    ? std::string()
                                    : std::string(static_cast<const char*>(attributep), size);
      // The password never reaches the journal.
      call.arg("attr", user ? "USERNAME" : "PASSWORD").arg("value", user ? value : "***");
      (user ? session->user : session->password) = value;
      return call.ok();
    }
    call.arg("type", handle_type_name(trghndltyp)).arg("attr", std::to_string(attrtype));
    if (!find_handle(trgthndlp, trghndltyp)) return call.invalid_handle();
    return call.error(ora(24315));
  });
}
