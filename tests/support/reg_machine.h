// Test helpers that put a machine described by a .reg fixture in place for the span of a test,
// so that the same test reads the same keys on both targets.
// Host build: DBSHADOWLINK_REGISTRY names the file and the store is reloaded; afterwards the
// variable gets its former value back. Windows: the keys and values of the file, as the file
// leaves them after its own deletions, are written into the real registry with their exact
// bytes (RegSetValueEx would add a missing terminator), and removed afterwards. Fixtures keep
// their keys below kTestArea; what a broken earlier run left there is cleared first.
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace dsl_test {

// HKLM\<kTestArea>\...: where the fixtures of these tests keep their keys.
constexpr char16_t kTestArea[] = u"SOFTWARE\\DbShadowLink Tests";

// A file of tests/fixtures (DSL_SOURCE_DIR names the source tree), as this platform's file
// functions take it.
std::string fixture_path(const std::string& name);

// A fresh folder for files a test writes; removed by the test that asked for it.
std::string scratch_folder(const std::string& name);
void remove_folder(const std::string& path);
void write_file(const std::string& path, const std::string& bytes);

class reg_machine_t {
 public:
  explicit reg_machine_t(const std::string& reg_file_path);
  ~reg_machine_t();
  reg_machine_t(const reg_machine_t&) = delete;
  reg_machine_t& operator=(const reg_machine_t&) = delete;

  // Lets everyone read the key HKLM\`path` and nobody write it. On the host build the store is
  // read-only as a whole, so this does nothing there.
  void make_read_only(const std::u16string& path);
  // Lets nobody read the key HKLM\`path` (Windows only; the host store has no access rights).
  void make_unreadable(const std::u16string& path);

 private:
  struct state_t;
  state_t* state_;
};

}  // namespace dsl_test
