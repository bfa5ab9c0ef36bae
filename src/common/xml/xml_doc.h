// Documents of the XML layer: every XML text of the library is parsed and printed here, over
// TinyXML. A document is shared by the references that walk it (xml_node.h) and belongs to one
// thread at a time; the shared pointer only manages its life. Documents are UTF-8 text.
// All failures are exceptions of the library's family; nothing here writes to the log.
#pragma once
#include <memory>
#include <string>

class TiXmlDocument;
class TiXmlNode;

namespace xml {

using xml_doc_ptr_t = std::shared_ptr<TiXmlDocument>;

// A place in a document: the document, kept alive by the reference, and a node of it, null
// when the reference points to nothing. Copying a reference shares the document. A reference
// taken on the document itself has `node` pointing to the document.
struct xml_node_ref_t {
  xml_doc_ptr_t doc;
  TiXmlNode* node = nullptr;

  bool is_null() const { return node == nullptr; }
  explicit operator bool() const { return node != nullptr; }
};

// A new empty document.
xml_doc_ptr_t new_doc();

// Parses a narrow text. On failure throws runtime_exc_t "XML error: [<description>]. Error
// code: [<id>]." with TinyXML's description and id, and the trace line "Failed to parse XML
// content. Source content: [...]." whose content is cut to 128 bytes, "..., length: " and the
// whole length when the text is longer. A document that failed is never returned.
// The text ends at its first NUL, as it does for TinyXML. Two limits protect the process from
// texts that TinyXML would take down with it, and fail in the same "XML error" form, with
// TinyXML's id for an element error (3), before TinyXML sees the text:
//   "Element nesting is deeper than 256 levels." TinyXML's parser recurses once per level and
//   would run any stack out; at the limit a parse needs about 100 KiB of stack.
//   "Element has more than 1024 attributes." TinyXML checks each attribute against all the
//   earlier ones: one element of 1 MiB of attributes holds it over a minute, of 10 MiB hours.
// The documents of this library nest a few levels and carry a few dozen attributes.
xml_doc_ptr_t parse(const std::string& text);

constexpr size_t kMaxDepth = 256;
constexpr size_t kMaxAttributes = 1024;

// The document as one line: no indentation, no line breaks, no declaration unless the
// document holds one. A failure gets the trace line "Failed to serialize XML document.".
std::string print(const xml_doc_ptr_t& doc);

// A reference to the document itself.
xml_node_ref_t root_ref(const xml_doc_ptr_t& doc);

// The content shown in the parse trace line: the text itself up to 128 bytes; otherwise its
// first 128 bytes, "..., length: " and the whole length in decimal.
std::string source_excerpt(const std::string& text);

// The failure of a TinyXML parse: "XML error: [%1]. Error code: [%2]." when TinyXML gives a
// description, "XML error: [%1]." with the id when it gives none.
[[noreturn]] void throw_parse_error(const char* description, int id);

}  // namespace xml
