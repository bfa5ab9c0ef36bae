// Loads the built ocisim client at run time and finds its sixteen entry points by name, the way
// the library binds Oracle's client. The tests' own loader: one instance per loaded file.
#pragma once
#include <memory>
#include <string>

#include "oracle/client/oci_table.h"

namespace ocisim_test {

// The same table of the sixteen entry points the library binds.
using oci_api_t = specific::oracle::oci_table_t;

class oci_library_t {
 public:
  // Loads the file at `path`. With `keep_loaded` the code stays mapped after this object is
  // gone (a worker thread of a test may still sleep inside it); without, it is unloaded.
  static std::unique_ptr<oci_library_t> load(const std::string& path, bool keep_loaded,
                                             std::string& error);
  // The file name of the client on this platform: OCI.dll or libclntsh.so.
  static const char* file_name();
  // $DSL_BIN_DIR/ocisim/<file name>.
  static std::string built_path();

  oci_library_t(const oci_library_t&) = delete;
  oci_library_t& operator=(const oci_library_t&) = delete;
  ~oci_library_t();

  const oci_api_t& api() const { return api_; }
  // The entry point of that name, or null: for checking what the library exports.
  void* symbol(const char* name) const;

 private:
  explicit oci_library_t(void* handle) : handle_(handle) {}
  bool bind_all(std::string& error);

  void* handle_;
  oci_api_t api_;
};

}  // namespace ocisim_test
