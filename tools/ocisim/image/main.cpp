// ocisim-image: copies a simulated machine as a volume snapshot would catch it and boots the
// copy as a restored server boots. See docs/ocisim.md, "A machine restored from an image".
//
//   ocisim-image SCENARIO TARGET [--state FILE] [--copy FROM TO]... [--polls N]
//
// SCENARIO is the live machine's scenario; its state comes from --state, else OCISIM_STATE,
// else SCENARIO.state (as the client reads it). TARGET is written as the copy's scenario, and
// a state file beside it (TARGET.state) is removed, so the copy starts from what was caught.
// Each --copy copies the folder FROM (native path) to TO, with everything in it, while the
// machine's lock is held: the files and the machine are caught at one moment.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "errors.h"
#include "image_boot.h"
#include "image_env.h"
#include "machine.h"
#include "platform.h"

namespace {

// Copies the folder `from` into `to` with everything below it, file by file (the recursive
// copy of some standard libraries refuses a target folder that exists).
bool copy_folder(const std::filesystem::path& from, const std::filesystem::path& to,
                 std::error_code& error) {
  namespace fs = std::filesystem;
  fs::create_directories(to, error);
  if (error) return false;
  for (fs::recursive_directory_iterator it(from, error), end; !error && it != end; it.increment(error)) {
    const fs::path target = to / fs::relative(it->path(), from, error);
    if (error) return false;
    if (it->is_directory(error)) {
      fs::create_directories(target, error);
    } else {
      // Removed first: not every standard library overwrites when told to.
      fs::remove(target, error);
      if (!error) fs::copy_file(it->path(), target, error);
    }
    if (error) return false;
  }
  return !error;
}

int usage() {
  std::fprintf(stderr,
               "usage: ocisim-image SCENARIO TARGET [--state FILE] [--copy FROM TO]... [--polls N]\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return usage();
  const std::string scenario = argv[1];
  const std::string target = argv[2];
  std::string state;
  std::vector<std::pair<std::string, std::string>> copies;
  ocisim::image::boot_options_t options;
  for (int i = 3; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--state" && i + 1 < argc) {
      state = argv[++i];
    } else if (a == "--copy" && i + 2 < argc) {
      copies.emplace_back(argv[i + 1], argv[i + 2]);
      i += 2;
    } else if (a == "--polls" && i + 1 < argc) {
      options.polls = std::strtoll(argv[++i], nullptr, 10);
    } else {
      return usage();
    }
  }
  ocisim::image::set_variable("OCISIM_SCENARIO", scenario);
  if (!state.empty()) ocisim::image::set_variable("OCISIM_STATE", state);
  try {
    ocisim::node_t copy;
    {
      // The snapshot instant: the machine under its lock, and the folders with it.
      ocisim::machine_t machine;
      copy = machine.root();
      for (const auto& c : copies) {
        std::error_code error;
        if (!copy_folder(c.first, c.second, error)) {
          std::fprintf(stderr, "ocisim-image: cannot copy %s to %s: %s\n", c.first.c_str(),
                       c.second.c_str(), error.message().c_str());
          return 1;
        }
      }
    }
    ocisim::image::boot(copy, options);
    if (!ocisim::write_file(target, ocisim::to_xml(copy))) {
      std::fprintf(stderr, "ocisim-image: cannot write %s\n", target.c_str());
      return 1;
    }
    std::error_code ignored;
    std::filesystem::remove(target + ".state", ignored);
  } catch (const ocisim::ora_error_t& e) {
    std::fprintf(stderr, "ocisim-image: %s", e.message().c_str());
    return 1;
  }
  return 0;
}
