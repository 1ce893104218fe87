// The codecs on values made at random from the descriptions of types, on their encodings with random faults,
// and on encodings that were found to be dangerous.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "round_trip.h"

namespace codecs {
namespace {

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

const asn_type* TypeNamed(const std::string& name) {
  for (const asn_type* const* at = asn_all_types; *at != nullptr; ++at)
    if (name == (*at)->name) return *at;
  ADD_FAILURE() << "no type " << name;
  return nullptr;
}

bool HasExternal(const asn_type* type, int depth = 0) {
  if (type->form == ASN_EXTERNAL) return true;
  for (int i = 0; depth < 5 && i < type->comp_count; ++i)
    if (HasExternal(type->comps[i].type, depth + 1)) return true;
  return false;
}

// Values of such a type take long without taking many octets.
bool HasLarge(const asn_type* type, int depth = 0) {
  if (type->has_low && type->low > 1000 && type->form == ASN_LIST) return true;
  return type->form == ASN_LIST && depth < 5 && HasLarge(type->comps[0].type, depth + 1);
}

// A few faults: bits turned, octets exchanged, removed, doubled, the end cut off.
void Damage(Maker& chance, Octets& octets) {
  for (int faults = 1 + chance.Below(3); faults > 0 && !octets.empty(); --faults) {
    const int at = chance.Below(static_cast<int>(octets.size()));
    const auto place = octets.begin() + at;
    switch (chance.Below(6)) {
      case 0:
        *place = static_cast<unsigned char>(*place ^ 1 << chance.Below(8));
        break;
      case 1:
        *place = static_cast<unsigned char>(chance.Below(256));
        break;
      case 2:
        octets.erase(place);
        break;
      case 3:
        octets.insert(place, *place);
        break;
      case 4:
        octets.resize(static_cast<size_t>(at));
        break;
      default:
        *place = static_cast<unsigned char>(chance.Often() ? 0x80 : 0xff);
    }
  }
}

constexpr int kRounds = 8, kDamages = 12;

TEST(Codecs, RoundTripOfMadeValues) {
  unsigned seed = 0;
  for (const asn_type* const* type = asn_all_types; *type != nullptr; ++type) {
    SCOPED_TRACE((*type)->name);
    for (int round = 0; round < kRounds; ++round) {
      Maker maker(++seed);
      Home home(*type);
      maker.Fill(*type, home.get(), 0);
      for (int rule = 0; rule < kRules; ++rule) {
        if (rule >= kPerUnaligned && HasExternal(*type)) continue;
        Octets octets;
        const char* error = home.Encode(static_cast<Rule>(rule), octets);
        ASSERT_EQ(error, nullptr) << (*type)->name << ", rule " << rule << ", seed " << seed << ": " << error;
        const Trip trip = RoundTrip(*type, static_cast<Rule>(rule), octets);
        EXPECT_EQ(trip.fault, "") << "seed " << seed;
        EXPECT_TRUE(trip.accepted) << (*type)->name << ", rule " << rule << ", seed " << seed;
        const int damages = octets.size() > 2000 || HasLarge(*type) ? 1 : kDamages;
        for (int damage = 0; damage < damages; ++damage) {
          Octets damaged = octets;
          Damage(maker, damaged);
          EXPECT_EQ(RoundTrip(*type, static_cast<Rule>(rule), damaged).fault, "") << "seed " << seed;
        }
      }
    }
  }
}

TEST(Codecs, AnyOctets) {
  Maker maker(7);
  int accepted = 0;
  for (int round = 0; round < 40; ++round) {
    for (const asn_type* const* type = asn_all_types; *type != nullptr; ++type) {
      Octets octets(static_cast<size_t>(maker.Below(40)));
      for (unsigned char& octet : octets)
        octet = static_cast<unsigned char>(maker.Below(256) >> maker.Below(8));
      for (int rule = kPerUnaligned; rule < kRules; ++rule) {
        const Trip trip = RoundTrip(*type, static_cast<Rule>(rule), octets);
        EXPECT_EQ(trip.fault, "") << "round " << round;
        accepted += trip.accepted;
      }
    }
  }
  EXPECT_GT(accepted, 100);
}

// The error of decoding, or "" for an encoding.
std::string Refusal(const std::string& name, Rule rule, const Octets& octets) {
  Home home(TypeNamed(name));
  const char* error = home.Decode(rule, octets);
  return error == nullptr ? "" : error;
}

// The encoding, by another rule, of what the octets stand for.
Octets Recoded(const std::string& name, Rule from, const Octets& octets, Rule to) {
  Home home(TypeNamed(name));
  Octets result;
  EXPECT_EQ(home.Decode(from, octets), nullptr);
  EXPECT_EQ(home.Encode(to, result), nullptr);
  return result;
}

TEST(Codecs, AdditionsOfAStructureWithoutOptionalComponents) {
  // a 5, b TRUE, the other addition missing: the presence of b must not be noted in a.
  const Octets octets{0x30, 0x06, 0x02, 0x01, 0x05, 0x81, 0x01, 0xff};
  EXPECT_EQ(Recoded("Added", kBer, octets, kBer), octets);
}

TEST(Codecs, ElementsWithoutBitsAreBounded) {
  // Fragments of 64 K elements, one octet each, in lists of lists.
  const Octets fragments(3000, 0xc4);
  for (const char* name : {"Nothing", "Nothings", "Fixeds", "Empties", "Wide"})
    EXPECT_EQ(Refusal(name, kPerUnaligned, fragments), "a length is faulty") << name;
  EXPECT_NE(Refusal("OneLetter", kPerAligned, fragments), "");
  EXPECT_EQ(Refusal("Nothing", kPerUnaligned, {0xc4, 0x00}), "");
}

TEST(Codecs, ComponentsOfASetComeOnce) {
  EXPECT_EQ(Refusal("Tree", kBer, {0x31, 0x04, 0xa0, 0x00, 0xa1, 0x00}), "");
  EXPECT_EQ(Refusal("Tree", kBer, {0x31, 0x04, 0xa0, 0x00, 0xa0, 0x00}), "a component is there twice");
}

TEST(Codecs, EveryMandatoryComponentOfALargeSet) {
  Maker maker(3);
  const asn_type* type = TypeNamed("Set70");
  Home home(type);
  maker.Fill(type, home.get(), 5);
  Octets octets;
  ASSERT_EQ(home.Encode(kBer, octets), nullptr);
  // The components stand in their order; m67, the last mandatory one but one, is a BOOLEAN of 4 octets.
  const Octets wanted{0x9f, 0x43, 0x01};
  const auto place = std::search(octets.begin(), octets.end(), wanted.begin(), wanted.end());
  ASSERT_NE(place, octets.end());
  octets.erase(place, place + 4);
  // The length of the whole is in two octets.
  ASSERT_EQ(octets[1], 0x82);
  const int length = (octets[2] << 8 | octets[3]) - 4;
  octets[2] = static_cast<unsigned char>(length >> 8);
  octets[3] = static_cast<unsigned char>(length);
  EXPECT_EQ(Refusal("Set70", kBer, octets), "a component is missing");
}

TEST(Codecs, NumbersBeyondTheirBounds) {
  // Offsets that lead beyond the largest number, back to the smallest.
  EXPECT_EQ(Refusal("Big", kPerAligned, {0xe0, 0x80, 0, 0, 0, 0, 0, 0, 0}),
            "an integer is out of its bounds");
  EXPECT_EQ(Refusal("FromFive", kPerAligned, {0x08, 0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}),
            "an integer does not fit");
  EXPECT_EQ(Refusal("FromFive", kPerAligned, {0x08, 0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfa}), "");
  EXPECT_EQ(Refusal("UpToFive", kPerAligned, {0x01, 0x06}), "an integer is out of its bounds");
  EXPECT_EQ(Refusal("UpToFive", kPerAligned, {0x01, 0x05}), "");
}

TEST(Codecs, RealNumbersInWords) {
  const auto decimal = [](const std::string& text) {
    Octets octets{0x09, static_cast<unsigned char>(text.size() + 1), 0x03};
    octets.insert(octets.end(), text.begin(), text.end());
    return octets;
  };
  EXPECT_EQ(Refusal("Real", kBer, decimal("15,E-1")), "");
  for (const char* text : {"nan", "inf", "-infinity", "0x1p3", "1.5x", "", "1\n"})
    EXPECT_EQ(Refusal("Real", kBer, decimal(text)), "a real number is faulty") << text;
}

TEST(Codecs, EndsAndTagsThatAreNone) {
  EXPECT_EQ(Refusal("Frames", kBer, {0x30, 0x08, 0xa0, 0x02, 0x05, 0x00, 0xa1, 0x02, 0x00, 0x00}),
            "an end stands where nothing began");
  // A number that is [1] once its highest bits are lost.
  EXPECT_EQ(Refusal("Inner", kBer, {0xbf, 0x90, 0x80, 0x80, 0x80, 0x01, 0x00}),
            "an encoding ends within a tag");
}

TEST(Codecs, UnusedBitsAreNoPartOfTheValue) {
  const std::string name = "Strings";
  Octets octets{0x30, 0x00, 0x80, 0x02, 0x04, 0xaf};  // four bits, and ones behind them
  const Octets rest{0x81, 0x01, 0x00, 0x82, 0x02, 1,   2,   0x83, 0x00, 0x84, 0x01, 'A',
                    0x85, 0x00, 0x86, 0x03, 'a',  'b', 'c', 0x87, 0x00, 0x88, 0x00};
  octets.insert(octets.end(), rest.begin(), rest.end());
  octets[1] = static_cast<unsigned char>(octets.size() - 2);
  Octets expected = octets;
  expected[5] = 0xa0;
  EXPECT_EQ(Recoded(name, kBer, octets, kBer), expected);
}

TEST(Codecs, ExternalWithoutData) {
  EXPECT_EQ(Refusal("Out", kBer, {0x28, 0x00}), "an EXTERNAL is faulty");
  EXPECT_EQ(Refusal("Out", kBer, {0x28, 0x03, 0x81, 0x01, 0x07}), "");
}

// Memory goes to the home that was pushed last, on whichever stack, however many there are.
TEST(Homes, StacksWithinStacks) {
  constexpr int kMany = 40;
  ASNUTIG outer, inner;
  ASNHOME* homes[kMany];
  ASNHOME* last = nullptr;
  initStack(&outer);
  initStack(&inner);
  for (ASNHOME*& home : homes) {
    createHandle(nullptr, &home, 8);
    pushHome(&outer, home);
  }
  createHandle(nullptr, &last, 8);
  pushHome(&inner, last);
  EXPECT_EQ(getHomeG(&inner), last);
  popHome(&inner);
  freeAsn(&last, FREE_STG);
  for (int i = kMany - 1; i >= 0; --i) {
    EXPECT_EQ(getHomeG(&outer), homes[i]);
    allocAsn(nullptr, MB_STG, 100);
    popHome(&outer);
    freeAsn(&homes[i], FREE_STG);
    EXPECT_EQ(homes[i], nullptr);
  }
  EXPECT_EQ(getHomeG(&outer), nullptr);
  popHome(&outer);
}
}  // namespace
}  // namespace codecs
