#include "oracle/client/unique_object_name.h"

#include <cctype>

#include "common/text/convert.h"
#include "common/text/guid.h"

namespace specific::oracle {

namespace {

// Any letter keeps the name a valid identifier; a GUID's text may begin with a digit.
constexpr char kNameLetter = 'T';
constexpr size_t kGuidCharacters = 25;

}  // namespace

std::string unique_object_name_from(const std::string& guidText) {
  std::string name(1, kNameLetter);
  for (size_t i = 0; i < guidText.size() && i < kGuidCharacters; ++i) {
    const char c = guidText[i];
    if (c == '{' || c == '}' || c == '-') {
      name += '_';
    } else {
      name += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
  }
  return name;
}

std::string make_unique_object_name() {
  return unique_object_name_from(util::to_multibyte(util::guid_to_text(util::new_guid())));
}

}  // namespace specific::oracle
