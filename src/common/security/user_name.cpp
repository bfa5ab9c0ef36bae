#include "common/security/user_name.h"

namespace security {

void parse_user_name(const std::u16string& name, std::u16string& domain, std::u16string& user,
                     bool& is_upn) {
  const size_t slash = name.find(u'\\');
  if (slash != std::u16string::npos) {
    domain = name.substr(0, slash);
    user = name.substr(slash + 1);
    return;
  }
  if (name.find(u'@') != std::u16string::npos) {
    is_upn = true;
    return;
  }
  domain.assign(1, u'.');  // the local machine; "= u\".\"" draws a false -Wrestrict from GCC 12
  user = name;
}

}  // namespace security
