#include "codec/families.h"

#include <cstring>
#include <set>

#include "codec/raw.h"
#include "codec/text.h"
#include "text/codec.h"
#include "text/log.h"
#include "value/symbols.h"
#include "value/types.h"

// A suite that wants this encoding links its library.
#pragma weak lumo_json_codec
extern "C" const lumos::CodecFamily* lumo_json_codec();

namespace lumos {

namespace {

// An encoding that goes by a plan for each type. Its errors were told when the suite started.
template <auto kPlan, auto kEncode, auto kDecode>
constexpr CodecFamily planned(const char* name) {
  return {name, [](lumo_type_t type, std::vector<std::string>& errors) { kPlan(type, errors); },
          [](Value v, std::string& octets, std::string& fault) {
            std::vector<std::string> told;
            return kEncode(kPlan(v->type, told), v, octets, fault);
          },
          [](lumo_type_t type, std::string_view octets, size_t& taken, std::string& fault) {
            std::vector<std::string> told;
            return kDecode(kPlan(type, told), octets, taken, fault);
          }};
}

constexpr CodecFamily raw = planned<raw_plan, raw_encode, raw_decode>("RAW");
constexpr CodecFamily text = planned<text_plan, text_encode, text_decode>("TEXT");

std::vector<const CodecFamily*>& families() {
  static auto* all = new std::vector<const CodecFamily*>{&raw, &text};
  static const bool has_json = lumo_json_codec && (all->push_back(lumo_json_codec()), true);
  (void)has_json;
  return *all;
}

const CodecFamily* family_named(const char* name) {
  for (const CodecFamily* family : families())
    if (!std::strcmp(family->name, name)) return family;
  return nullptr;
}

// --- the start of the suite

const char* own_encoding(lumo_type_t type) {
  for (const lumo_encoding_attr_struct_t& row : attributes(type->encode_attributes))
    if (!row.field_name) return row.text;
  return nullptr;
}

template <class Do>
void each_type(Do act) {
  for (const Module& m : registered_modules())
    for (unsigned long i = 0; i < m.row_count; ++i) {
      const lumo_symbol_entry_struct_t& row = m.rows[i];
      if (row.kind == lumo_symbol_entry_kind_userdefined_type && row.type_descriptor)
        act(row.type_descriptor);
    }
}

// What the message ports of the suite carry.
std::set<const void*> carried_types() {
  std::set<const void*> carried;
  each_type([&](lumo_type_t type) {
    const lumo_type_t port = record_type(type);
    if (base_kind(type) != lumo_type_kind_port_ref) return;
    for (size_t i = 0; i < field_count(port); ++i)
      if (lumo_type_t message = field_info(port)[i].type) carried.insert(root_of(message));
  });
  return carried;
}

void check_type(lumo_type_t type, bool messages_leave, const std::set<const void*>& carried,
                std::vector<std::string>& errors) {
  const char* encoding = own_encoding(type);
  if (!encoding || type->module || is_asn1_type(type) || has_own_codec(type)) return;
  if (const CodecFamily* family = family_named(encoding)) return family->prepare(type, errors);
  // Nothing is encoded where no message leaves the suite: its words may be names of its own.
  if (!messages_leave) return;
  const bool is_optional_library = !std::strcmp(encoding, "JSON");
  // Only parts of other messages: an encoding of their own is not asked for.
  if (is_optional_library && !carried.contains(root_of(type))) return;
  const char* module = lumo_type_definition_module(type, nullptr);
  errors.push_back(std::string("type ") + (module ? module : "") + "." + type_name(type) +
                   ": there is no codec for encode \"" + encoding + "\"" +
                   (is_optional_library ? ", which is in the library lumos_json" : ""));
}

}  // namespace

const char* encoding_of(lumo_type_t type) {
  type = plain_type(type);
  for (int i = 0; i < 1000 && type && type->type_info; ++i) {
    if (const char* encoding = own_encoding(type)) return encoding;
    type = plain_type(type->type_info->parent_type);
  }
  return nullptr;
}

const CodecFamily* codec_family_of(lumo_type_t type) {
  const char* encoding = encoding_of(type);
  return encoding ? family_named(encoding) : nullptr;
}

bool check_codecs(bool messages_leave) {
  std::vector<std::string> errors;
  const std::set<const void*> carried = carried_types();
  each_type([&](lumo_type_t type) { check_type(type, messages_leave, carried, errors); });
  for (const std::string& error : errors) log_line(lumo_log_msg_error_c, error);
  return errors.empty();
}

}  // namespace lumos
