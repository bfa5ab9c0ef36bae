// The exceptions of the Oracle client layer.
//   COracleExc: Oracle refused a call (OCI_ERROR); code() is the ORA- number.
//   COracleInitTimeoutExc: a session was not made within the connection time-out; callers
//     catch it by type, so it keeps its type across rethrows and across threads.
//   COracleSessionCreateExc: no valid session came back. A sibling of COracleExc, not a kind
//     of it, so a handler for Oracle's refusals does not see it; it has no clone of its own
//     and so arrives as a plain runtime_exc_t when it crosses a thread by capture().
// Thrown by value, caught by reference; any thread.
#pragma once
#include <cstdint>
#include <string>

#include "common/exc/exc_base.h"

namespace specific::oracle {

class COracleExc : public exc::runtime_exc_t {
 public:
  explicit COracleExc(const std::string& text, uint32_t code = 0);

  exc::exc_ptr_t clone() const override;
  [[noreturn]] void throw_copy() const override;
};

class COracleInitTimeoutExc : public COracleExc {
 public:
  explicit COracleInitTimeoutExc(const std::string& text);

  exc::exc_ptr_t clone() const override;
  [[noreturn]] void throw_copy() const override;
};

class COracleSessionCreateExc : public exc::runtime_exc_t {
 public:
  explicit COracleSessionCreateExc(const std::string& text);
  // clone and throw_copy are those of runtime_exc_t, on purpose (see above).
};

}  // namespace specific::oracle
