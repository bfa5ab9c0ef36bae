#include "oracle/client/oracle_exc.h"

#include <memory>

namespace specific::oracle {

COracleExc::COracleExc(const std::string& text, uint32_t code) : exc::runtime_exc_t(text, code) {}

exc::exc_ptr_t COracleExc::clone() const { return std::make_shared<COracleExc>(*this); }
void COracleExc::throw_copy() const { throw COracleExc(*this); }

COracleInitTimeoutExc::COracleInitTimeoutExc(const std::string& text) : COracleExc(text) {}

exc::exc_ptr_t COracleInitTimeoutExc::clone() const {
  return std::make_shared<COracleInitTimeoutExc>(*this);
}
void COracleInitTimeoutExc::throw_copy() const { throw COracleInitTimeoutExc(*this); }

COracleSessionCreateExc::COracleSessionCreateExc(const std::string& text)
    : exc::runtime_exc_t(text) {}

}  // namespace specific::oracle
