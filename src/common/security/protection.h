// The protection step of stored credentials. This program carries no cipher: it imports none
// and links none, so protecting yields no bytes at all and no user name or password ever
// reaches a document. The credential block (credential_block.h) keeps its shape around this
// empty core. Pure functions: safe from any thread.
#pragma once
#include <cstdint>
#include <vector>

namespace crypto {

using bytes_t = std::vector<uint8_t>;

// An empty vector, whatever the input.
bytes_t protect(const bytes_t& clear);
// An empty vector, whatever the input.
bytes_t unprotect(const bytes_t& protected_bytes);

}  // namespace crypto
