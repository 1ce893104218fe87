#include "asn1/model/AsnRanges.h"

#include <algorithm>
#include <cstdio>

#include "asn1/model/AsnFindings.h"

namespace asn1 {
namespace {
constexpr int kDeepestConstraint = 2000;
constexpr const char* kNotFlat = "Unable to construct a flat integer value set";

enum class Measure { Value, Size };

struct Evaluated {
  ValueSet set;
  bool known = false;  // the constraint says something of this measure
  bool extensible = false;
};

Evaluated Evaluate(const AsnType& type, const AsnConstraint& constraint, Measure measure, int depth);

Wide EndOf(const AsnValue& value, Wide otherwise, int step) {
  return value ? WideValue(value) + step : otherwise;
}

Segment RangeOf(const AsnConstraint& constraint) {
  const uint8_t open = constraint.node().open;
  return {EndOf(LowValue(constraint), kMinimum, (open & kLowOpen) != 0 ? 1 : 0),
          EndOf(HighValue(constraint), kMaximum, (open & kHighOpen) != 0 ? -1 : 0)};
}

// A constraint within SIZE( ): its values are sizes.
Evaluated EvaluateSize(const AsnType& type, const AsnConstraint& constraint, int depth) {
  Evaluated inner = Evaluate(type, constraint, Measure::Value, depth);
  inner.set = inner.set.Intersect(ValueSet(0, kMaximum));
  return inner;
}

// Once for each constraint, however often it is asked.
void WarnOfEmptySet(const AsnConstraint& constraint) {
  uint8_t& told = constraint.module->constraints[static_cast<size_t>(constraint.number) - 1].spare;
  if (told == 0) std::printf("** BET Warning: An empty flat integer value set.\n");
  told = 1;
}

Evaluated Combine(const AsnType& type, const AsnConstraint& constraint, Measure measure, int depth) {
  const ConstraintKind kind = getConstraintKind(constraint);
  const Evaluated first = Evaluate(type, FirstOperand(constraint), measure, depth);
  const Evaluated second = Evaluate(type, SecondOperand(constraint), measure, depth);
  Evaluated result;
  result.extensible = first.extensible || second.extensible;
  if (kind == kIntersection) {
    result.known = first.known || second.known;
    result.set = !second.known ? first.set : !first.known ? second.set : first.set.Intersect(second.set);
    if (result.known && result.set.empty()) WarnOfEmptySet(constraint);
    return result;
  }
  if (kind == kExcept) {
    result.known = first.known;
    result.set = second.known ? first.set.Exclude(second.set) : first.set;
    return result;
  }
  // What stands behind an extension marker is no part of the root; one of two that says nothing allows all.
  const bool behind_marker = first.extensible;
  result.known = first.known && (behind_marker || second.known || second.extensible);
  result.set = behind_marker || !second.known ? first.set : first.set.Merge(second.set);
  return result;
}

ValueSet Everything(Measure measure) {
  return ValueSet(measure == Measure::Size ? 0 : kMinimum, kMaximum);
}

Evaluated Evaluate(const AsnType& type, const AsnConstraint& constraint, Measure measure, int depth) {
  if (!constraint) return {};
  if (depth > kDeepestConstraint) fatalError(kInternal, kNotFlat);
  switch (getConstraintKind(constraint)) {
    case kUnion:
    case kCatenation:
    case kIntersection:
    case kExcept:
      return Combine(type, constraint, measure, depth + 1);
    case kAllExcept: {
      Evaluated result = Evaluate(type, FirstOperand(constraint), measure, depth + 1);
      result.set = Everything(measure).Exclude(result.set);
      return result;
    }
    case kValueRange: {
      if (measure == Measure::Size) return {};
      const Segment range = RangeOf(constraint);
      return {ValueSet(range.low, range.high), true, false};
    }
    case kSingleValue:
      if (measure == Measure::Size) return {};
      return {ValueSet(WideValue(LowValue(constraint)), WideValue(LowValue(constraint))), true, false};
    case kSize:
      return measure == Measure::Size ? EvaluateSize(type, FirstOperand(constraint), depth + 1) : Evaluated{};
    case kContainedSubtype: {
      const AsnType contained = forContainedSubtypeConstraint(constraint);
      if (!contained || contained == type) return {};
      const ConstrainedSet of = measure == Measure::Size ? SizeSetOf(contained) : IntegerSetOf(contained);
      return {of.set, of.constrained, of.extensible};
    }
    case kExtensionMarker:
      return {ValueSet(), false, true};
    default:
      return {};
  }
}

// What is found of a type by what the types behind it leave, the innermost first: each of them that nothing
// is kept of narrows that of the one behind it and keeps it.
template <class Found, class Narrow>
Found FindAlong(const AsnType& type, AsnFindings::ByNumber<std::optional<Found>> AsnFindings::*table,
                Found found, Narrow narrow) {
  std::vector<AsnType> way;
  ChainGuard guard({}, "Unable to find synonym type.");
  for (AsnType at = type; at; at = forTypeBehind(at)) {
    if (const std::optional<Found>& kept = KeptOf(at, table)) {
      found = *kept;
      break;
    }
    guard.Pass(at);
    way.push_back(at);
  }
  std::for_each(way.rbegin(), way.rend(), [&](const AsnType& at) {
    narrow(at, found);
    KeptOf(at, table) = found;
  });
  return found;
}

ConstrainedSet SetOf(const AsnType& type, Measure measure) {
  // Contained subtypes lead from one type to the next.
  static int nesting = 0;
  const NestingGuard guard(nesting, kNotFlat);
  const auto narrow = [measure](const AsnType& at, ConstrainedSet& found) {
    forEachLocalTypeConstraint(at, [&](const AsnConstraint& constraint, int) {
      const Evaluated evaluated = Evaluate(at, constraint, measure, 0);
      if (!evaluated.known) return;
      found.set = found.set.Intersect(evaluated.set);
      found.constrained = true;
      // The outermost constraint alone says whether there are extensions.
      found.extensible = evaluated.extensible;
    });
  };
  return FindAlong(type, measure == Measure::Size ? &AsnFindings::sizes : &AsnFindings::numbers,
                   ConstrainedSet{Everything(measure), false, false}, narrow);
}

// The characters that a type has without constraints.
std::string CharactersOf(MainType type) {
  if (type == TYP_NUMSTR) return " 0123456789";
  if (type == TYP_PRISTR) return " '()+,-./0123456789:=?ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  std::string all;
  const int first = type == TYP_VISSTR ? 32 : 0, last = type == TYP_VISSTR   ? 126
                                                        : type == TYP_IA5STR ? 127
                                                                             : 255;
  for (int c = first; c <= last; ++c) all += static_cast<char>(c);
  return all;
}

class Alphabets {
 public:
  explicit Alphabets(const AsnType& type) : all_(CharactersOf(getBaseTypeMainType(type))) {}

  // A constraint of the type; `within` FROM, whose values are characters.
  Alphabet Of(const AsnConstraint& constraint, bool within, int depth = 0) const {
    if (!constraint || depth > kDeepestConstraint) return {};
    switch (getConstraintKind(constraint)) {
      case kUnion:
      case kCatenation:
      case kIntersection:
      case kExcept:
        return Combined(constraint, within, depth);
      case kAllExcept: {
        Alphabet result = Of(FirstOperand(constraint), within, depth + 1);
        result.characters = Without(all_, result.characters);
        return result;
      }
      case kPermittedAlphabet:
        return Of(FirstOperand(constraint), true, depth + 1);
      case kSingleValue:
        return within ? Listed(ValueText(LowValue(constraint))) : Alphabet{};
      case kValueRange:
        return within ? Range(constraint) : Alphabet{};
      case kContainedSubtype:
        return Contained(forContainedSubtypeConstraint(constraint));
      case kExtensionMarker:
        return {{}, false, true};
      default:
        return {};
    }
  }

  const std::string& all() const { return all_; }

  static std::string Within(std::string characters, const std::string& others) {
    std::erase_if(characters, [&](char c) { return others.find(c) == std::string::npos; });
    return characters;
  }

 private:
  static std::string Without(std::string characters, const std::string& removed) {
    std::erase_if(characters, [&](char c) { return removed.find(c) != std::string::npos; });
    return characters;
  }

  static std::string With(std::string characters, const std::string& added) {
    for (const char c : added)
      if (characters.find(c) == std::string::npos) characters += c;
    return characters;
  }

  static Alphabet Listed(const std::string& text) { return {With("", text), true, false}; }

  Alphabet Range(const AsnConstraint& constraint) const {
    const std::string low = LowValue(constraint) ? ValueText(LowValue(constraint)) : std::string();
    const std::string high = HighValue(constraint) ? ValueText(HighValue(constraint)) : std::string();
    const uint8_t open = constraint.node().open;
    const int from = low.empty() ? 0 : static_cast<unsigned char>(low[0]) + ((open & kLowOpen) != 0 ? 1 : 0);
    const int to =
        high.empty() ? 255 : static_cast<unsigned char>(high[0]) - ((open & kHighOpen) != 0 ? 1 : 0);
    Alphabet result;
    result.known = true;
    for (const char c : all_)
      if (static_cast<unsigned char>(c) >= from && static_cast<unsigned char>(c) <= to) result.characters += c;
    return result;
  }

  static Alphabet Contained(const AsnType& type) {
    static int nesting = 0;
    const NestingGuard guard(nesting, kNotFlat);
    return type ? Listed(PermittedAlphabetOf(type).empty() ? CharactersOf(getBaseTypeMainType(type))
                                                           : PermittedAlphabetOf(type))
                : Alphabet{};
  }

  Alphabet Combined(const AsnConstraint& constraint, bool within, int depth) const {
    const Alphabet first = Of(FirstOperand(constraint), within, depth + 1);
    const Alphabet second = Of(SecondOperand(constraint), within, depth + 1);
    Alphabet result;
    result.extensible = first.extensible || second.extensible;
    const ConstraintKind kind = getConstraintKind(constraint);
    if (kind == kIntersection) {
      result.known = first.known || second.known;
      result.characters =
          Within(first.known ? first.characters : all_, second.known ? second.characters : all_);
    } else if (kind == kExcept) {
      result.known = first.known;
      result.characters = second.known ? Without(first.characters, second.characters) : first.characters;
    } else {
      result.known = first.known && (second.known || second.extensible || first.extensible);
      result.characters = first.extensible ? first.characters : With(first.characters, second.characters);
    }
    return result;
  }

  std::string all_;
};
}  // namespace

ValueSet::ValueSet(Wide low, Wide high) {
  if (low <= high) segments_.push_back({low, high});
}

ValueSet ValueSet::Merge(const ValueSet& other) const {
  std::vector<Segment> all = segments_;
  all.insert(all.end(), other.segments_.begin(), other.segments_.end());
  std::sort(all.begin(), all.end(), [](const Segment& a, const Segment& b) { return a.low < b.low; });
  ValueSet result;
  for (const Segment& segment : all) {
    const bool touches = !result.segments_.empty() && (result.segments_.back().high == kMaximum ||
                                                       segment.low <= result.segments_.back().high + 1);
    if (touches)
      result.segments_.back().high = std::max(result.segments_.back().high, segment.high);
    else
      result.segments_.push_back(segment);
  }
  return result;
}

ValueSet ValueSet::Intersect(const ValueSet& other) const {
  ValueSet result;
  for (size_t i = 0, j = 0; i < segments_.size() && j < other.segments_.size();) {
    const Segment& a = segments_[i];
    const Segment& b = other.segments_[j];
    const Segment common{std::max(a.low, b.low), std::min(a.high, b.high)};
    if (common.low <= common.high) result.segments_.push_back(common);
    if (a.high < b.high)
      ++i;
    else
      ++j;
  }
  return result;
}

ValueSet ValueSet::Exclude(const ValueSet& other) const {
  ValueSet rest;
  Wide from = kMinimum;
  bool open = true;
  for (const Segment& segment : other.segments_) {
    if (segment.low > from) rest.segments_.push_back({from, segment.low - 1});
    open = segment.high != kMaximum;
    if (open) from = segment.high + 1;
  }
  if (open) rest.segments_.push_back({from, kMaximum});
  return Intersect(rest);
}

ConstrainedSet IntegerSetOf(const AsnType& type) {
  return SetOf(type, Measure::Value);
}

ConstrainedSet SizeSetOf(const AsnType& type) {
  return SetOf(type, Measure::Size);
}

ConstrainedSet SizeSetOfConstraint(const AsnType& type, const AsnConstraint& constraint) {
  const Evaluated evaluated = Evaluate(type, constraint, Measure::Size, 0);
  return {evaluated.set, evaluated.known, evaluated.extensible};
}

std::optional<std::string> constructAllowedCharacters(const AsnType& type, const AsnConstraint& constraint) {
  const Alphabet alphabet = Alphabets(type).Of(constraint, false);
  if (!alphabet.known || alphabet.extensible) return std::nullopt;
  return alphabet.characters;
}

std::string PermittedAlphabetOf(const AsnType& type) {
  const auto narrow = [](const AsnType& at, Alphabet& found) {
    forEachLocalTypeConstraint(at, [&](const AsnConstraint& constraint, int) {
      // All types of a chain have the characters of its base.
      const Alphabets alphabets(at);
      const Alphabet alphabet = alphabets.Of(constraint, false);
      if (!alphabet.known) return;
      // As with sizes, the outermost constraint alone says whether there are extensions.
      found = {Alphabets::Within(found.known ? found.characters : alphabets.all(), alphabet.characters), true,
               alphabet.extensible};
    });
  };
  Alphabet found = FindAlong(type, &AsnFindings::alphabets, Alphabet{}, narrow);
  if (!found.known || found.extensible) return {};
  std::ranges::sort(found.characters, {}, [](char c) { return static_cast<unsigned char>(c); });
  return found.characters;
}

Segment EndpointsOf(const AsnType& type) {
  const AsnType base = forBaseType(type);
  switch (getTypeMainType(base)) {
    case TYP_ENUM: {
      std::optional<Segment> items;
      forEachNamedNumber(base, [&](const AsnValue& item, int) {
        const Wide number = int64Value(item);
        items = items ? Segment{std::min(items->low, number), std::max(items->high, number)}
                      : Segment{number, number};
      });
      return items.value_or(Segment{kMinimum, kMaximum});
    }
    case TYP_INTEGER: {
      const ConstrainedSet set = IntegerSetOf(type);
      return set.set.empty() ? Segment{kMinimum, kMaximum} : Segment{set.set.low(), set.set.high()};
    }
    case TYP_BITSTR:
    case TYP_OCTSTR:
    case TYP_SEQOF:
    case TYP_SETOF:
    case TYP_NUMSTR:
    case TYP_PRISTR:
    case TYP_TELSTR:
    case TYP_VIDSTR:
    case TYP_VISSTR:
    case TYP_IA5STR:
    case TYP_GRASTR:
    case TYP_GENSTR:
    case TYP_BMPSTR:
    case TYP_UNISTR:
    case TYP_OBJDESCR: {
      const ConstrainedSet set = SizeSetOf(type);
      return set.set.empty() ? Segment{0, kMaximum} : Segment{set.set.low(), set.set.high()};
    }
    default:
      return {kMinimum, kMaximum};
  }
}
}  // namespace asn1
