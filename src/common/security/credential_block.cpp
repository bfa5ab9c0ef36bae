#include "common/security/credential_block.h"

#include "common/exc/exc_log.h"
#include "common/logging/log_channel.h"
#include "common/security/protection.h"
#include "common/text/base64.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"

namespace crypto {

namespace {

const char kRoot[] = "root";
const char kUser[] = "u";
const char kPassword[] = "p";

bytes_t bytes_of(const std::string& text) { return bytes_t(text.begin(), text.end()); }

std::string protected_text(const std::string& value) {
  return util::base64_encode(protect(bytes_of(value)));
}

std::string unprotected_value(const std::string& text) {
  bytes_t bytes;
  util::base64_decode(text, bytes);
  const bytes_t clear = unprotect(bytes);
  return std::string(clear.begin(), clear.end());
}

}  // namespace

bool serialize_protected(const std::string& user, const std::string& password,
                         std::string& block) {
  try {
    const std::string u = protected_text(user);
    const std::string p = protected_text(password);
    const xml::xml_doc_ptr_t doc = xml::new_doc();
    const xml::xml_node_ref_t root = xml::add_element(xml::root_ref(doc), kRoot);
    xml::set_attr(root, kUser, u);
    xml::set_attr(root, kPassword, p);
    block = util::base64_encode(xml::print(doc));
    return true;
  } catch (const std::exception& e) {
    exc::log_warn(logging::default_channel(), "Unable to serialize protected credentials", e);
  } catch (...) {
    logging::default_channel().warn("Unable to serialize protected credentials");
  }
  return false;
}

bool deserialize_protected(const std::string& block, std::string& user, std::string& password) {
  try {
    const xml::xml_doc_ptr_t doc = xml::parse(util::base64_decode(block));
    const xml::xml_node_ref_t root = xml::child(xml::root_ref(doc), kRoot);
    const std::string u = xml::attr(root, kUser);
    const std::string p = xml::attr(root, kPassword);
    std::string user_value = unprotected_value(u);
    std::string password_value = unprotected_value(p);
    user.swap(user_value);
    password.swap(password_value);
    return true;
  } catch (const std::exception& e) {
    exc::log_warn(logging::default_channel(), "Unable to deserialize protected credentials", e);
  } catch (...) {
    logging::default_channel().warn("Unable to deserialize protected credentials");
  }
  return false;
}

}  // namespace crypto
