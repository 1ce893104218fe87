#include "asn2c/Tables.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "asn1/model/AsnRanges.h"

namespace asn2c {
using namespace asn1;  // NOLINT(google-build-using-namespace)

namespace {
// The tags that order alternatives and the components of a SET: that of an untagged CHOICE is the least one of its
// alternatives.
class OrderingTags {
 public:
  using Tag = std::pair<int, int>;

  Tag Of(const AsnType& type) {
    if (const std::optional<Tag> own = Own(type)) return *own;
    Enter(forBaseType(type));
    while (!way_.empty()) {
      Choice& choice = way_.back();
      Tag& least = least_[Key(choice.type)];
      if (choice.next == choice.alternatives.size()) {
        way_.pop_back();
        continue;
      }
      const AsnType& alternative = choice.alternatives[choice.next];
      const std::optional<Tag> own = Own(alternative);
      const AsnType base = own ? AsnType{} : forBaseType(alternative);
      if (!own && Enter(base)) continue;  // and come back to the alternative
      least = std::min(least, own ? *own : least_[Key(base)]);
      ++choice.next;
    }
    return least_[Key(forBaseType(type))];
  }

 private:
  struct Choice {
    AsnType type;
    std::vector<AsnType> alternatives;
    size_t next;
  };

  static std::pair<ModRec*, int> Key(const AsnType& type) { return {type.module, type.number}; }

  static std::optional<Tag> Own(const AsnType& type) {
    const std::vector<AsnTag> tags = TagsOf(type);
    if (tags.empty()) return std::nullopt;
    return Tag{tags.front().tag_class, tags.front().number};
  }

  bool Enter(const AsnType& choice) {
    const bool fresh = least_.emplace(Key(choice), Tag{4, 0}).second;
    if (fresh) way_.push_back({choice, TypeComps(choice), 0});
    return fresh;
  }

  std::map<std::pair<ModRec*, int>, Tag> least_;
  std::vector<Choice> way_;
};

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (code < ' ' || code > '~') {
      char octal[8];
      std::snprintf(octal, sizeof octal, "\\%03o", code);
      quoted += octal;
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

std::string Int64(int64_t number) {
  if (number == INT64_MIN) return "INT64_MIN";
  return "INT64_C(" + std::to_string(number) + ")";
}

class Tables {
 public:
  Tables(ModRec& module, CFile& file) : module_(module), file_(file) {}

  void Write() {
    forEachType(module_, [&](const AsnType& type, int) {
      if (HasCodec(type)) ForInner(type, 0, &Tables::Declare);
    });
    file_ << "\n";
    forEachType(module_, [&](const AsnType& type, int) {
      if (HasCodec(type)) ForInner(type, 0, &Tables::Define);
    });
  }

 private:
  static constexpr int kDeepest = 1000;

  // Components and elements are described one by one; what a reference leads to has a description elsewhere,
  // of which the tags and constraints at hand may differ, so that the reference's own description shares its
  // parts only.
  void ForInner(const AsnType& type, int depth, void (Tables::*call)(const AsnType&)) {
    if (depth > kDeepest) return;
    if (isListType(type)) ForInner(forTypeElem(type), depth + 1, call);
    for (const AsnType& component : TypeComps(type)) ForInner(component, depth + 1, call);
    (this->*call)(type);
  }

  void Declare(const AsnType& type) {
    if (!isDefinedType(type)) file_ << "static const asn_type " << DescriptionOf(type) << ";\n";
  }

  void Define(const AsnType& type) {
    const std::string id = DescriptionOf(type);
    const AsnType base = forBaseType(type);
    const int tags = WriteTags(type, id);
    // The components of another definition stand with it.
    const bool own_components = base == type;
    if (own_components) {
      WriteComponents(type, id);
      WriteOrder(type, id);
    }
    const int items = WriteItems(base, id);
    const std::string alphabet = PermittedAlphabetOf(type);
    file_ << (isDefinedType(type) ? "" : "static ") << "const asn_type " << id << " = {\n";
    file_ << "  .name = " << Quoted(getTypeRef(type)) << ", .kind = " << KindOf(base)
          << ", .form = " << FormOf(type) << ", .size = sizeof(" << cBaseTypeId(type) << "),\n";
    WriteBounds(type, base);
    if (tags > 0) file_ << "  .tags = " << id << "_tags, .tag_count = " << tags << ",\n";
    WriteReferences(base, id);
    if (items >= 0)
      file_ << "  .items = " << id << "_items, .item_count = " << items
            << ", .addition_items = " << CountItems(base) - items << ",\n";
    if (getTypeMainType(base) == TYP_BITSTR && base.node().first_named != 0) file_ << "  .named_bits = 1,\n";
    if (!alphabet.empty())
      file_ << "  .alphabet = " << Quoted(alphabet)
            << ", .alphabet_size = " << static_cast<int>(alphabet.size()) << ",\n";
    file_ << "};\n\n";
  }

  static int KindOf(const AsnType& base) { return getTypeMainType(base); }

  static int FormOf(const AsnType& type) { return cGetVF(type); }

  int WriteTags(const AsnType& type, const std::string& id) {
    const std::vector<AsnTag> tags = TagsOf(type);
    if (tags.empty()) return 0;
    file_ << "static const asn_tag " << id << "_tags[] = {";
    for (const AsnTag& tag : tags)
      file_ << "{" << static_cast<int>(tag.tag_class) << ", " << (tag.constructed ? 1 : 0) << ", "
            << tag.number << "}, ";
    file_ << "};\n";
    return static_cast<int>(tags.size());
  }

  void WriteComponents(const AsnType& type, const std::string& id) {
    if (isListType(type)) {
      file_ << "const asn_comp " << id << "_comps[] = {{\"\", &" << DescriptionOf(forTypeElem(type))
            << ", 0, 0, 0, 0, 0}};\n";
      return;
    }
    const std::vector<AsnType> components = TypeComps(type);
    if (components.empty()) return;
    file_ << "const asn_comp " << id << "_comps[] = {\n";
    int addition = 0, group = 0;  // the last number that was given, the group that has it
    for (const AsnType& component : components) {
      // Those of one group in double brackets are one addition; others are one each.
      const int of = component.node().addition;
      if (of == 1 || (of > 1 && of != group)) ++addition;
      group = of;
      file_ << "  {" << Quoted(getTypeCompId(component)) << ", &" << DescriptionOf(component) << ", offsetof("
            << cBaseTypeId(type) << ", " << cComponentId(component) << "), "
            << static_cast<int>(component.node().presence) << ", " << (IsByPointer(component) ? 1 : 0) << ", "
            << (of == 0 ? 0 : addition) << ", " << (of > 1 ? 1 : 0) << "},\n";
    }
    file_ << "};\n";
  }

  void WriteOrder(const AsnType& type, const std::string& id) {
    const MainType main_type = getTypeMainType(type);
    if (main_type != TYP_SET && main_type != TYP_CHOICE) return;
    const std::vector<AsnType> components = TypeComps(type);
    if (components.empty()) return;
    std::vector<std::tuple<bool, std::pair<int, int>, int>> keys;
    for (size_t i = 0; i < components.size(); ++i) {
      const bool addition = isExtensionAdditionComponent(components[i]);
      keys.emplace_back(addition, addition ? std::pair<int, int>{} : ordering_tags_.Of(components[i]),
                        static_cast<int>(i));
    }
    std::sort(keys.begin(), keys.end());
    file_ << "const int " << id << "_order[] = {";
    for (const auto& key : keys) file_ << std::get<2>(key) << ", ";
    file_ << "};\n";
  }

  static int CountItems(const AsnType& base) {
    int count = 0;
    forEachNamedNumber(base, [&](const AsnValue&, int) { ++count; });
    return count;
  }

  // The numbers of an enumeration's items; returns how many are of the root, -1 for any other type.
  int WriteItems(const AsnType& base, const std::string& id) {
    if (getTypeMainType(base) != TYP_ENUM) return -1;
    std::vector<int64_t> numbers;
    forEachNamedNumber(base, [&](const AsnValue& item, int) { numbers.push_back(int64Value(item)); });
    const bool extensible = isExtensibleEnumeratedList(base);
    const auto root = extensible
                          ? std::min<size_t>(static_cast<size_t>(base.node().extension_index), numbers.size())
                          : numbers.size();
    std::sort(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(root));
    std::sort(numbers.begin() + static_cast<std::ptrdiff_t>(root), numbers.end());
    file_ << "static const sint64 " << id << "_items[] = {";
    for (const int64_t number : numbers) file_ << Int64(number) << ", ";
    file_ << "};\n";
    return static_cast<int>(root);
  }

  void WriteBounds(const AsnType& type, const AsnType& base) {
    const ValueForm form = cGetVF(type);
    const bool is_integer = getTypeMainType(base) == TYP_INTEGER;
    bool extensible = false;
    if (is_integer || form == VF_DYNS || form == VF_LIST) {
      const ConstrainedSet set = is_integer ? IntegerSetOf(type) : SizeSetOf(type);
      extensible = set.extensible;
      if (set.constrained && !set.set.empty()) WriteBounds(set.set.low(), set.set.high(), is_integer);
    } else if (form == VF_STRU) {
      const std::vector<AsnType> all = TypeComps(base, true);
      extensible = std::any_of(all.begin(), all.end(), isTypeExtensionmarker);
      if (extensible) file_ << "  .marker = " << MarkerOf(base) << ",\n";
    } else {
      extensible = isExtensibleEnumeratedList(base);
    }
    if (extensible) file_ << "  .extensible = 1,\n";
  }

  // A bound beyond 64 bits has no number in `low` and `high`; the packed rules find it in `wide`.
  void WriteBounds(Wide low, Wide high, bool is_integer) {
    const bool has_low = low != kMinimum, has_high = high != kMaximum;
    const bool wide =
        is_integer && ((has_low && !FitsInt64(low)) || (has_low && has_high && !FitsInt64(high)));
    const bool low_fits = has_low && FitsInt64(low), high_fits = has_high && FitsInt64(high);
    file_ << "  .has_low = " << (low_fits ? 1 : 0) << ", .has_high = " << (high_fits ? 1 : 0)
          << ", .low = " << (low_fits ? Int64(Clamped(low)) : "0")
          << ", .high = " << (high_fits ? Int64(Clamped(high)) : "0") << ",\n";
    if (!wide) return;
    const auto words = [](unsigned __int128 number) {
      return "UINT64_C(" + std::to_string(static_cast<uint64_t>(number >> 64)) + "), UINT64_C(" +
             std::to_string(static_cast<uint64_t>(number)) + ")";
    };
    file_ << "  .wide = &(const asn_wide){" << (has_high ? 1 : 0) << ", {"
          << words(static_cast<unsigned __int128>(low)) << "}, {"
          << words(has_high ? static_cast<unsigned __int128>(high) - static_cast<unsigned __int128>(low) : 0)
          << "}},\n";
  }

  // The number of components in front of the extension marker.
  static int MarkerOf(const AsnType& type) {
    int before = 0;
    for (const AsnType& component : TypeComps(type, true)) {
      if (isTypeExtensionmarker(component)) break;
      ++before;
    }
    return before;
  }

  void WriteReferences(const AsnType& base, const std::string&) {
    const std::string id = DescriptionOf(base);
    if (isListType(base)) file_ << "  .comps = " << id << "_comps, .comp_count = 1,\n";
    const int count = getNrOfTypeComps(base);
    if (count == 0) return;
    file_ << "  .comps = " << id << "_comps, .comp_count = " << count << ",\n";
    if (getTypeMainType(base) == TYP_SET || getTypeMainType(base) == TYP_CHOICE)
      file_ << "  .order = " << id << "_order,\n";
  }

  ModRec& module_;
  CFile& file_;
  OrderingTags ordering_tags_;
};

// A selection may lead to an alternative within another module's definition.
void DeclareParts(const AsnType& type, CFile& header, int depth) {
  if (depth > 1000) return;
  const std::string id = DescriptionOf(type);
  const bool has_parts = isListType(type) || getNrOfTypeComps(type) > 0;
  if (has_parts) header << "extern const asn_comp " << id << "_comps[];\n";
  const MainType main_type = getTypeMainType(type);
  if (has_parts && (main_type == TYP_SET || main_type == TYP_CHOICE))
    header << "extern const int " << id << "_order[];\n";
  if (isListType(type)) DeclareParts(forTypeElem(type), header, depth + 1);
  for (const AsnType& component : TypeComps(type)) DeclareParts(component, header, depth + 1);
}
}  // namespace

std::string DescriptionOf(const AsnType& type) {
  return "asn_desc_" + convertHyphens(getModulePrefix(*type.module)) + "_" + std::to_string(type.number);
}

bool HasCodec(const AsnType& type) {
  return cGetVF(type) != VF_NONE;
}

void DeclareTables(ModRec& module, CFile& header) {
  forEachType(module, [&](const AsnType& type, int) {
    if (!HasCodec(type)) return;
    header << "extern const asn_type " << DescriptionOf(type) << "; /* " << getTypeRef(type) << " */\n";
    DeclareParts(type, header, 0);
  });
}

void WriteTables(ModRec& module, CFile& source) {
  Tables(module, source).Write();
}
}  // namespace asn2c
