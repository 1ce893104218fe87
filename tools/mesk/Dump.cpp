#include "mesk/Dump.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "asn1/front/Records.h"
#include "mesk/Source.h"

namespace mesk {

using namespace asn1;

namespace {

/// A number in the file leads nowhere.
struct Invalid {
  const char* what;
};

class Dump {
 public:
  explicit Dump(const std::string& bytes) : bytes_(bytes) { load(); }

  void print() {
    const MNode& head = modules_[0];
    std::printf("module %s file %s", text(head.name), text(head.file_prefix));
    if (head.generation_prefix) std::printf(" generation %s", text(head.generation_prefix));
    std::printf(" tags %s\n", head.code == 0 ? "explicit" : head.code == 1 ? "implicit" : "automatic");
    for (size_t i = 1; i < modules_.size(); ++i) {
      std::printf("import %zu %s file %s entry %d\n", i + 1, text(modules_[i].name),
                  text(modules_[i].file_prefix), modules_[i].first_object_set);
    }
    for (int i = head.first_option; i && i <= head.last_option; ++i) {
      std::printf("option %d %s\n", at(options_, i).mask, text(at(options_, i).text));
    }
    if (head.entry_types) std::printf("entry types %d\n", head.entry_types);
    for (int i = head.first_type; i; i = at(types_, i).next) printType(i, 0);
    for (int i = head.first_value; i; i = at(values_, i).next) printDefined("value", i);
    for (int i = head.first_object; i; i = at(values_, i).next) printDefined("object", i);
    for (int i = head.first_object_set; i; i = at(values_, i).next) printDefined("object set", i);
  }

 private:
  template <typename Record>
  void loadRecords(std::vector<Record>& records, int32_t count) {
    if (count < 0 || static_cast<size_t>(count) > (bytes_.size() - pos_) / sizeof(Record))
      throw Invalid{"a count of records"};
    records.resize(static_cast<size_t>(count));
    if (count) std::memcpy(records.data(), bytes_.data() + pos_, records.size() * sizeof(Record));
    pos_ += records.size() * sizeof(Record);
  }

  void loadStrings(std::vector<std::string>& texts, int32_t count, size_t width) {
    for (int32_t i = 0; i < count; ++i) {
      uint16_t units = 0;
      if (bytes_.size() - pos_ < sizeof units) throw Invalid{"a string"};
      std::memcpy(&units, bytes_.data() + pos_, sizeof units);
      pos_ += sizeof units;
      if (units == 0 || units > kMaxStringUnits || bytes_.size() - pos_ < units * width)
        throw Invalid{"a string"};
      std::string text;
      for (size_t k = 0; k + 1 < units; ++k) {
        uint32_t code = 0;
        std::memcpy(&code, bytes_.data() + pos_ + k * width, width);
        char printed[16];
        std::snprintf(printed, sizeof printed, code >= 32 && code < 127 ? "%c" : "<%X>", code);
        text += printed;
      }
      texts.push_back(text);
      pos_ += units * width;
    }
  }

  void load() {
    loadRecords(modules_, 1);
    const MNode head = modules_[0];
    if (head.version != kFormatVersion) throw Invalid{"the version"};
    pos_ = 0;
    loadRecords(modules_, head.counts[kMNode]);
    if (modules_.empty()) throw Invalid{"a count of records"};
    loadRecords(types_, head.counts[kTNode]);
    loadRecords(values_, head.counts[kVNode]);
    loadRecords(tags_, head.counts[kTagRec]);
    loadRecords(constraints_, head.counts[kSubRec]);
    loadRecords(options_, head.counts[kTedRec]);
    loadRecords(steps_, head.counts[kSNode]);
    loadStrings(texts_, head.counts[kString8], 1);
    loadStrings(texts16_, head.counts[kString16], 2);
    loadStrings(texts32_, head.counts[kString32], 4);
    if (pos_ != bytes_.size()) throw Invalid{"the size of the file"};
  }

  template <typename Record>
  const Record& at(const std::vector<Record>& records, int32_t number) const {
    if (number < 1 || static_cast<size_t>(number) > records.size()) throw Invalid{"a record number"};
    // Each record is looked at a few times only, unless a list runs in a circle.
    if (++looks_ > 1000 + 64 * (types_.size() + values_.size() + constraints_.size() + tags_.size())) {
      throw Invalid{"a list"};
    }
    return records[static_cast<size_t>(number) - 1];
  }

  const char* text(int32_t number) const { return at(texts_, number).c_str(); }

  static int64_t wide(const int32_t* words) {
    return static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(words[1])) << 32) |
                                static_cast<uint32_t>(words[0]));
  }

  static const char* typeName(uint8_t main) {
    return main == kNoValue ? "no value" : main <= TYP_NONE ? rowOf(static_cast<MainType>(main)).name : "?";
  }

  void printTags(int32_t first) {
    static constexpr const char* kClasses[] = {"UNIVERSAL ", "APPLICATION ", "", "PRIVATE ", "?", "?"};
    for (int32_t i = first; i; i = at(tags_, i).next) {
      const TagRec& tag = at(tags_, i);
      std::printf(" [%s%d]%s", tag.tag_class >= 0 && tag.tag_class <= 5 ? kClasses[tag.tag_class] : "?",
                  tag.number, tag.is_explicit ? "e" : "i");
    }
  }

  void printReference(int32_t module, int32_t record) {
    if (module == 1) std::printf(" -> %s", record > 0 ? text(at(types_, record).name) : "?");
    if (module > 1) std::printf(" -> %s:%d", text(at(modules_, module).name), record);
  }

  void printConstraint(int32_t number) {
    static constexpr const char* kKinds[] = {"?",
                                             "union",
                                             "intersection",
                                             "catenation",
                                             "except",
                                             "all-except",
                                             "?",
                                             "?",
                                             "?",
                                             "?",
                                             "range",
                                             "from",
                                             "size",
                                             "single",
                                             "contained",
                                             "with-component",
                                             "with-components",
                                             "table",
                                             "component",
                                             "pattern",
                                             "contents",
                                             "user-defined",
                                             "...",
                                             "?",
                                             "?"};
    const SubRec& record = at(constraints_, number);
    if (depth_ > 1000) throw Invalid{"the nesting"};
    Depth depth(depth_);
    std::printf("%s", record.kind <= kEmptyException ? kKinds[record.kind] : "?");
    if (record.flags & kFlagException) std::printf("!");
    if (record.flags & kFlagPartial) std::printf("+");
    static constexpr const char* kPresences[] = {"", "", " PRESENT", " ABSENT", " OPTIONAL", "", "", ""};
    std::printf("%s(", kPresences[(record.flags >> 2) & 7]);
    const char* comma = "";
    if (record.text) std::printf("%s", text(record.text)), comma = ", ";
    if (record.kind == kWithComponents) {
      for (int32_t i = record.first; i; i = at(constraints_, i).next)
        std::printf("%s", comma), printConstraint(i), comma = ", ";
    } else if (record.first) {
      std::printf("%s", comma), printConstraint(record.first), comma = ", ";
    }
    if (record.second) std::printf("%s", comma), printConstraint(record.second), comma = ", ";
    if (record.kind == kValueRange) {
      record.value ? printValue(record.value) : void(std::printf("MIN"));
      std::printf("%s..%s", record.open & kLowOpen ? "<" : "", record.open & kHighOpen ? "<" : "");
      record.value2 ? printValue(record.value2) : void(std::printf("MAX"));
    } else if (record.value) {
      std::printf("%s", comma), printValue(record.value);
    }
    for (int32_t i = record.path; i; i = at(steps_, i).next) {
      const SNode& step = at(steps_, i);
      std::printf(i == record.path ? " @%.*s%s" : "%.*s.%s", i == record.path ? step.level : 0, "..........",
                  text(step.text));
      std::printf("/%d:%d", step.module, step.record);
    }
    if (record.component_type) {
      const TNode& type = at(types_, record.component_type);
      std::printf("%s%s", comma, typeName(type.main_type));
      printReference(type.ref_module, type.ref_type);
      printConstraints(type);
    }
    std::printf(")");
  }

  void printValue(int32_t number) {
    const VNode& value = at(values_, number);
    if (depth_ > 1000) throw Invalid{"the nesting"};
    Depth depth(depth_);
    if (value.field_type) {
      const TNode& type = at(types_, value.field_type);
      std::printf("type");
      printTags(type.first_tag);
      std::printf(" %s", typeName(type.main_type));
      printReference(type.ref_module, type.ref_type);
      printConstraints(type);
      return;
    }
    switch (value.main_type) {
      case TYP_INTEGER:
      case TYP_ENUM:
        if (value.text8) std::printf("%s=", text(value.text8));
        std::printf("%lld", static_cast<long long>(wide(value.v.i.integer)));
        break;
      case TYP_BOOLEAN:
        std::printf(value.v.i.integer[0] ? "TRUE" : "FALSE");
        break;
      case TYP_REAL:
        std::printf("{%lld, %d, %d}", static_cast<long long>(wide(value.v.r.mantissa)), value.v.r.base,
                    value.v.r.exponent);
        break;
      case TYP_SYNONYM:
        std::printf("%s", value.ref_module == 1 ? text(at(values_, value.ref_value).name) : "");
        if (value.ref_module > 1)
          std::printf("%s:%d", text(at(modules_, value.ref_module).name), value.ref_value);
        break;
      case TYP_EXTENSION_MARKER:
        std::printf("...");
        break;
      default:
        std::printf("%s", typeName(value.main_type));
    }
    if (value.main_type != TYP_INTEGER && value.main_type != TYP_ENUM && value.text8)
      std::printf(" \"%s\"", text(value.text8));
    if (value.text16) std::printf(" 16\"%s\"", at(texts16_, value.text16).c_str());
    if (value.text32) std::printf(" 32\"%s\"", at(texts32_, value.text32).c_str());
    if (value.actual_type) std::printf(" of %s", typeName(at(types_, value.actual_type).main_type));
    if (!value.first_component) return;
    std::printf(" {");
    int count = 0;
    for (int32_t i = value.first_component; i; i = at(values_, i).next) {
      if (count++) std::printf(", ");
      if (at(values_, i).name) std::printf("%s ", text(at(values_, i).name));
      printValue(i);
    }
    std::printf("}");
    if (count != value.components) throw Invalid{"a number of components"};
  }

  void printConstraints(const TNode& type) {
    for (int32_t i = type.constraint; i; i = at(constraints_, i).next) {
      std::printf(" ");
      printConstraint(i);
    }
  }

  void printType(int32_t number, int depth) {
    const TNode& type = at(types_, number);
    if (depth > 1000) throw Invalid{"the nesting"};
    std::printf("%*s", depth * 2, "");
    if (type.status == kDefinition) std::printf("type #%d unique %d ", number, type.unique);
    std::printf("%s", type.name ? text(type.name) : type.main_type == TYP_EXTENSION_MARKER ? "..." : "-");
    printTags(type.first_tag);
    std::printf(" %s", typeName(type.main_type));
    printReference(type.ref_module, type.ref_type);
    if (type.ref_name && type.main_type != TYP_SYNONYM) std::printf(" by %s", text(type.ref_name));
    if (type.class_chain) std::printf(" field #%d", type.class_chain);
    if (type.field_kind) std::printf(" kind %d", type.field_kind);
    if (type.status == kComponent && type.presence == kOptional) std::printf(" OPTIONAL");
    if (type.addition) std::printf(" addition %d", type.addition);
    if (type.flags & kFlagEntryType) std::printf(" entry");
    if (type.flags2 & kFlag2Recursive) std::printf(" recursive");
    if (type.flags2 & kFlag2AutomaticTags) std::printf(" automatic");
    if (type.flags2 & kFlag2Extensible) std::printf(" extensible %d", type.extension_index);
    printConstraints(type);
    if (type.default_value) {
      std::printf(" DEFAULT ");
      printValue(type.default_value);
    }
    if (type.status == kDefinition) std::printf(" line %d", type.line);
    std::printf("\n");
    for (int32_t i = type.first_named; i; i = at(values_, i).next) {
      const VNode& named = at(values_, i);
      std::printf("%*s%s%s (%lld)\n", depth * 2 + 4, "", named.flags & 1 ? "... " : "", text(named.name),
                  static_cast<long long>(wide(named.v.i.integer)));
    }
    int count = 0;
    for (int32_t i = type.first_component; i; i = at(types_, i).next) {
      const TNode& part = at(types_, i);
      if (part.parent != number || part.element_level != type.element_level + 1)
        throw Invalid{"the parent of a component"};
      if (part.main_type != TYP_EXTENSION_MARKER && part.component_nbr != count++)
        throw Invalid{"the number of a component"};
      printType(i, depth + 1);
    }
    if (count != type.components) throw Invalid{"a number of components"};
  }

  void printDefined(const char* what, int32_t number) {
    const VNode& value = at(values_, number);
    std::printf("%s #%d unique %d %s", what, number, value.unique, text(value.name));
    const TNode& type = at(types_, value.type);
    printTags(type.first_tag);
    std::printf(" %s", typeName(type.main_type));
    printReference(type.ref_module, type.ref_type);
    printConstraints(type);
    std::printf(" ::= ");
    printValue(number);
    std::printf(" line %d\n", value.line);
  }

  const std::string& bytes_;
  size_t pos_ = 0;
  int depth_ = 0;
  mutable size_t looks_ = 0;
  std::vector<MNode> modules_;
  std::vector<TNode> types_;
  std::vector<VNode> values_;
  std::vector<TagRec> tags_;
  std::vector<SubRec> constraints_;
  std::vector<TedRec> options_;
  std::vector<SNode> steps_;
  std::vector<std::string> texts_, texts16_, texts32_;
};

}  // namespace

bool dumpFile(const std::string& path) {
  std::string bytes;
  if (!readFile(path, bytes)) {
    std::printf("Error: the file %s can not be read\n", path.c_str());
    return false;
  }
  try {
    Dump(bytes).print();
    return true;
  } catch (const Invalid& invalid) {
    std::printf("Error: %s is not a valid syntax file: %s is wrong\n", path.c_str(), invalid.what);
    return false;
  }
}

}  // namespace mesk
