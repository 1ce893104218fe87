// What the parser makes of a module: definitions as they are written, with names unresolved. Whatever needs
// to know the kind of a name first (values in braces, objects, sets, actual parameters) stays a range of
// tokens.
#pragma once

#include <deque>
#include <memory>
#include <unordered_map>

#include "asn1/front/Records.h"
#include "asn1/front/WideInteger.h"
#include "mesk/Lexer.h"

namespace mesk {

struct TypeAst;
struct ValueAst;
struct ClassAst;
struct Module;
struct TypeNode;
struct ValueNode;
struct Env;

struct Range {
  int begin = 0, end = 0;  // token indices; `end` is the one behind
};

/// The use of a defined name, perhaps with its module and with actual parameters.
struct RefAst {
  std::string_view module, name;
  int token = 0;
  bool has_args = false;
  std::vector<Range> args;
};

enum class TagMode : uint8_t { kModuleDefault, kImplicit, kExplicit };

struct TagAst {
  asn1::TagClass tag_class = asn1::kTagContext;
  ValueAst* number = nullptr;
  TagMode mode = TagMode::kModuleDefault;
  int token = 0;
};

struct NamedAst {
  std::string_view name;
  ValueAst* number = nullptr;  // none: numbered automatically
  int token = 0;
};

struct ComponentAst {
  enum Kind : uint8_t { kNormal, kMarker, kComponentsOf };
  Kind kind = kNormal;
  std::string_view name;
  int token = 0;
  TypeAst* type = nullptr;
  asn1::Presence presence = asn1::kMandatory;
  ValueAst* default_value = nullptr;
  int addition = 0;  // as TNode::addition
};

struct AtPath {
  int level = 0, token = 0;
  std::vector<std::string_view> names;
};

struct ConstraintAst {
  asn1::ConstraintKind kind = asn1::kSingleValue;
  int token = 0;
  bool exception = false, partial = false;
  uint8_t open = 0;      // RangeFlags
  uint8_t presence = 0;  // as in SubRec::flags
  ConstraintAst *first = nullptr, *second = nullptr;
  ValueAst *value = nullptr, *value2 = nullptr;  // none: MIN or MAX
  TypeAst* type = nullptr;
  RefAst set;
  std::string_view name;  // of a component constraint
  std::vector<AtPath> paths;
  std::vector<ConstraintAst*> components;
};

struct TypeAst {
  enum Kind : uint8_t { kPlain, kStruct, kList, kRef, kField, kSelection, kInstance };
  Kind kind = kPlain;
  asn1::MainType main = asn1::TYP_NONE;
  int token = 0;
  std::vector<TagAst> tags;  // outermost first
  std::vector<ConstraintAst*> constraints;
  std::vector<NamedAst> named;
  int marker = -1;  // number of enumeration items before the marker
  std::vector<ComponentAst> components;
  TypeAst* element = nullptr;  // of a list; the CHOICE of a selection
  RefAst ref;                  // kRef; the class, object or set of kField and kInstance
  std::vector<std::string_view> fields;
  std::string_view word;  // the alternative of a selection; the classifier of an ANY; a type without a kind
};

struct ValueAst {
  enum Kind : uint8_t {
    kTrue,
    kFalse,
    kNull,
    kInteger,
    kReal,
    kCString,
    kBString,
    kHString,
    kPlusInfinity,
    kMinusInfinity,
    kRef,
    kBraces,
    kChoice,
    kTyped,
    kField,
  };
  Kind kind = kNull;
  int token = 0;
  std::string_view text;
  bool negative = false;
  RefAst ref;                            // kRef; the object of kField
  std::vector<std::string_view> fields;  // kField
  Range range;                           // kBraces, with the braces
  ValueAst* inner = nullptr;             // kChoice, kTyped
  TypeAst* type = nullptr;               // kTyped
};

struct FieldAst {
  asn1::FieldKind kind = asn1::kTypeField;  // object fields still count as value fields
  std::string_view name;
  int token = 0;
  TypeAst* type = nullptr;               // of fixed fields; the class of object fields
  std::vector<std::string_view> fields;  // of variable fields
  bool unique = false, optional = false;
  Range default_setting;  // empty if there is none
};

/// A part of a WITH SYNTAX: a word, a field, or an optional group.
struct SyntaxAst {
  std::string_view word, field;
  std::vector<SyntaxAst> group;
  int token = 0;
};

struct ClassAst {
  int token = 0;
  std::vector<FieldAst> fields;
  std::unordered_map<std::string_view, size_t> by_name;  // the places of fields
  bool has_syntax = false;
  std::vector<SyntaxAst> syntax;
};

struct ParamAst {
  TypeAst* governor = nullptr;
  std::string_view name;
  int token = 0;
};

enum class DefKind : uint8_t { kType, kClass, kValue, kValueSet, kObject, kObjectSet };
enum class State : uint8_t { kNew, kBusy, kDone };

struct Definition {
  Module* module = nullptr;
  std::string_view name;
  int token = 0;
  DefKind kind = DefKind::kType;
  State kind_state =
      State::kNew;  // kType, kValue and kValueSet may turn out to be kClass, kObject, kObjectSet
  bool parameterized = false;
  // Made for a type without a name, behind the module's own: where its text stands.
  Module* text_module = nullptr;
  const Env* env = nullptr;
  std::vector<ParamAst> params;
  TypeAst* type = nullptr;  // the type; the governor of the others
  ClassAst* cls = nullptr;
  ValueAst* value = nullptr;  // of values and objects
  Range range;                // of sets, with the braces
  // What the resolver finds out.
  State state = State::kNew;
  int number = 0, unique = 0;  // the record, and the place among the definitions of its kind
  TypeNode* type_node = nullptr;
  ValueNode* value_node = nullptr;
};

struct ImportAst {
  std::string_view module;
  int token = 0;
  std::vector<std::pair<std::string_view, int>> symbols;
};

struct Module {
  std::string name;
  std::string file_prefix, generation_prefix;
  SourceFile* file = nullptr;
  const std::vector<Token>* tokens = nullptr;
  int token = 0;
  enum TagDefault : uint8_t { kExplicitTags, kImplicitTags, kAutomaticTags };
  TagDefault tag_default = kExplicitTags;
  bool extensibility_implied = false;
  bool exports_all = true, builtin = false;
  std::vector<std::pair<std::string_view, int>> exports;
  std::vector<ImportAst> imports;
  std::deque<Definition> definitions;
  std::unordered_map<std::string_view, Definition*> by_name;
  std::unordered_map<std::string_view, std::string_view> imported;  // symbol to module
  std::vector<Module*> import_records;                              // record 2 and up
  int types = 0;                                                    // numbered ones

  Place place(int index) const { return Place{file, (*tokens)[index].line, (*tokens)[index].column}; }
};

/// Keeps all nodes of a run alive.
struct Arena {
  std::deque<TypeAst> types;
  std::deque<ValueAst> values;
  std::deque<ConstraintAst> constraints;
  std::deque<ClassAst> classes;
};

}  // namespace mesk
