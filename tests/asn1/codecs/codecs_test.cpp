// The codecs on values made at random from the descriptions of types, on their encodings with random faults,
// and on encodings that were found to be dangerous.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "maker.h"

namespace codecs {
namespace {

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

TEST(Codecs, AdditionsBeyondTheSmallNumbers) {
  EXPECT_EQ(Recoded("Many", kBer, {0x0a, 0x01, 0x40}, kPerAligned), (Octets{0xbf}));
  EXPECT_EQ(Recoded("Many", kBer, {0x0a, 0x01, 0x41}, kPerAligned), (Octets{0xc0, 0x01, 0x40}));
  EXPECT_EQ(Recoded("Many", kPerUnaligned, {0xc0, 0x50, 0x00}, kBer), (Octets{0x0a, 0x01, 0x41}));
}

TEST(Codecs, ElementsWithoutBitsAreBounded) {
  // Fragments of 64 K elements, one octet each, in lists of lists.
  const Octets fragments(3000, 0xc4);
  for (const char* name : {"Nothing", "Nothings", "Fixeds", "Empties", "Wide"})
    EXPECT_EQ(Refusal(name, kPerUnaligned, fragments), "a length is faulty") << name;
  EXPECT_NE(Refusal("OneLetter", kPerAligned, fragments), "");
  EXPECT_EQ(Refusal("Nothing", kPerUnaligned, {0xc4, 0x00}), "");
  // Octets that do not belong to the value do not move the bound.
  const Octets longer{0xc2, 1, 1, 1, 1, 1, 0x5b, 1, 1, 1, 1, 1, 1, 1, 0xad, 0xb9, 0x2d, 0x23};
  EXPECT_EQ(RoundTrip(TypeNamed("Wide"), kPerAligned, longer).fault, "");
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
  Octets octets{0x30, 0x00, 0x80, 0x02, 0x04, 0xaf};  // four bits, the last of them zero, and ones behind them
  const Octets rest{0x81, 0x01, 0x00, 0x82, 0x02, 1,   2,   0x83, 0x00, 0x84, 0x01, 'A',
                    0x85, 0x00, 0x86, 0x03, 'a',  'b', 'c', 0x87, 0x00, 0x88, 0x00};
  octets.insert(octets.end(), rest.begin(), rest.end());
  octets[1] = static_cast<unsigned char>(octets.size() - 2);
  Octets expected = octets;
  expected[4] = 5;  // the bits have names
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
