// A walk over an XML text that follows TinyXML's parser step by step without building
// anything, to find how deep its elements nest and how many attributes one element holds
// before TinyXML is let loose on the text: TinyXML recurses once per nesting level and checks
// each attribute against all earlier ones, so a hostile text could exhaust the stack or the
// clock. The walk is iterative and linear. Pure functions: safe from any thread.
#pragma once
#include <cstddef>
#include <string>

namespace xml::detail {

// Bytes after the text's terminator. TinyXML, in UTF-8 mode, steps over a whole multi-byte
// sequence when it sees a lead byte, even when the terminator stands inside it; with these
// zeros behind the text such a step still lands on a zero and parsing ends there.
constexpr size_t kPadding = 4;

// The text as TinyXML should see it: cut at its first NUL, with kPadding zeros behind it (the
// string's own terminator comes on top).
std::string padded_copy(const std::string& text);

struct probe_result_t {
  size_t depth = 0;             // deepest element nesting TinyXML reaches (the root is 1)
  size_t most_attributes = 0;   // most attributes one element receives
  bool stopped_at_limit = false;
};

// Walks a text from padded_copy() as TinyXML's TiXmlDocument::Parse would with encoding 0,
// following its choices of node kind, encoding (byte-order mark, declaration) and where it
// stops on an error. Stops early, with stopped_at_limit, as soon as the depth passes
// `max_depth` or an element passes `max_attributes`.
probe_result_t probe_structure(const char* text, size_t max_depth, size_t max_attributes);

}  // namespace xml::detail
