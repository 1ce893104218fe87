#include "text/codec.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "codec/families.h"
#include "codec/plain.h"
#include "value/error.h"
#include "value/task.h"
#include "value/symbols.h"
#include "value/types.h"

struct lumo_binary_string_struct {
  std::string octets;
};

struct lumo_binary_string_iter_struct {
  const std::string* octets;
  size_t place;
};

namespace lumos {

namespace {

// Codecs stand at a type or at one that it is a subtype of.
template <class Codec>
Codec find_codec(lumo_type_t type, Codec (*codec_of)(lumo_type_t, lumo_context_t)) {
  for (int i = 0; i < 1000 && type; ++i) {
    if (Codec codec = codec_of(type, current_task)) return codec;
    type = type->type_info ? type->type_info->parent_type : nullptr;
  }
  return nullptr;
}

Value decode_by(lumo_decoder_t decoder, lumo_type_t type, const std::string& octets, size_t& taken) {
  lumo_binary_string_iter_t iter{&octets, 0};
  Value v = nullptr;
  const bool refused_before = std::exchange(current_task->refused, false);
  ++current_task->decoding;
  const auto result = decoder(&iter, type, lumo_temp_alloc_c, &v, current_task);
  --current_task->decoding;
  if (std::exchange(current_task->refused, refused_before) || result != lumo_codecs_result_succeeded_c)
    return nullptr;
  taken = iter.place;
  return v == lumo_illegal_value_c ? nullptr : v;
}

}  // namespace

bool has_own_codec(lumo_type_t type) {
  return find_codec(type, lumo_type_get_encoder) && find_codec(type, lumo_type_get_decoder);
}

bool has_codec(lumo_type_t type) {
  return find_codec(type, lumo_type_get_decoder) || encoding_of(type);
}

namespace {

constexpr const char* kNoRules =
    "an import of its ASN.1 module needs an encode attribute, or ORVANE_ASN1_CODEC an encoding";

// Whether the type, or one that it is a subtype of, is of ASN.1, which has no plain form.
bool comes_from_asn1(lumo_type_t type) {
  type = plain_type(type);
  for (int i = 0; i < 1000 && type && type->type_info; ++i) {
    if (is_asn1_type(type)) return true;
    type = plain_type(type->type_info->parent_type);
  }
  return false;
}

std::string no_codec(lumo_type_t type) {
  return std::string("there is no codec for encode \"") + encoding_of(type) + "\"";
}

// The value, or null where it does not take all octets.
Value whole(Value v, size_t used, size_t* taken, const std::string& octets, std::string& fault) {
  if (!v) return nullptr;
  if (taken) {
    *taken = used;
  } else if (used != octets.size()) {
    const std::string left = std::to_string(octets.size() - used) + " octets are left";
    fault = fault.empty() ? "octet " + std::to_string(used + 1) + ": " + left : fault + "; " + left;
    return nullptr;
  }
  return v;
}

}  // namespace

bool encode_value(Value v, std::string& octets, std::string& fault) {
  lumo_encoder_t encoder = find_codec(v->type, lumo_type_get_encoder);
  if (!encoder) {
    if (const CodecFamily* family = codec_family_of(v->type)) return family->encode(v, octets, fault);
    if (encoding_of(v->type)) return fault = no_codec(v->type), false;
    if (comes_from_asn1(v->type)) return fault = kNoRules, false;
    octets += plain_octets(v);
    return true;
  }
  lumo_binary_string_struct data;
  if (encoder(v, &data, current_task) != lumo_codecs_result_succeeded_c)
    return fault = "its encoder refuses it", false;
  octets += data.octets;
  return true;
}

std::string undecodable(const std::string& port, lumo_type_t type, const std::string& octets,
                        const std::string& fault) {
  constexpr size_t most = 256;
  std::string line = port.empty() ? "" : "port " + port + ": ";
  line += std::string("what arrived is no value of type '") + type_name(type) + "': " + fault + ": '";
  for (const char c : octets.substr(0, most)) {
    line += "0123456789ABCDEF"[c >> 4 & 15];
    line += "0123456789ABCDEF"[c & 15];
  }
  line += "'O";
  if (octets.size() > most) line += " and " + std::to_string(octets.size() - most) + " octets more";
  return line;
}

Value decode_value(lumo_type_t type, const std::string& octets, size_t* taken, std::string& fault) {
  size_t used = 0;
  Value v = nullptr;
  if (lumo_decoder_t decoder = find_codec(type, lumo_type_get_decoder)) {
    v = decode_by(decoder, type, octets, used);
    if (!v) fault = "its decoder refuses the octets";
  } else if (const CodecFamily* family = codec_family_of(type)) {
    v = family->decode(type, octets, used, fault);
  } else if (encoding_of(type)) {
    fault = no_codec(type);
  } else if (comes_from_asn1(type)) {
    fault = kNoRules;
  } else {
    v = value_of_plain(type, octets, used);
    if (!v) fault = "the octets are no value";
  }
  return whole(v, used, taken, octets, fault);
}

}  // namespace lumos

using namespace lumos;

namespace {
// What a codec is found for: the value of the open type where its type has one, else the chosen alternative;
// null where that has none either.
template <class Codec>
Value with_codec(Value v, Codec (*codec_of)(lumo_type_t, lumo_context_t)) {
  if (find_codec(v->type, codec_of)) return v;
  const bool has_alternative = v->kind == lumo_type_kind_union && v->index >= 0;
  Value inner = has_alternative ? lumo_value_union_value(v, current_task) : nullptr;
  if (inner && find_codec(inner->type, codec_of)) return inner;
  const std::string what = inner ? std::string("type '") + type_name(inner->type) + "' in an open type has no codec"
                                 : "an open type has no alternative, and no codec of its own";
  lumo_log_string_to_all(lumo_log_msg_error_c, what.c_str(), current_task);
  return nullptr;
}
}  // namespace

lumo_boolean_t t3asn_lumo_decode_octets(lumo_value_t value, const unsigned char* octets, unsigned long count,
                                        lumo_context_t context) {
  const std::string text(reinterpret_cast<const char*>(octets), count);
  Value target = with_codec(value, lumo_type_get_decoder);
  std::string fault;
  Value decoded = target ? decode_value(target->type, text, nullptr, fault) : nullptr;
  if (decoded) lumo_value_assign(target, decoded, context);
  return decoded != nullptr;
}

unsigned char* t3asn_lumo_encode_octets(lumo_value_t value, unsigned long* count, lumo_context_t) {
  std::string text, fault;
  Value source = with_codec(value, lumo_type_get_encoder);
  if (!source || !encode_value(source, text, fault)) return nullptr;
  auto* octets = static_cast<unsigned char*>(std::malloc(text.size() + 1));
  if (octets) std::memcpy(octets, text.data(), text.size());
  *count = text.size();
  return octets;
}

void lumo_binary_string_append(lumo_binary_string_t data, const unsigned char* octets, unsigned long count,
                               lumo_context_t) {
  data->octets.append(reinterpret_cast<const char*>(octets), count);
}

unsigned long lumo_binary_string_length(lumo_binary_string_t data, lumo_context_t) {
  return data->octets.size();
}

const unsigned char* lumo_binary_string_octets(lumo_binary_string_t data, lumo_context_t) {
  return reinterpret_cast<const unsigned char*>(data->octets.data());
}

void lumo_codec_for(const char* module, const char* type, lumo_encoder_t encoder, lumo_decoder_t decoder) {
  const lumo_type_t descriptor = checked_row(module, type)->type_descriptor;
  if (!descriptor) fault("lumo_codec_for: '%s' of module '%s' is no type", type, module);
  if (encoder) lumo_type_set_encoder(descriptor, encoder, current_task);
  if (decoder) lumo_type_set_decoder(descriptor, decoder, current_task);
}

unsigned long lumo_binary_string_iter_remaining(const lumo_binary_string_iter_t* iter) {
  return iter->octets->size() - iter->place;
}

const unsigned char* lumo_binary_string_iter_octets(const lumo_binary_string_iter_t* iter) {
  return reinterpret_cast<const unsigned char*>(iter->octets->data()) + iter->place;
}

void lumo_binary_string_iter_advance(lumo_binary_string_iter_t* iter, unsigned long count) {
  unsigned long left = lumo_binary_string_iter_remaining(iter);
  iter->place += count < left ? count : left;
}
