// The frame of the ocisim tests: each test gets a private folder with its scenario and
// journal, the environment pointing at them, and the built client loaded once per process.
// `client_t` drives one connection the way an OCI program does and keeps the last error.
#pragma once
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "oci_library.h"

namespace ocisim_test {

// One fetched cell: its text and the indicator Oracle gave it.
struct cell_t {
  std::string text;
  sb2 indicator = 0;
};
using row_t = std::vector<cell_t>;

class client_t {
 public:
  explicit client_t(const oci_api_t& api);
  ~client_t();
  client_t(const client_t&) = delete;
  client_t& operator=(const client_t&) = delete;

  // Sets ORACLE_SID and ORACLE_HOME, then OCIServerAttach and the server attribute.
  sword attach(const std::string& sid, const std::string& home);
  // OCISessionBegin with the user and password set when `user` is not empty (RDBMS
  // credentials), operating-system credentials otherwise; sets the session attribute on
  // success, also on a success with information (whose warning the error handle keeps).
  sword logon(ub4 mode, const std::string& user = "", const std::string& password = "");
  sword logoff();
  sword detach();

  // Prepares, defines `columns` SQLT_STR columns of `width` bytes, executes with 0
  // iterations (or 1 when there are no columns) and fetches every row. Returns the first
  // return code that was no success (or the last one).
  sword query(const std::string& sql, int columns, std::vector<row_t>& rows, int width = 1024);
  // Prepares and executes a statement with one iteration, and fetches nothing.
  sword run(const std::string& sql);

  // The text and code OCIErrorGet gives for the last error.
  std::string error_text() const;
  int error_code() const;

  const oci_api_t& api() const { return api_; }
  OCIEnv* env() const { return env_; }
  OCIError* err() const { return err_; }
  OCISvcCtx* svc() const { return svc_; }
  OCIServer* srv() const { return srv_; }
  OCISession* ses() const { return ses_; }

 private:
  const oci_api_t& api_;
  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
  OCIServer* srv_ = nullptr;
  OCISession* ses_ = nullptr;
};

class OcisimTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  static const oci_api_t& api();
  // Writes the scenario (a whole <machine> document) to the test's scenario file.
  void write_scenario(const std::string& xml);
  // The journal's lines, and those of one kind ("CALL", "SQL", "HANG") with the pid and tid cut.
  std::vector<std::string> journal_lines() const;
  std::vector<std::string> journal(const std::string& kind) const;
  // The state file's text, empty when there is none.
  std::string state_text() const;

  std::string folder_;
  std::string scenario_;
  std::string journal_path_;
};

// The demo home and the scenario snippets most tests use.
extern const char kHome[];
extern const char kGridHome[];
// A machine with one open database ORCL in kHome, with archived logs and files; `extra` goes
// inside its <instance>, `attributes` onto it.
std::string single_instance(const std::string& extra = "", const std::string& attributes = "");

bool contains(const std::vector<std::string>& lines, const std::string& part);

}  // namespace ocisim_test
