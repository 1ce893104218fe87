#include "codec/plain.h"

#include "text/reader.h"
#include "value/operand.h"
#include "value/types.h"

namespace lumos {

namespace {

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

bool read_utf8(std::string_view octets, std::u32string& text) {
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

}  // namespace

std::string plain_octets(Value v) {
  std::string octets;
  switch (v->kind) {
    case lumo_type_kind_charstring:
      return {v->text.data, v->text.size};
    case lumo_type_kind_universal_charstring:
      for (char32_t c : wide_text(v)) append_utf8(octets, c);
      return octets;
    case lumo_type_kind_octetstring:
      for (size_t i = 0; i + 1 < v->text.size; i += 2)
        octets += static_cast<char>(digit_value(v->text.data[i]) << 4 | digit_value(v->text.data[i + 1]));
      return octets;
    default:
      return render(v);
  }
}

bool set_plain(Value v, std::string_view octets, size_t& taken) {
  taken = octets.size();
  std::u32string wide;
  std::string error;
  switch (v->kind) {
    case lumo_type_kind_charstring:
      set_text(v, octets);
      return true;
    case lumo_type_kind_universal_charstring:
      if (!read_utf8(octets, wide)) return false;
      set_wide(v, wide.data(), wide.size());
      return true;
    case lumo_type_kind_octetstring:
      reserve_text(v, 2 * octets.size());
      for (size_t i = 0; i < octets.size(); ++i) {
        v->text.data[2 * i] = "0123456789ABCDEF"[octets[i] >> 4 & 15];
        v->text.data[2 * i + 1] = "0123456789ABCDEF"[octets[i] & 15];
      }
      return true;
    default:
      return read_value_prefix(v, octets, taken, error);
  }
}

Value value_of_plain(lumo_type_t type, std::string_view octets, size_t& taken) {
  Value v = make_root(type, lumo_temp_alloc_c);
  return set_plain(v, octets, taken) ? v : nullptr;
}

}  // namespace lumos
