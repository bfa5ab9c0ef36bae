// The platform's loader under load_oci_table: which library to open, opening it, finding an
// entry point, letting go. For the oci_loader files only.
#pragma once
#include <string>

namespace specific::oracle::module {

// Opens the library that DSL_OCI_LIBRARY names, or the client's own name. `shown` is the
// name as it goes into messages (UTF-8); on failure null, with the loader's answer in `error`.
void* open(std::string& shown, std::string& error);
// The address of an exported entry point, or null.
void* symbol(void* module, const char* name);
void close(void* module);

}  // namespace specific::oracle::module
