// Resolves the names of all modules and makes the nodes that are to be written.
//
// First the types of all definitions are made, which only looks through references where it must. Whatever
// needs other types to be there, constraints, defaults, numbers of tags and of named items, waits in a queue
// until all definitions have been made. Values are made when somebody asks for them.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>

#include "mesk/Model.h"
#include "mesk/Parser.h"

namespace mesk {

class Resolver {
 public:
  Resolver(std::vector<std::unique_ptr<Module>>& modules, Arena& arena, Reporter& reporter);

  /// Everything; `entries` are the names of entry types.
  void run(const std::set<std::string>& entries);

  /// The import record of a module in another one, added when it is missing: 1 is the module itself.
  static int importRecord(Module& module, Module& other);

 private:
  // Names
  void declareBuiltins();
  void guarded(const std::function<void()>& action);
  void finishLater();
  void declareModules();
  std::vector<Module*> importedFirst() const;
  void makeDefinitions();
  void importPredefined(const Module& module, const ImportAst& import);
  void linkImports(Module& module);
  void checkImported(const Module& module, const ImportAst& import, const Module& from,
                     std::string_view symbol, int token);
  void checkExports(const Module& module);
  void numberDefinitions(Module& module);
  Module* findModule(std::string_view name) const;
  Definition* find(const RefAst& ref, const Context& context, bool report = true);
  Definition* findIn(Module& module, std::string_view name);
  DefKind kindOf(Definition& definition);
  bool namesClass(const TypeAst& type, const Context& context);
  const Argument* argument(const RefAst& ref, const Context& context) const;
  const Env* bind(const Definition& definition, const RefAst& ref, const Context& context);
  TypeAst* typeOfArgument(const Argument& arg);
  ValueAst* valueOfArgument(const Argument& arg);
  Parser parserAt(const Context& context, int token);

  // Types
  static Context contextOf(const Definition& definition);
  TypeNode* typeOf(Definition& definition);
  TypeNode* newType(const Context& context, int token, TypeNode* parent);
  TypeNode* makeType(const TypeAst& ast, const Context& context, TypeNode* parent, TypeNode* into = nullptr);
  void makeReference(const TypeAst& ast, const Context& context, TypeNode& node);
  void makeStruct(const TypeAst& ast, const Context& context, TypeNode& node);
  void makeFieldType(const TypeAst& ast, const Context& context, TypeNode& node);
  void makeSettingType(const TypeAst& ast, const Context& context, TypeNode& node);
  ClassUse classBeforeFields(const TypeAst& ast, const Context& context, Definition*& set);
  void addValuesLater(Definition& set, std::string_view field, TypeNode& owner);
  void makePlain(const TypeAst& ast, const Context& context, TypeNode& node);
  void checkClassifier(const TypeNode& any, const Context& context, int token);
  void makeSelection(const TypeAst& ast, const Context& context, TypeNode& node);
  void makeClass(Definition& definition, TypeNode& node);
  void addTags(const TypeAst& ast, const Context& context, TypeNode& node, bool dummy);
  void addConstraints(const TypeAst& ast, const Context& context, TypeNode& node);
  struct Expanded {
    const ComponentAst* ast;
    Context context;
    int addition;
  };
  void makeMarker(const Context& context, int token, int before, TypeNode& node);
  TypeNode* makeComponent(const Expanded& part, int number, TypeNode& node);
  void expand(const TypeAst& ast, const Context& context, std::vector<Expanded>& out, bool roots_only,
              bool main_list);
  std::pair<const TypeAst*, Context> structOf(const TypeAst& ast, const Context& context,
                                              asn1::MainType main);
  std::pair<const TypeAst*, Context> lookThrough(const TypeAst& ast, const Context& context);
  void nameItems(TypeNode& node);
  NamedNode makeNamed(const TypeNode& node, size_t index);
  void checkDistinctItems(const TypeNode& node);
  void numberEnumeration(TypeNode& node, std::vector<bool>& numbered);
  /// The type behind references and selections; none where it can't be known.
  TypeNode* base(TypeNode* type);
  TypeNode* plainType(asn1::MainType main);
  TypeNode* importedType(TypeNode* type, const Context& context, int token);

  // Values
  ValueNode* valueOf(Definition& definition);
  void makeValuesBehind(const Definition& definition);
  ValueNode* newValue(const Context& context, int token, TypeNode* type);
  ValueNode* makeValue(const ValueAst& ast, const Context& context, TypeNode* governor);
  void fillValue(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node);
  bool makeItem(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node);
  ValueNode* makeFieldValue(const ValueAst& ast, const Context& context, TypeNode* governor);
  ValueNode* makeArgumentValue(const ValueAst& ast, const Argument& arg, const Context& context,
                               TypeNode* governor);
  void checkCompatible(const ValueAst& ast, const Context& context, const TypeNode& type,
                       const Definition& definition);
  ValueNode* makeReferenceValue(const ValueAst& ast, const Context& context, TypeNode* governor);
  void fillBraces(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node);
  void fillStruct(Parser& parser, int end, const Context& context, TypeNode& type, ValueNode& node);
  size_t nextComponent(Parser& parser, const Context& context, const TypeNode& type, size_t next);
  /// The place of a component by its name, their number where there is none; the component, none where there is none.
  size_t placeOfComponent(const TypeNode& type, std::string_view name);
  TypeNode* componentOf(const TypeNode& type, std::string_view name);
  /// A named number or item; none where there is none.
  const NamedNode* itemOf(TypeNode& type, std::string_view name);
  void checkAllGiven(const std::vector<bool>& given, const Context& context, int token, const TypeNode& type);
  void fillList(Parser& parser, int end, const Context& context, TypeNode& type, ValueNode& node);
  void fillBits(Parser& parser, int end, const Context& context, TypeNode& type, ValueNode& node);
  void fillIdentifier(Parser& parser, int end, const Context& context, ValueNode& node);
  bool standardArc(const Token& word, ValueNode& part, const std::vector<ValueNode*>& before) const;
  void addNamedArcs(const ValueAst& ast, const Context& context, ValueNode& node);
  void checkArcs(const ValueNode& node, const Context& context);
  void fillRealParts(Parser& parser, int end, const Context& context, ValueNode& node);
  void fillCharacters(Parser& parser, int end, const Context& context, TypeNode& type, ValueNode& node);
  void fillReal(const ValueAst& ast, const Context& context, ValueNode& node);
  void fillString(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node);
  void fillTime(const ValueAst& ast, const Context& context, const TypeNode& type, ValueNode& node);
  void fillAlternative(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node);
  bool setCharacters(std::vector<uint32_t> characters, TypeNode& type, ValueNode& node, const Place& place);
  void mismatch(const ValueAst& ast, const Context& context, const TypeNode& type);
  std::optional<int64_t> integerOf(const ValueAst& ast, const Context& context, const char* what);
  const ValueNode* behind(const ValueNode* value);
  std::optional<asn1::Wide> literal(const ValueAst& ast, const Context& context);

  // Constraints
  ConstraintNode* makeConstraint(const ConstraintAst& ast, const Context& context, TypeNode& owner,
                                 TypeNode* governor);
  void refuseUnless(bool fits, const char* what, const ConstraintAst& ast, const Context& context,
                    const TypeNode* type);
  ConstraintNode* makeContained(const ConstraintAst& ast, const Context& context, TypeNode& owner,
                                TypeNode* governor, ConstraintNode& node);
  void makePattern(const ConstraintAst& ast, const Context& context, ConstraintNode& node);
  void fillWithComponents(const ConstraintAst& ast, const Context& context, TypeNode& owner,
                          TypeNode* governor, ConstraintNode& node);
  ConstraintNode* fillTable(const ConstraintAst& ast, const Context& context, TypeNode& owner);
  bool fillPath(const AtPath& path, const Context& context, TypeNode& owner, ConstraintNode& node);
  void checkRange(const ConstraintAst& ast, const Context& context, const ConstraintNode& node);

  // Objects
  ClassUse classOf(const TypeAst& type, const Context& context);
  ClassUse classOf(const RefAst& ref, const Context& context);
  ClassUse classOf(Definition& definition);
  const FieldAst* findField(const ClassUse& cls, std::string_view name, const Place& place);
  TypeNode* fieldNode(const ClassUse& cls, const FieldAst& field);
  TypeNode* classFieldHere(const ClassUse& cls, const FieldAst& field, const Context& context, int token);
  ValueNode* makeObject(const ValueAst& ast, const Context& context, const ClassUse& cls, TypeNode* governor);
  /// Whether a field of an object has a setting already.
  bool isSet(const ValueNode& object, const FieldAst& field);
  void fillObject(Range range, const Context& context, const ClassUse& cls, ValueNode& node);
  bool fillSyntax(const std::vector<SyntaxAst>& syntax, Parser& parser, int end, const Context& context,
                  const ClassUse& cls, ValueNode& node, bool optional);
  ValueNode* typeSetting(const Context& context, int token, TypeNode* type);
  ValueNode* valueSetting(Parser& parser, const FieldAst& field, const Context& context, const ClassUse& cls);
  ConstraintAst* parseValueSet(Parser& parser, const Context& context);
  ValueNode* setSetting(Parser& parser, const FieldAst& field, const Context& context, const ClassUse& cls);
  ValueNode* variableSetting(Parser& parser, const FieldAst& field, const Context& context,
                             const ValueNode& object);
  ValueNode* makeSetting(Parser& parser, const FieldAst& field, const Context& context, const ClassUse& cls,
                         const ValueNode& object);
  bool isTranslated(const TypeAst& type, const Context& context);
  const Argument* typeArgument(const RefAst& ref, const Context& context);
  int instanceNumber(const Env* env);
  struct Written {
    const TypeAst* type;
    Range range;
    Context context;
    bool is_argument;
  };
  Written actualType(Written written);
  static bool hasParameter(const Written& written);
  Definition& declare(const Written& written, const std::string& base);
  const TypeAst* declared(const Written& written, const FieldAst& field);
  void fillField(Parser& parser, const FieldAst& field, const Context& context, const ClassUse& cls,
                 ValueNode& node);
  ValueNode* makeObjectSet(Range range, const Context& context, const ClassUse& cls, TypeNode* governor);
  void addObjectSetElements(Parser& parser, int end, const Context& context, const ClassUse& cls,
                            ValueNode& node);
  void addObjectsOfFields(const ValueNode& set, const std::vector<std::string_view>& fields,
                          const Context& context, int token, const ClassUse& cls, ValueNode& node);
  ValueNode* objectSetFor(const RefAst& ref, const Context& context);
  const ValueNode* objectOf(const RefAst& ref, const Context& context, ClassUse& cls);
  const ValueNode* settingOf(const RefAst& ref, const std::vector<std::string_view>& fields,
                             const Context& context);
  ValueNode* defaultSetting(const ClassUse& cls, std::string_view name);
  void collectObjects(const ValueNode* set, std::vector<const ValueNode*>& objects);
  void addValuesOfSet(Definition& set, std::string_view field, TypeNode& type);
  TypeNode* classReference(const ClassUse& cls, const Context& context, int token);

  // Checks
  void settleTags(TypeNode& node);
  bool needsExplicitTag(TypeNode* type);
  void checkFinite();
  bool isFinite(TypeNode& node);
  void checkDistinctTags(TypeNode& node);
  struct TagSet;
  void outermostTags(TypeNode& node, TagSet& set, int depth);
  void markRecursive();

  Place placeOf(const Context& context, int token) const { return context.module->place(token); }
  void error(const Context& context, int token, const std::string& text) {
    reporter_.error(placeOf(context, token), text);
  }

  std::vector<std::unique_ptr<Module>>& modules_;
  Arena& arena_;
  Reporter& reporter_;
  std::unordered_map<std::string_view, Module*> module_names_;
  SourceFile builtin_file_;
  std::vector<Token> builtin_tokens_;
  std::vector<std::unique_ptr<Module>> builtin_modules_;

  std::deque<Env> envs_;
  std::deque<TypeNode> types_;
  std::deque<ValueNode> values_;
  std::deque<ConstraintNode> constraints_;
  std::deque<std::function<void()>> later_;
  std::vector<const TypeAst*> expansions_;  // of COMPONENTS OF
  std::unordered_map<int, TypeNode*> plain_types_;
  std::map<std::pair<Module*, TypeNode*>, TypeNode*> imported_types_;
  std::map<std::pair<Module*, const FieldAst*>, TypeNode*> foreign_fields_;
  std::unordered_map<const TypeNode*, bool> finite_;
  std::unordered_map<const TypeNode*, TypeNode*> bases_;  // of references
  // What object fields were set to, for those who use it elsewhere.
  std::unordered_map<const ValueNode*, std::pair<const TypeAst*, Context>> type_settings_;
  std::unordered_map<const ValueNode*, std::pair<const ValueAst*, Context>> value_settings_;
  std::unordered_map<const FieldAst*, TypeNode*> field_nodes_;
  // Names made for types that stand within objects, which then refer to them.
  std::map<std::pair<const Module*, std::string>, const TypeAst*> declared_;
  std::map<const Env*, int> instance_numbers_;
  std::map<std::string, int> instances_;
  std::map<std::pair<const Module*, std::string>, int> same_names_;
  std::deque<std::string> made_names_;
  std::set<std::string> entries_;
  Module* current_ = nullptr;  // whose definitions are being made
  TypeNode* current_definition_ = nullptr;
  NamePlaces places_;
  int depth_ = 0, expansion_steps_ = 0;
  bool abandoned_ = false;  // some definition was left after an error
};

/// Text for messages: the name of a main type in ASN.1.
const char* asn1Name(asn1::MainType main);
std::string inQuotes(std::string_view name);

}  // namespace mesk
