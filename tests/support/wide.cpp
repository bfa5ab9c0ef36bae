#include "support/wide.h"

#include "common/text/convert.h"

namespace dsl_test {

std::string utf8(const std::u16string& text) { return util::to_utf8(text); }

}  // namespace dsl_test
