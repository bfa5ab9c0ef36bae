// The host build's case-insensitive name lookup inside one folder, for resolve_case. Windows
// finds "X.LOG" when "x.log" is asked for; the host file system does not, so the names of a
// folder are listed once, kept folded in a process-wide cache, and kept current from the
// kernel's change notifications. Safe to call from any thread.
#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace win::host {

// The name of the entry of host folder `dir` that equals `name` without regard to case (ASCII
// and Latin-1 letters, as util::fold_case), or nothing when there is none or the folder cannot
// be listed. When several entries differ only in case, one of them, the same one each time
// until the folder changes. A relative `dir` is looked at afresh at each call.
std::optional<std::string> find_entry_nocase(const std::string& dir, const std::string& name);

// The key under which a name is kept: the name with its letters folded, byte by byte for an
// ASCII name, else through its UTF-16 form (so names compare as util::equals_nocase compares
// them). A name that cannot be converted has none. Exposed for the tests.
std::optional<std::string> case_fold_key(const std::string& name);

// How many times a folder has been listed in full by this process; for the tests, which check
// that a listing is reused or redone.
uint64_t case_cache_listings();

}  // namespace win::host
