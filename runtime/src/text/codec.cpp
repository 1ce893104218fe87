#include "text/codec.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "text/reader.h"
#include "value/operand.h"
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

void append_utf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
    return;
  }
  // Codes above 10FFFF take the longer forms that the first definition of UTF-8 had.
  int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : c < 0x200000 ? 3 : c < 0x4000000 ? 4 : 5;
  out += static_cast<char>((0xFF00u >> (more + 1) & 0xFF) | c >> 6 * more);
  while (more-- > 0) out += static_cast<char>(0x80 | (c >> 6 * more & 0x3F));
}

bool read_utf8(const std::string& octets, std::u32string& text) {
  for (size_t i = 0; i < octets.size();) {
    auto first = static_cast<unsigned char>(octets[i++]);
    int more = first < 0x80   ? 0
               : first < 0xC0 ? -1
               : first < 0xE0 ? 1
               : first < 0xF0 ? 2
               : first < 0xF8 ? 3
               : first < 0xFC ? 4
                              : 5;
    if (more < 0 || i + static_cast<size_t>(more) > octets.size()) return false;
    char32_t c = more ? first & (0x3F >> more) : first;
    for (; more > 0; --more) {
      auto next = static_cast<unsigned char>(octets[i++]);
      if ((next & 0xC0) != 0x80) return false;
      c = c << 6 | (next & 0x3F);
    }
    text += c;
  }
  return true;
}

bool encode_plainly(Value v, std::string& octets) {
  switch (v->kind) {
    case lumo_type_kind_charstring:
      octets.append(v->text.data, v->text.size);
      return true;
    case lumo_type_kind_universal_charstring:
      for (char32_t c : wide_text(v)) append_utf8(octets, c);
      return true;
    case lumo_type_kind_octetstring:
      for (size_t i = 0; i + 1 < v->text.size; i += 2)
        octets += static_cast<char>(digit_value(v->text.data[i]) << 4 | digit_value(v->text.data[i + 1]));
      return true;
    default:
      octets += render(v);
      return true;
  }
}

Value decode_plainly(lumo_type_t type, const std::string& octets, size_t& taken) {
  Value v = make_root(type, lumo_temp_alloc_c);
  taken = octets.size();
  switch (v->kind) {
    case lumo_type_kind_charstring:
      set_text(v, octets);
      break;
    case lumo_type_kind_universal_charstring: {
      std::u32string text;
      if (!read_utf8(octets, text)) return nullptr;
      set_wide(v, text.data(), text.size());
      break;
    }
    case lumo_type_kind_octetstring:
      reserve_text(v, 2 * octets.size());
      for (size_t i = 0; i < octets.size(); ++i) {
        v->text.data[2 * i] = "0123456789ABCDEF"[octets[i] >> 4 & 15];
        v->text.data[2 * i + 1] = "0123456789ABCDEF"[octets[i] & 15];
      }
      break;
    default: {
      std::string error;
      if (!read_value_prefix(v, octets, taken, error)) return nullptr;
      break;
    }
  }
  return v;
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

bool lacks_asn1_codec(Value v) {
  return !find_codec(v->type, lumo_type_get_encoder) && is_asn1_type(plain_type(v->type));
}

bool encode_value(Value v, std::string& octets) {
  lumo_encoder_t encoder = find_codec(v->type, lumo_type_get_encoder);
  if (!encoder) return encode_plainly(v, octets);
  lumo_binary_string_struct data;
  if (encoder(v, &data, current_task) != lumo_codecs_result_succeeded_c) return false;
  octets += data.octets;
  return true;
}

Value decode_value(lumo_type_t type, const std::string& octets, size_t* taken) {
  size_t used = 0;
  lumo_decoder_t decoder = find_codec(type, lumo_type_get_decoder);
  Value v = decoder ? decode_by(decoder, type, octets, used) : decode_plainly(type, octets, used);
  if (!v) return nullptr;
  if (taken) {
    *taken = used;
  } else if (used != octets.size()) {
    return nullptr;
  }
  return v;
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
  return inner && find_codec(inner->type, codec_of) ? inner : nullptr;
}
}  // namespace

lumo_boolean_t t3asn_lumo_decode_octets(lumo_value_t value, const unsigned char* octets, unsigned long count,
                                        lumo_context_t context) {
  const std::string text(reinterpret_cast<const char*>(octets), count);
  Value target = with_codec(value, lumo_type_get_decoder);
  Value decoded = target ? decode_value(target->type, text, nullptr) : nullptr;
  if (decoded) lumo_value_assign(target, decoded, context);
  return decoded != nullptr;
}

unsigned char* t3asn_lumo_encode_octets(lumo_value_t value, unsigned long* count, lumo_context_t) {
  std::string text;
  Value source = with_codec(value, lumo_type_get_encoder);
  if (!source || !encode_value(source, text)) return nullptr;
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
