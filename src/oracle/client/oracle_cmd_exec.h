// COracleCmdExec prepares one statement, takes binds by name and executes it once: PL/SQL
// blocks and statements with out-parameters. Bound buffers belong to the caller and must live
// until execute() has returned; out-parameters arrive in them. Values are in the client's
// narrow character set. Used on the operation's thread only.
#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "oracle/client/oracle_handle.h"

namespace specific::oracle {

class COracleCmdExec {
 public:
  // Makes the statement handle and prepares `sql`. The service context's session attribute is
  // not set here: the session's logon has set it. Failures carry the trace line
  // "Failed to create oracle cmd executor.".
  COracleCmdExec(std::shared_ptr<COracleEnv> env, std::shared_ptr<COracleHandle> svcCtx,
                 const std::string& sql);

  // Binds the placeholder `name` (with its colon) to `size` bytes at `value` of OCI external
  // type `type`: SQLT_STR with the size including the NUL, or SQLT_INT with size 4.
  void bind(const std::string& name, void* value, ub2 type, ub4 size);
  // Runs the statement once.
  void execute();

  const std::shared_ptr<COracleHandle>& statement() const { return statement_; }

 private:
  std::string handle_text() const;

  std::shared_ptr<COracleEnv> env_;
  std::shared_ptr<COracleHandle> svcCtx_;
  std::shared_ptr<COracleHandle> statement_;
};

}  // namespace specific::oracle
