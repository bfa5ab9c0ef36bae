#include "common/xml/xml_doc.h"

#include <tinyxml.h>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "common/text/fmt.h"
#include "common/text/numbers.h"
#include "common/xml/xml_probe.h"

namespace xml {

namespace {

constexpr size_t kExcerptLength = 128;

}  // namespace

xml_doc_ptr_t new_doc() { return std::make_shared<TiXmlDocument>(); }

void throw_parse_error(const char* description, int id) {
  const std::string code = util::to_str(static_cast<int32_t>(id));
  if (description) {
    throw exc::runtime_exc_t(util::fmt_t::format("XML error: [%1]. Error code: [%2].",
                                                 description, code));
  }
  throw exc::runtime_exc_t("XML error: [%1].", code);
}

std::string source_excerpt(const std::string& text) {
  if (text.size() <= kExcerptLength) return text;
  return text.substr(0, kExcerptLength) + "..., length: " +
         util::to_str(static_cast<uint64_t>(text.size()));
}

xml_doc_ptr_t parse(const std::string& text) {
  try {
    const std::string padded = detail::padded_copy(text);
    const detail::probe_result_t shape =
        detail::probe_structure(padded.c_str(), kMaxDepth, kMaxAttributes);
    if (shape.stopped_at_limit) {
      const std::string description =
          shape.depth > kMaxDepth
              ? "Element nesting is deeper than " + util::to_str(static_cast<uint64_t>(kMaxDepth)) +
                    " levels."
              : "Element has more than " + util::to_str(static_cast<uint64_t>(kMaxAttributes)) +
                    " attributes.";
      throw_parse_error(description.c_str(), TiXmlBase::TIXML_ERROR_PARSING_ELEMENT);
    }
    auto doc = std::make_shared<TiXmlDocument>();
    doc->Parse(padded.c_str(), /*prevData=*/nullptr, TIXML_ENCODING_UNKNOWN);
    if (doc->Error()) throw_parse_error(doc->ErrorDesc(), doc->ErrorId());
    return doc;
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to parse XML content. Source content: [%1].",
                            source_excerpt(text), e);
  }
}

std::string print(const xml_doc_ptr_t& doc) {
  try {
    if (!doc) throw exc::runtime_exc_t("XML document is not specified.");
    // The printer starts with four blanks of indent and a line feed; both are cleared so
    // that every document of the system prints as one compact line.
    TiXmlPrinter printer;
    printer.SetIndent("");
    printer.SetLineBreak("");
    doc->Accept(&printer);
    return printer.Str();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to serialize XML document.", e);
  }
}

xml_node_ref_t root_ref(const xml_doc_ptr_t& doc) { return {doc, doc.get()}; }

}  // namespace xml
