// The credential block that a preparation document stores in place of a user and a password:
// base64 of the compact XML text <root u="..." p="..."/>, where u and p are base64 of the
// protected bytes of each value. Protection gives no bytes (protection.h), so every block is
// the same and reads back as two empty strings, which callers take as "no credentials".
// Neither operation throws: failures become a warning on the default channel. Any thread.
#pragma once
#include <string>

namespace crypto {

// True with the block. On failure: the warning "Unable to serialize protected credentials"
// with the failure's text, false, `block` untouched.
bool serialize_protected(const std::string& user, const std::string& password,
                         std::string& block);

// True with both values. A block that does not decode to XML with a `root` element holding
// `u` and `p`: the warning "Unable to deserialize protected credentials" with the failure's
// text, false, `user` and `password` untouched.
bool deserialize_protected(const std::string& block, std::string& user, std::string& password);

}  // namespace crypto
