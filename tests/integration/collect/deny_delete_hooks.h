// A file-layer policy for tests: this process may not delete the files of one folder, as when
// the folder's access list lets the server's account delete but not the agent's. Everything
// else is granted. The file layer asks check_access for the file and then the scope of its
// folder only when it deletes or renames, which is where the refusal is made.
#pragma once
#include <string>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "common/win/file_hooks.h"
#include "common/win/path.h"

namespace collect_test {

class deny_delete_hooks_t : public win::file_hooks_t {
 public:
  explicit deny_delete_hooks_t(std::u16string folder) : folder_(std::move(folder)) {}

  void check_access(const win::path_holder_t& path) override { last_ = path.wide(); }

  std::shared_ptr<void> scope_for_path(const win::path_holder_t& path) override {
    if (path.wide() != last_ && win::path_relation(path.wide(), folder_) == win::kPathEqual &&
        win::path_relation(last_, folder_) == win::kPathInside) {
      throw exc::win_sys_exc_t("Failed to delete file [%1].", util::to_utf8(last_), /*access denied*/ 5);
    }
    return nullptr;
  }

 private:
  std::u16string folder_;
  std::u16string last_;
};

}  // namespace collect_test
