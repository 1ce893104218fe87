// What the resolver makes of the definitions: types, values and constraints with their references resolved,
// one node for each record to come.
#pragma once

#include "mesk/Ast.h"

namespace mesk {

struct Env;

/// Where a piece of a tree is read: its module, and the actual parameters that hold there.
struct Context {
  Module* module = nullptr;
  const Env* env = nullptr;
};

struct Argument {
  Range range;
  Context context;  // where the range stands
  const ParamAst* param = nullptr;
  TypeAst* type = nullptr;  // once it was parsed as such
  ValueAst* value = nullptr;
};

struct Env {
  std::unordered_map<std::string_view, Argument> args;
  const Definition* definition = nullptr;  // that takes them
  const Env* caller = nullptr;             // in whose text they stand
};

struct TagNode {
  asn1::TagClass tag_class = asn1::kTagContext;
  int64_t number = 0;
  bool is_explicit = false;
  bool automatic = false, dummy = false;  // dummy: in front of a parameter, where it is always explicit
  const TagAst* ast = nullptr;            // until the number is known
  Context context;
};

struct NamedNode {
  std::string_view name;
  int64_t number = 0;
  int line = 0, column = 0;
  bool after_marker = false;
};

struct PathStep {
  std::string_view name;
  TypeNode* component = nullptr;
  int level = 0;
};

struct ConstraintNode {
  asn1::ConstraintKind kind = asn1::kSingleValue;
  uint8_t flags = 0, open = 0;
  ConstraintNode *first = nullptr, *second = nullptr;
  ConstraintNode* next = nullptr;
  std::string text;
  bool has_text = false;
  TypeNode* type = nullptr;
  ValueNode *value = nullptr, *value2 = nullptr;
  std::vector<PathStep> path;
  int number = 0;
};

struct TypeNode {
  asn1::MainType main = asn1::TYP_NONE;
  bool instance = false;  // its text stands elsewhere: in a parameterized definition, or in a parameter
  bool definition = false, automatic_tags = false, recursive = false, named_done = true, entry = false;
  std::string_view name;
  asn1::Presence presence = asn1::kMandatory;
  int addition = 0, component_nbr = 0, level = 0;
  asn1::FieldKind field_kind = static_cast<asn1::FieldKind>(0);
  std::vector<TagNode> tags;
  std::vector<TypeNode*> components;  // of structures; the element of lists; the fields of a class
  std::vector<ConstraintNode*> constraints;
  std::vector<NamedNode> named;
  int marker = -1;
  ValueNode* default_value = nullptr;
  TypeNode *parent = nullptr, *of_definition = nullptr;
  TypeNode* string_around = nullptr;  // whose contents this is
  Definition* ref = nullptr;
  std::string_view ref_name;
  TypeNode* class_field = nullptr;
  Module* module = nullptr;        // that writes it
  const Module* source = nullptr;  // where the text stands, with the token
  int token = 0, number = 0;
  const TypeAst* ast = nullptr;  // of INTEGER, BIT STRING and ENUMERATED until named_done
  const FieldAst* field = nullptr;
  Context context;
  bool isMarker() const { return main == asn1::TYP_EXTENSION_MARKER; }
};

struct ValueNode {
  asn1::MainType main = asn1::kNoValue;
  std::string_view name;
  std::string text;  // of 8 bits
  bool has_text = false, named_item = false;
  std::vector<uint32_t> wide;  // BMPString and UniversalString
  asn1::Wide integer = 0;
  int64_t mantissa = 0;
  int base = 0, exponent = 0;
  Definition* ref = nullptr;
  TypeNode *type = nullptr, *actual_type = nullptr, *field_type = nullptr;
  std::vector<ValueNode*> components;
  int flags = 0;
  Module* module = nullptr;
  const Module* source = nullptr;
  int token = 0, number = 0;
};

/// Finds things in lists by their names, in long lists by tables. Lists stay where they are, and grow at their ends.
class NamePlaces {
 public:
  /// The place of the first thing of a name; the list's size where there is none.
  template <class List, class NameOf>
  size_t find(const List& list, std::string_view name, NameOf name_of) {
    constexpr size_t kShort = 16;
    if (list.size() < kShort) {
      size_t place = 0;
      while (place < list.size() && name_of(list[place]) != name) ++place;
      return place;
    }
    Table& table = tables_[&list];
    for (; table.seen < list.size(); ++table.seen) table.places.emplace(name_of(list[table.seen]), table.seen);
    const auto found = table.places.find(name);
    return found == table.places.end() ? list.size() : found->second;
  }

 private:
  struct Table {
    std::unordered_map<std::string_view, size_t> places;
    size_t seen = 0;
  };
  std::unordered_map<const void*, Table> tables_;
};

/// A class with the place where its text stands.
struct ClassUse {
  const ClassAst* cls = nullptr;
  Context context;
  Definition* definition = nullptr;  // that holds the text
  explicit operator bool() const { return cls != nullptr; }
};

}  // namespace mesk
