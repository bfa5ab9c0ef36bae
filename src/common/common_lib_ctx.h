// CCommonLibCtx: the process-wide object of the common library. It owns what the file layer,
// impersonation and the thread contexts reach from anywhere, and the access policy asked before
// every file operation. ctx() creates it on first use, from any thread, and it lives to process
// exit. Each member has a lock of its own; the context itself needs none after creation.
#pragma once
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/security/files_access_permissions.h"
#include "common/security/key_store.h"
#include "common/synch/thread_context.h"
#include "common/win/impersonation_tables.h"

namespace io {

// A pool of devices of a numbered item. Made and emptied here; its users live outside this
// library.
class io_dev_pool_t {
 public:
  size_t size() const;

 private:
  mutable std::mutex lock_;
  std::vector<std::shared_ptr<void>> devices_;
};

// The multiplexors of console output, emptied when the context ends. Nothing in this library
// adds one; a host may.
class CCoutMultiplexor {
 public:
  void add(std::shared_ptr<void> multiplexor);
  size_t size() const;
  void clear();

 private:
  mutable std::mutex lock_;
  std::list<std::shared_ptr<void>> multiplexors_;
};

}  // namespace io

class CCommonLibCtx {
 public:
  CCommonLibCtx();
  // Empties the console multiplexors, with a line on the "cli" channel when there were any;
  // the members then go in the reverse order of their making.
  ~CCommonLibCtx();
  CCommonLibCtx(const CCommonLibCtx&) = delete;
  CCommonLibCtx& operator=(const CCommonLibCtx&) = delete;

  synch::thread_context_list_t& thread_contexts() { return thread_contexts_; }
  win::WinImpersonationTokensMap& impersonation_tokens() { return impersonation_tokens_; }
  win::impersonation_contexts_t& impersonation_contexts() { return impersonation_contexts_; }

  // The pool of numbered item `id`, or empty; item 0 exists from the start.
  std::shared_ptr<io::io_dev_pool_t> io_pool(uint32_t id) const;
  size_t io_pool_count() const;

  const std::shared_ptr<io::CCoutMultiplexor>& cout_multiplexor() const {
    return cout_multiplexor_;
  }
  const std::shared_ptr<crypto::CRuntimeKeyStore>& key_store() const { return key_store_; }

  // Never empty. A caller keeps the policy it got for the span of its check, even if another
  // thread installs a new one meanwhile.
  std::shared_ptr<security::IFilesAccessPermissions> files_permissions() const;
  // For a host with a stricter policy; an empty pointer brings back the unrestricted one.
  void set_files_permissions(std::shared_ptr<security::IFilesAccessPermissions> permissions);

 private:
  synch::thread_context_list_t thread_contexts_;
  win::WinImpersonationTokensMap impersonation_tokens_;
  win::impersonation_contexts_t impersonation_contexts_;
  mutable std::mutex io_pools_lock_;
  std::map<uint32_t, std::shared_ptr<io::io_dev_pool_t>> io_pools_;
  std::shared_ptr<io::CCoutMultiplexor> cout_multiplexor_;
  std::shared_ptr<crypto::CRuntimeKeyStore> key_store_;
  std::shared_ptr<security::IFilesAccessPermissions> files_permissions_;
};

// The context, made on first use. A call that comes after the context has ended during process
// exit gets a second one that is never destroyed, so that late log and file work still finds a
// policy and a table (an empty one: what a host put in the first is gone by then).
std::shared_ptr<CCommonLibCtx> ctx();
