// A name for a temporary database object (a directory object, a scratch table) that no other
// run of this library will pick: one upper-case letter and up to 25 characters of a new GUID,
// within Oracle's limit of 30 characters for identifiers. Any thread.
#pragma once
#include <string>

namespace specific::oracle {

// "T" followed by the first 25 characters of the GUID's text, with `{`, `}` and `-` as `_`
// and every other character upper-cased, e.g. "T_1B4E28BA_2FA1_11D2_883F_".
std::string make_unique_object_name();

// The same rule applied to a given GUID text; for tests.
std::string unique_object_name_from(const std::string& guidText);

}  // namespace specific::oracle
