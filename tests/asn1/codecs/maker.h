// Values made at random from the descriptions of types.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>

#include "round_trip.h"

namespace codecs {
/// Fills homes with values that their types allow.
class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  int Below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }
  bool Often() { return Below(3) != 0; }

  void Fill(const asn_type* type, void* home, int depth) {
    if (++filled_ > kEnough) depth = std::max(depth, kDeepest);
    switch (type->form) {
      case ASN_REAL:
        *static_cast<REAL*>(home) = Real();
        return;
      case ASN_DYNS:
        return String(type, static_cast<DYNSTR*>(home), depth);
      case ASN_OBJI:
        return Identifier(static_cast<OBJID*>(home));
      case ASN_FRM:
        return Frame(static_cast<FRAME_PTR*>(home));
      case ASN_LIST:
        return List(type, home, depth);
      case ASN_STRU:
        return type->kind == ASN_CHOICE ? Choice(type, home, depth) : Structure(type, home, depth);
      case ASN_EXTERNAL:
        return External(static_cast<EXTERNAL*>(home));
      case ASN_NULL:
        return;
      default:
        asnSetInteger(type, home, type->kind == ASN_ENUMERATED ? Item(type) : Integer(type));
    }
  }

 private:
  static constexpr int kDeepest = 6, kEnough = 100;

  sint64 Item(const asn_type* type) { return type->items[Below(type->item_count + type->addition_items)]; }

  sint64 Integer(const asn_type* type) {
    sint64 low = type->has_low ? type->low : std::numeric_limits<sint64>::min();
    sint64 high = type->has_high ? type->high : std::numeric_limits<sint64>::max();
    if (type->form == ASN_I32)
      low = std::max<sint64>(low, INT32_MIN), high = std::min<sint64>(high, INT32_MAX);
    if (type->form == ASN_UI32) low = std::max<sint64>(low, 0), high = std::min<sint64>(high, UINT32_MAX);
    const auto span = static_cast<uint64_t>(high) - static_cast<uint64_t>(low);
    const uint64_t offset = (static_cast<uint64_t>(random_()) << 32 | random_()) >> Below(64);
    switch (Below(4)) {
      case 0:
        return low;
      case 1:
        return high;
      default:
        return static_cast<sint64>(static_cast<uint64_t>(low) +
                                   (span == UINT64_MAX ? offset : offset % (span + 1)));
    }
  }

  REAL Real() {
    static const REAL some[] = {0.0, -0.0, 1.0, -0.1, 1e300, 5e-324, HUGE_VAL, -HUGE_VAL, 3.0e-200};
    return Often() ? some[Below(static_cast<int>(std::size(some)))] : static_cast<REAL>(random_()) / 7;
  }

  uint32 Count(const asn_type* type, int depth) {
    const sint64 low = type->has_low ? type->low : 0;
    const sint64 high = type->has_high ? type->high : std::numeric_limits<sint64>::max();
    const sint64 wanted =
        low + (depth < 2 && Below(200) == 0 ? Below(70000) : Below(depth < kDeepest ? 5 : 1));
    return static_cast<uint32>(std::min(high, wanted));
  }

  BYTE_TYPE Character(const asn_type* type) {
    if (type->alphabet != nullptr) return static_cast<BYTE_TYPE>(type->alphabet[Below(type->alphabet_size)]);
    if (type->kind == ASN_NUMERIC_STRING) return static_cast<BYTE_TYPE>('0' + Below(10));
    if (type->kind == ASN_PRINTABLE_STRING) return static_cast<BYTE_TYPE>('A' + Below(26));
    return static_cast<BYTE_TYPE>(type->kind == ASN_OCTET_STRING ? Below(256) : ' ' + Below(95));
  }

  void String(const asn_type* type, DYNSTR* string, int depth) {
    string->n = Count(type, depth);
    string->s = static_cast<BYTE_TYPE*>(allocAsn(nullptr, MB_STG, string->n + 1));
    for (uint32 i = 0; i < string->n; ++i) {
      if (type->kind != ASN_BIT_STRING)
        string->s[i] = Character(type);
      else if (Below(2) != 0)
        string->s[i / 8] = static_cast<BYTE_TYPE>(string->s[i / 8] | 0x80 >> i % 8);
    }
  }

  void Identifier(OBJID* id) {
    id->n = static_cast<uint32>(2 + Below(5));
    id->arc = static_cast<sint64*>(allocAsn(nullptr, MB_STG, id->n * sizeof *id->arc));
    for (uint32 i = 0; i < id->n; ++i) id->arc[i] = static_cast<sint64>(random_() >> 1) << Below(32);
    id->arc[0] %= 3;
    if (id->arc[0] < 2) id->arc[1] %= 40;
  }

  void Frame(FRAME_PTR* home) {
    static const BYTE_TYPE some[][5] = {
        {0x05, 0x00}, {0x02, 0x01, 0x07}, {0x30, 0x03, 0x01, 0x01, 0xff}, {0x24, 0x80}};
    const int which = Below(4);
    *home = createFrame(DB_SIZE);
    insertMemBlock(nullptr, MB_FRM, reinterpret_cast<BYTE_TYPE*>(*home));
    appendToFrame(*home, some[which], which == 3 ? 4 : static_cast<size_t>(some[which][1]) + 2);
  }

  void External(EXTERNAL* external) {
    static const asn_type octets = [] {
      asn_type type{};
      type.kind = ASN_OCTET_STRING;
      type.form = ASN_DYNS;
      return type;
    }();
    if (Often()) {
      set_direct_EXTERNAL(*external);
      Identifier(&external->direct);
    }
    if (Often()) {
      set_indirect_EXTERNAL(*external);
      external->indirect = static_cast<sint32>(random_());
    }
    external->choice = 1;
    String(&octets, &external->data, kDeepest);
  }

  void List(const asn_type* type, void* home, int depth) {
    uint32 room = 0;
    const uint32 n = Count(type, depth);
    for (uint32 i = 0; i < n; ++i)
      Fill(type->comps[0].type, asnAddElement(type, home, &room), n > 100 ? kDeepest : depth + 1);
  }

  static bool IsSimple(const asn_type* type) { return type->form != ASN_STRU && type->form != ASN_LIST; }

  void Choice(const asn_type* type, void* home, int depth) {
    int alternative = Below(type->comp_count);
    for (int i = 0; depth >= kDeepest && i < type->comp_count && !IsSimple(type->comps[alternative].type);
         ++i)
      alternative = (alternative + 1) % type->comp_count;
    *static_cast<sint32*>(home) = alternative;
    const asn_comp* component = &type->comps[alternative];
    Fill(component->type, asnMakeComponent(component, home), depth + 1);
  }

  void Structure(const asn_type* type, void* home, int depth) {
    bool with_addition[256] = {true};
    for (int i = 1; i < 256; ++i) with_addition[i] = depth < kDeepest && Often();
    for (int i = 0; i < type->comp_count; ++i) {
      const asn_comp* component = &type->comps[i];
      if (!with_addition[component->addition]) continue;
      if (component->presence != ASN_MANDATORY && (depth >= kDeepest || !Often())) continue;
      asnSetPresent(type, home, i);
      Fill(component->type, asnMakeComponent(component, home), depth + 1);
    }
  }

  std::mt19937 random_;
  int filled_ = 0;
};
}  // namespace codecs
