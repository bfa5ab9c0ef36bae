// Case-insensitive comparisons and searches on whole strings. Case is folded for ASCII and
// Latin-1 letters, which covers the catalog words, SIDs and paths these compare.
#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace util {

char16_t fold_case(char16_t c);

bool equals_nocase(const std::u16string& a, const std::u16string& b);
bool equals_nocase_prefix(const std::u16string& text, const std::u16string& prefix);
bool ends_with_nocase(const std::string& text, const std::string& suffix);

// The first index of `part` in `text` without regard to case. The positions tried run from 0
// up to, but not including, text.size() - part.size(): a part that stands only at the very end
// is not found, and a text as long as the part gives none. Callers rely on this bound.
std::optional<size_t> find_nocase(const std::u16string& text, const std::u16string& part);

// Splits `text` around the first `part` that find_nocase finds; false when there is none.
bool split_at(const std::u16string& text, const std::u16string& part, std::u16string& left,
              std::u16string& right);

std::optional<size_t> find_arg(const std::vector<std::u16string>& list,
                               const std::u16string& name);

}  // namespace util
