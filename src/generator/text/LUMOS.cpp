#include "generator/text/LUMOS.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <optional>
#include <set>
#include <unordered_map>

#include "FileAPI/CBase.h"
#include "analysis/names/T3Imports.h"
#include "analysis/names/T3Names.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3Lists.h"
#include "generator/text/CGKeptTexts.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"
#include "support/ModuleCaches.h"
#include "support/FormatText.h"

namespace {
// The report of a name that is asked for on a node of another kind; it does not return, whatever the type
// of the name.
[[noreturn]] std::string WrongNode(int line, const char* function, T3Tree_Node* node) {
  internal_error_ast("LUMOS", line, function, node);
}
#define WRONG_NODE(node) WrongNode(__LINE__, __func__, node)

std::string_view Text(tIdent ident) {
  return gIdents.GetString(ident);
}

// Names in C are made of those of modules and declarations, and words. Those of two types may coincide: of c in a module
// A_b and of b_c in a module A, or in one module those of a component x and of a type x_component; so may those of two
// templates. Then the one that has more of it in its own name gets a number.
T3Tree_Node* FindDeclared(tIdent module, std::string_view name) {
  const auto found = gT3ModuleMap.find(module);
  return found == gT3ModuleMap.end() ? nullptr : FindDeclInModule(found->second, gIdents.MakeIdent(name));
}

// The modules of the run whose names are the beginning of another's, up to an underscore, and what is left of it.
using Shorter = std::vector<std::pair<tIdent, std::string_view>>;
struct {
  tIdent module = NoIdent;
  Shorter shorter;
} g_last_module;
const ModuleCache last_module([] { g_last_module.module = NoIdent; });

const Shorter& ShorterThan(tIdent module) {
  auto& [last, shorter] = g_last_module;
  if (last == module) return shorter;
  last = module;
  shorter.clear();
  const std::string_view name = Text(module);
  for (size_t at = name.find('_'); at != std::string_view::npos; at = name.find('_', at + 1)) {
    const tIdent before = gIdents.MakeIdent(name.substr(0, at));
    if (gT3ModuleMap.count(before) != 0) shorter.emplace_back(before, name.substr(at + 1));
  }
  return shorter;
}

// What is left before a word that a C name has behind that of its declaration.
std::string_view WithoutWord(std::string_view name) {
  for (const std::string_view word : {"_component", "_port_record", "_local"})
    if (name.ends_with(word)) return name.substr(0, name.size() - word.size());
  return {};
}

// Whether there may be declarations with the same names in C.
bool MayCoincide(T3Tree_Node* decl, std::string_view name) {
  if (decl->place == nullptr || !(decl->is<T3TypeDecl>() || decl->is<T3TemplateDecl>())) return false;
  return !ShorterThan(decl->place->vexa_module_name).empty() || !WithoutWord(name).empty();
}

bool IsTaken(T3Tree_Node* decl, std::string_view name) {
  const tIdent module = decl->place->vexa_module_name;
  const std::string_view without = decl->is<T3TypeDecl>() ? WithoutWord(name) : std::string_view();
  T3Tree_Node* of_words = without.empty() ? nullptr : FindDeclared(module, without);
  if (T3Is<T3TypeDecl>(of_words) || (of_words != nullptr && of_words->is<_T3FunctionDecl>())) return true;
  const Shorter& shorter = ShorterThan(module);
  return std::any_of(shorter.begin(), shorter.end(), [&](const auto& other) {
    T3Tree_Node* found = FindDeclared(other.first, joined({other.second, "_", name}));
    return found != nullptr && found->kind == decl->kind;
  });
}

std::string DistinctName(T3Tree_Node* decl, std::string_view name) {
  if (!IsTaken(decl, name)) return std::string(name);
  for (int number = 2;; ++number) {
    const std::string other = joined({name, "_", std::to_string(number)});
    if (!IsTaken(decl, other) && !T3Is<_T3Decl>(FindDeclared(decl->place->vexa_module_name, other))) return other;
  }
}

CGKeptTexts& g_distinct = *new CGKeptTexts;
const ModuleCache distinct_names([] { g_distinct.clear(); });

std::string_view NameOf(T3Tree_Node* decl) {
  const std::string_view name = Text(DeclaredName(decl));
  if (!MayCoincide(decl, name)) return name;
  return g_distinct.Of(decl->number, [&] { return DistinctName(decl, name); });
}

// Whether another module's parameters are initialized by the name of the module's own initialization.
bool IsInitializedAsParameters(tIdent module) {
  const Shorter& shorter = ShorterThan(module);
  return !shorter.empty() && shorter.back().second == "params";
}

// A built-in declaration belongs to the module being generated.
std::string_view ModuleOf(T3Tree_Node* decl) {
  if (decl->place == nullptr && gT3Context.currentModuleName() != NoIdent)
    return Text(gT3Context.currentModuleName());
  if (decl->place == nullptr) internal_error_ast("LUMOS", __LINE__, "vexa_module_name", decl);
  if (decl->is<T3TypeDecl>()) gT3Context.noteModule(decl->place->vexa_module_name);
  return Text(decl->place->vexa_module_name);
}

// module "_" name, which the user knows where it is that of an external object.
std::string ExternalName(T3Tree_Node* decl) {
  return joined({ModuleOf(decl), "_", Text(DeclaredName(decl))});
}

std::string Qualified(T3Tree_Node* decl) {
  return joined({ModuleOf(decl), "_", NameOf(decl)});
}

T3Tree_Node* DeclBehind(T3Tree_Node* import) {
  T3Tree_Node* origin = import->as<_T3ImportDecl>()->attr().def_aux;
  if (!T3Is<_T3Decl>(origin)) internal_error_ast("LUMOS", __LINE__, "def_aux", import);
  return origin;
}

// The declarations behind the names that imports have in the module, and those names.
auto& g_owners = *new std::unordered_map<std::string, T3Tree_Node*>;
CGKeptTexts& g_imports = *new CGKeptTexts;
CGKeptTexts& g_origins = *new CGKeptTexts;
const ModuleCache imports([] {
  g_owners.clear();
  g_imports.clear();
  g_origins.clear();
});

bool IsOwnName(const std::string& name, T3Tree_Node* origin) {
  return g_owners.try_emplace(name, origin).first->second == origin;
}

// module "_" name of the declaration behind an import, with a number where another of the module's imports has that.
std::string_view Origin(T3Tree_Node* decl) {
  return g_origins.Of(decl->number, [decl] {
    T3Tree_Node* origin = DeclBehind(decl);
    const std::string name = Qualified(origin);
    std::string distinct = name;
    for (int number = 2; !IsOwnName(" " + distinct, origin); ++number)
      distinct = joined({name, "_", std::to_string(number)});
    return distinct;
  });
}

// The module's own name for an import, unless it imports the same name from another module as well: then it
// is that of the declaration.
std::string_view QualifiedImport(T3Tree_Node* decl) {
  return g_imports.Of(decl->number, [decl] {
    std::string name = Qualified(decl);
    return IsOwnName(name, DeclBehind(decl)) ? name : joined({ModuleOf(decl), "_", Origin(decl)});
  });
}

bool IsImportOf(T3Tree_Node* decl) {
  return decl->is<T3ImportTypeDecl>() || decl->is<T3ImportSignatureDecl>();
}

bool IsAssigned(const char* location) {
  return location != nullptr && *location != '\0' && std::strcmp(location, vexa_location_not_allocated) != 0;
}

std::string OfModule(const char* before, tIdent module, const char* behind) {
  return joined({before, Text(module), behind});
}

std::string OfType(int line, const char* function, T3Tree_Node* decl, std::string_view behind) {
  if (!decl->is<T3TypeDecl>()) WrongNode(line, function, decl);
  return joined({"vexa_", NameOf(decl), behind});
}
#define OF_TYPE(decl, behind) OfType(__LINE__, __func__, decl, behind)

// Names that many rows and statements say.
CGKeptTexts& g_quoted = *new CGKeptTexts;
CGKeptTexts& g_type_constants = *new CGKeptTexts;
CGKeptTexts& g_type_structs = *new CGKeptTexts;
CGKeptTexts& g_template_structs = *new CGKeptTexts;
const ModuleCache kept_names([] {
  for (CGKeptTexts* names : {&g_quoted, &g_type_constants, &g_type_structs, &g_template_structs})
    names->clear();
});

// A template has many names, which are asked for one after the other: what the last one's begin with.
struct {
  T3Tree_Node* decl = nullptr;
  std::string name;
} g_last_template;
const ModuleCache last_template([] { g_last_template.decl = nullptr; });

std::string OfTemplate(int line, const char* function, T3Tree_Node* decl, std::string_view mode,
                       std::string_view behind) {
  if (!decl->is<T3TemplateDecl>()) WrongNode(line, function, decl);
  auto& [last, name] = g_last_template;
  if (decl != last) name = joined({NameOf(decl), PositionSuffix(decl->as<T3TemplateDecl>()->position)});
  last = decl;
  return joined({"vexa_", name, mode, behind});
}
#define OF_TEMPLATE(decl, mode, behind) OfTemplate(__LINE__, __func__, decl, mode, behind)

const char* ModeWord(vexa_template_mode_t mode) {
  switch (mode) {
    case vexa_template_call:
      return "_call";
    case vexa_template_reply:
      return "_reply";
    case vexa_template_plain:
      break;
  }
  return "";
}

const char* AttributeWord(t3_with_attribute_t kind) {
  switch (kind) {
    case t3_with_attribute_t::Display:
      return "display";
    case t3_with_attribute_t::Encode:
      return "encode";
    case t3_with_attribute_t::Variant:
      return "variant";
    case t3_with_attribute_t::Extension:
      return "extension";
  }
  return "UNKNOWN";
}

bool IsBehaviour(T3Tree_Node* decl) {
  return decl->is<_T3FunctionDecl>();
}

bool IsImportedBehaviour(T3Tree_Node* decl) {
  return decl->is<T3ImportFunctionDecl>() || decl->is<T3ImportTestcaseDecl>() ||
         decl->is<T3ImportTeststepDecl>();
}

std::string OfBehaviour(int line, const char* function, T3Tree_Node* decl, std::string_view behind) {
  if (IsBehaviour(decl)) return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), "_local_", behind});
  if (IsImportedBehaviour(decl)) return joined({"vexa_", QualifiedImport(decl), "_imp_", behind});
  WrongNode(line, function, decl);
}
#define OF_BEHAVIOUR(decl, behind) OfBehaviour(__LINE__, __func__, decl, behind)

std::string OfSignature(int line, const char* function, T3Tree_Node* decl, std::string_view behind) {
  if (decl->is<T3TypeDecl>()) return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), "_local_", behind});
  if (decl->is<T3ImportSignatureDecl>()) return joined({"vexa_", QualifiedImport(decl), "_imp_", behind});
  return OfBehaviour(line, function, decl, behind);
}
#define OF_SIGNATURE(decl, behind) OfSignature(__LINE__, __func__, decl, behind)
}  // namespace

std::string PositionSuffix(const tPosition& position) {
  return joined({"_", std::to_string(position.Line), "_", std::to_string(position.Column)});
}

std::string ModuleInitializeName(tIdent module) {
  return OfModule("vexa_", module, IsInitializedAsParameters(module) ? "_initialize_2" : "_initialize");
}

std::string NumberedNamesOfRun() {
  std::set<std::string> names;
  for (const auto& [module, node] : gT3ModuleMap) {
    if (ShorterThan(module).empty() || !node->is<T3Module>()) continue;
    if (IsInitializedAsParameters(module)) names.emplace(Text(module));
    for (auto* decl : DeclsInGroups(node->as<T3Module>()->definition_part))
      if (MayCoincide(decl, Text(decl->name)) && IsTaken(decl, Text(decl->name))) names.insert(ExternalName(decl));
  }
  std::string all;
  for (const std::string& name : names) all += "N" + name;
  return all;
}

std::string ModuleParamsInitializeName(tIdent module) {
  return OfModule("vexa_", module, "_params_initialize");
}

std::string ModuleFinalizeName(tIdent module) {
  return OfModule("vexa_", module, "_finalize");
}

std::string ModuleRegisterName(tIdent module) {
  return OfModule("vexa_", module, "_register");
}

std::string ModuleRegisterCodecsName(tIdent module) {
  return OfModule("t3asn_", module, "_register_codecs");
}

std::string VEXAInitFunctionGuard(tIdent module) {
  return OfModule("vexa_", module, "_is_initialized");
}

std::string VEXAFinalizeFunctionGuard(tIdent module) {
  return OfModule("vexa_", module, "_is_finalized");
}

std::string VEXARegisterFunctionGuard(tIdent module) {
  return OfModule("vexa_", module, "_is_registered");
}

std::string VEXAModuleParamsInitializeFunctionGuard(tIdent module) {
  return OfModule("vexa_", module, "_mod_params_initialized");
}

std::string VEXAModuleParamsInfoName(T3Tree_Node* module) {
  if (!module->is<T3Module>()) return WRONG_NODE(module);
  return OfModule("vexa_", module->as<T3Module>()->name, "_module_params_info");
}

std::string VEXAModuleParameterName(tIdent a, tIdent b) {
  return joined({"vexa_", Text(a), "_", Text(b), "_module_params_storage"});
}

namespace {
constexpr std::string_view kLocal = "_loc_";

bool IsWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Takes the number off the text that stands behind `before`, where both are a local variable's name.
std::optional<long> TakeLocalNumber(std::string_view before, std::string_view& text) {
  size_t begin = before.size();
  while (begin > 0 && IsWordCharacter(before[begin - 1])) --begin;
  long number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || (rest != end && IsWordCharacter(*rest))) return std::nullopt;
  if (!before.substr(begin).starts_with("vexa_")) return std::nullopt;
  text.remove_prefix(static_cast<size_t>(rest - text.data()));
  return number;
}
}  // namespace

std::string VEXALocalVarName(tIdent name) {
  static unsigned long counter = 0;
  return joined({"vexa_", Text(name), kLocal, std::to_string(counter++)});
}

bool IsSameCode(std::string_view a, std::string_view b) {
  std::optional<long> shift;
  for (;;) {
    const size_t at = a.find(kLocal);
    if (at != b.find(kLocal) || a.substr(0, at) != b.substr(0, at)) return false;
    if (at == std::string_view::npos) return true;
    const std::string_view before = a.substr(0, at);
    a.remove_prefix(at + kLocal.size());
    b.remove_prefix(at + kLocal.size());
    const auto left = TakeLocalNumber(before, a);
    const auto right = TakeLocalNumber(before, b);
    if (left.has_value() != right.has_value()) return false;
    if (left && shift.value_or(*right - *left) != *right - *left) return false;
    if (left) shift = *right - *left;
  }
}

namespace {
std::string MakeTypeConstName(T3Tree_Node* decl) {
  if (decl->is<T3TypeDecl>()) return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), "_local_type"});
  if (decl->is<T3ImportTypeDecl>()) return joined({"vexa_", QualifiedImport(decl), "_imp_type"});
  if (decl->is<T3ImportSignatureDecl>()) return joined({"vexa_", QualifiedImport(decl), "_imp_sig"});
  return WRONG_NODE(decl);
}

std::string MakeTypeStructName(T3Tree_Node* decl) {
  if (!decl->is<T3TypeDecl>() && !IsImportOf(decl)) return WRONG_NODE(decl);
  if (IsImportOf(decl)) {
    if (IsAsnNullType(decl->as<_T3ImportDecl>()->attr().def_aux)) return "t3asn_asn_1_null_type_struct";
    return joined({"vexa_imp_type_", ModuleOf(decl), "_", Origin(decl)});
  }
  const auto asn1 = decl->HasCold() ? StringM::StGetString(decl->as<T3TypeDecl>()->cold().mesk_ref_name)
                                    : std::string_view();
  return joined({"vexa_", ModuleOf(decl), "_", asn1.empty() ? NameOf(decl) : asn1, "_type_struct"});
}
}  // namespace

std::string_view VEXATypeConstName(T3Tree_Node* decl) {
  return g_type_constants.Of(decl->number, [decl] { return MakeTypeConstName(decl); });
}

std::string_view VEXATypeName(T3Tree_Node* decl) {
  if (!decl->is<T3PortDecl>()) return VEXATypeStructName(decl);
  return g_type_structs.Of(decl->number, [decl] { return joined({"vexa_", NameOf(decl), "_port"}); });
}

std::string_view VEXATypeStructName(T3Tree_Node* decl) {
  const bool is_type = decl->is<T3TypeDecl>() || IsImportOf(decl);
  if (is_type && decl->HasCold() && IsAssigned(decl->as<_T3Decl>()->cold().type_struct_name))
    return decl->as<_T3Decl>()->cold().type_struct_name;
  return g_type_structs.Of(decl->number, [decl] { return MakeTypeStructName(decl); });
}

std::string VEXAFieldInfoName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_field_info");
}

std::string VEXAEnumInfoName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_enum_info");
}

std::string VEXAArrayInfoName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_array_info");
}

std::string VEXATypeInfoStructName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_type_info_struct");
}

std::string VEXACheckName(T3Tree_Node* decl) {
  if (decl->is<T3TypeDecl>() && decl->HasCold() && IsAssigned(decl->as<T3TypeDecl>()->cold().check_func_name))
    return decl->as<T3TypeDecl>()->cold().check_func_name;
  return OF_TYPE(decl, "_check");
}

std::string VEXAConstraintOfName(T3Tree_Node* decl) {
  if (decl->is<T3TemplateDecl>()) return OF_TEMPLATE(decl, "", "_constraintof");
  if (decl->is<T3TypeDecl>() && decl->HasCold() &&
      IsAssigned(decl->as<T3TypeDecl>()->cold().constraintof_func_name))
    return decl->as<T3TypeDecl>()->cold().constraintof_func_name;
  return OF_TYPE(decl, "_constraintof");
}

std::string VEXAPortRecordName(T3Tree_Node* decl) {
  if (!decl->is<T3TypeDecl>()) return WRONG_NODE(decl);
  return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), "_port_record_type"});
}

std::string VEXAPortRecordInfoStructName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_port_record_info_struct");
}

std::string VEXAPortRecordFieldInfoName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_port_record_field_info");
}

std::string VEXAComponentRecordName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_component_record_type");
}

std::string VEXAComponentRecordInfoStructName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_component_record_info_struct");
}

std::string VEXAComponentRecordFieldInfoName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_component_field_info");
}

std::string VEXAComponentPostProcessFuncName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_postprocess_func");
}

std::string VEXAAttributesName(T3Tree_Node* decl, t3_with_attribute_t kind) {
  if (decl->is<T3TypeDecl>())
    return joined(
        {"vexa_", ModuleOf(decl), "_", NameOf(decl), "_local_", AttributeWord(kind), "_attributes"});
  if (decl->is<T3ImportTypeDecl>() || decl->is<T3ImportSignatureDecl>())
    return joined({"vexa_", ModuleOf(decl), "_", Origin(decl), AttributeWord(kind), "_attributes"});
  return WRONG_NODE(decl);
}

std::string VEXABuiltinTypeName(T3Tree_Node* decl) {
  if (!decl->is<T3TypeDecl>()) return WRONG_NODE(decl);
  return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), "_builtin_type"});
}

std::string VEXABuiltinTypeStructName(T3Tree_Node* decl) {
  if (!decl->is<T3TypeDecl>()) return WRONG_NODE(decl);
  return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), "_builtin_type_struct"});
}

std::string VEXABuiltinTypeInfoStructName(T3Tree_Node* decl) {
  if (!decl->is<T3TypeDecl>()) return WRONG_NODE(decl);
  return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), "_builtin_type_info_struct"});
}

std::string VEXABuiltinFieldInfoName(T3Tree_Node* decl) {
  return OF_TYPE(decl, "_builtin_field_info");
}

std::string VEXARTSTypeInfoStructName(T3Tree_Node* type) {
  const char* word = nullptr;
  switch (type->kind) {
    case T3Kind::T3Integer:
      word = "integer";
      break;
    case T3Kind::T3Float:
      word = "float";
      break;
    case T3Kind::T3Boolean:
      word = "boolean";
      break;
    case T3Kind::T3ObjectIdentifierType:
      word = "objectidentifier";
      break;
    case T3Kind::T3VerdictType:
      word = "verdicttype";
      break;
    case T3Kind::T3BitStringType:
      word = "bitstring";
      break;
    case T3Kind::T3OctetStringType:
      word = "octetstring";
      break;
    case T3Kind::T3HexStringType:
      word = "hexstring";
      break;
    case T3Kind::T3CharStringType:
      word = "charstring";
      break;
    case T3Kind::T3UniversalCharStringType:
      word = "universal_charstring";
      break;
    case T3Kind::T3TimerType:
      word = "timer";
      break;
    case T3Kind::T3CharacterType:
      word = "char";
      break;
    case T3Kind::T3UniversalCharacterType:
      word = "universal_char";
      break;
    case T3Kind::T3Address:
      word = "address";
      break;
    case T3Kind::T3Default:
      word = "default";
      break;
    default:
      return WRONG_NODE(type);
  }
  return joined({"lumo_", word, "_type_info_struct"});
}

std::string VEXATemplateConstName(T3Tree_Node* decl) {
  if (decl->is<T3ImportTemplateDecl>()) return joined({"vexa_", QualifiedImport(decl), "_imp_template"});
  if (!decl->is<T3TemplateDecl>()) return WRONG_NODE(decl);
  auto* local = decl->as<T3TemplateDecl>();
  const std::string suffix =
      local->attr().vexa_place > kAtModuleLevel ? PositionSuffix(local->position) : std::string();
  return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), suffix, "_local_template"});
}

namespace {
std::string MakeTemplateTypeStructName(T3Tree_Node* decl) {
  if (decl->is<T3ImportTemplateDecl>())
    return joined({"vexa_", ModuleOf(decl), "_imp_template_", Origin(decl)});
  if (!decl->is<T3TemplateDecl>()) return WRONG_NODE(decl);
  const std::string suffix = PositionSuffix(decl->as<T3TemplateDecl>()->position);
  return joined({"vexa_", ModuleOf(decl), "_", NameOf(decl), suffix, "_type_struct"});
}
}  // namespace

std::string_view VEXATemplateTypeStructName(T3Tree_Node* decl) {
  return g_template_structs.Of(decl->number, [decl] { return MakeTemplateTypeStructName(decl); });
}

std::string VEXATemplateRef(T3Tree_Node* decl) {
  return VEXATemplateConstName(decl);
}

std::string VEXASizeOfName(T3Tree_Node* decl) {
  return OF_TEMPLATE(decl, "", "_sizeof");
}

std::string VEXAMatchName(T3Tree_Node* decl, vexa_template_mode_t mode) {
  return OF_TEMPLATE(decl, ModeWord(mode), "_match");
}

std::string VEXAValueOfName(T3Tree_Node* decl, vexa_template_mode_t mode) {
  return OF_TEMPLATE(decl, ModeWord(mode), "_valueof");
}

std::string VEXATemplateFieldInfoName(T3Tree_Node* decl) {
  return OF_TEMPLATE(decl, "", "_field_info");
}

std::string VEXATemplateTypeInfoStructName(T3Tree_Node* decl) {
  return OF_TEMPLATE(decl, "", "_type_info_struct");
}

std::string VEXATemplateInfoName(T3Tree_Node* decl) {
  return OF_TEMPLATE(decl, "", "_template_info");
}

std::string VEXAFunctionName(T3Tree_Node* decl) {
  if (decl->is<T3Function>()) return joined({"vexa_", NameOf(decl), "_func"});
  if (decl->is<T3ImportFunctionDecl>()) return joined({"vexa_imp_func_", Origin(decl)});
  return WRONG_NODE(decl);
}

std::string VEXATestcaseName(T3Tree_Node* decl) {
  if (decl->is<T3Testcase>()) return joined({"vexa_", NameOf(decl), "_testcase"});
  if (decl->is<T3ImportTestcaseDecl>()) return joined({"vexa_imp_tc_", Origin(decl)});
  return WRONG_NODE(decl);
}

std::string VEXATeststepName(T3Tree_Node* decl) {
  if (decl->is<T3TestStep>()) return joined({"vexa_", NameOf(decl), "_teststep"});
  if (decl->is<T3ImportTeststepDecl>()) return joined({"vexa_imp_ts_", Origin(decl)});
  return WRONG_NODE(decl);
}

std::string VEXAExtObjectName(T3Tree_Node* decl) {
  if (decl->is<T3ExtFunction>()) return ExternalName(decl) + "_stub";
  if (decl->is<T3ExtConstDecl>()) return ExternalName(decl);
  return WRONG_NODE(decl);
}

std::string VEXAExtFuncName(T3Tree_Node* decl) {
  return decl->is<T3ExtFunction>() ? ExternalName(decl) : WRONG_NODE(decl);
}

std::string VEXAExtFuncCompileSwitchName(T3Tree_Node* decl) {
  if (!decl->is<T3ExtFunction>()) return WRONG_NODE(decl);
  return joined({"EXT_FUNC_BYPASS_TRI_", ExternalName(decl), "_func"});
}

std::string VEXAConstName(T3Tree_Node* decl) {
  if (decl->is<T3ConstDecl>()) return joined({"vexa_loc_const_", ModuleOf(decl), "_", NameOf(decl)});
  if (decl->is<T3ImportConstDecl>()) return joined({"vexa_imp_const_", Origin(decl)});
  if (decl->is<T3ImportModuleParDecl>()) return joined({"vexa_imp_modulepar_", Origin(decl)});
  return WRONG_NODE(decl);
}

std::string VEXAModuleParName(T3Tree_Node* decl) {
  return decl->is<T3ModuleParDecl>() ? joined({"vexa_loc_mod_par_", ModuleOf(decl), "_", NameOf(decl)})
                                     : WRONG_NODE(decl);
}

std::string VEXAExtConstName(T3Tree_Node* decl) {
  return decl->is<T3ExtConstDecl>() ? "vexa_ext_const_" + ExternalName(decl) : WRONG_NODE(decl);
}

std::string VEXAControlPartFunctionName() {
  return "control_part_func";
}

std::string VEXAFuncTypeStructName(T3Tree_Node* decl) {
  return OF_BEHAVIOUR(decl, "type_struct");
}

std::string VEXAFuncTypeInfoName(T3Tree_Node* decl) {
  return OF_BEHAVIOUR(decl, "type_info_struct");
}

std::string VEXAFuncTypeFieldInfoName(T3Tree_Node* decl) {
  return OF_BEHAVIOUR(decl, "type_field_info");
}

std::string VEXASignatureStructName(T3Tree_Node* decl) {
  return OF_SIGNATURE(decl, "signature_struct");
}

std::string VEXASignatureInfoName(T3Tree_Node* decl) {
  return OF_SIGNATURE(decl, "signature_info_struct");
}

std::string VEXASignatureFieldInfoName(T3Tree_Node* decl) {
  return OF_SIGNATURE(decl, "signature_field_info");
}

std::string GetFunctionObject(T3Tree_Node* decl) {
  if (decl->is<T3Function>()) return VEXAFunctionName(decl);
  if (decl->is<T3ExtFunction>()) return VEXAExtObjectName(decl);
  // an import is held through a pointer
  if (decl->is<T3ImportFunctionDecl>()) return joined({"(*", VEXAFunctionName(decl), ")"});
  return WRONG_NODE(decl);
}

std::string GetTeststepObject(T3Tree_Node* decl) {
  if (decl->is<T3TestStep>()) return VEXATeststepName(decl);
  if (decl->is<T3ImportTeststepDecl>()) return joined({"(*", VEXATeststepName(decl), ")"});
  return WRONG_NODE(decl);
}

namespace {
// The place behind a piece of a C string that must not be cut: an escape sequence, or the break that keeps a
// trigraph apart.
size_t BehindPiece(const std::string& text, size_t at) {
  const auto is_octal = [&](size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '7'; };
  if (text.compare(at, 3, "\" \"") == 0) return at + 3;
  if (text[at] != '\\') return at + 1;
  size_t end = at + 1;
  while (end < at + 4 && is_octal(end)) ++end;
  return std::max(end, at + 2);
}
}  // namespace

// A cut never falls behind a backslash, and moves on where it would take a piece apart.
std::string SliceString(const std::string& text, size_t n) {
  std::string sliced;
  size_t begin = 0;
  size_t piece = 0;
  while (n > 0 && text.size() - begin > n) {
    const size_t cut = begin + n + (text[begin + n - 1] == '\\' ? 1 : 0);
    while (piece < cut) piece = BehindPiece(text, piece);
    if (piece >= text.size()) break;
    sliced.append(text, begin, piece - begin).append("\"\n\"");
    begin = piece;
  }
  return sliced.append(text, begin);
}

std::string Quote(std::string_view text) {
  return joined({"\"", text, "\""});
}

std::string_view Quote(tIdent name) {
  return g_quoted.Of(static_cast<uint64_t>(name), [name] { return Quote(Text(name)); });
}

std::string EscapeEscape(const std::string& text) {
  std::string result;
  size_t begin = 0;
  for (size_t at = text.find('\\'); at != std::string::npos; at = text.find('\\', at + 1)) {
    result.append(text, begin, at - begin).append("\\");
    begin = at;
  }
  return result.append(text, begin);
}

std::string InLiteral(const std::string& source) {
  std::string text;
  size_t begin = 0;
  for (size_t at = 0; at < source.size(); ++at) {
    const bool makes_trigraph = source[at] == '?' && at > 0 && source[at - 1] == '?';
    if (source[at] != '"' && !makes_trigraph) continue;
    text.append(source, begin, at - begin).append(makes_trigraph ? "\" \"" : "\\");
    begin = at;
  }
  return text.append(source, begin);
}

std::string CStringOfLiteral(std::string_view literal) {
  if (literal.size() >= 2 && literal.front() == '"' && literal.back() == '"')
    literal = literal.substr(1, literal.size() - 2);
  std::string text;
  for (const char c : literal) {
    if (c == '"' || c == '\\')
      text.append(1, '\\').append(1, c);
    else if (static_cast<unsigned char>(c) < ' ')
      text += FormatText("\\%03o", static_cast<unsigned>(c));
    else if (c == '?' && !text.empty() && text.back() == '?')
      text += "\" \"?";  // no trigraph
    else
      text += c;
  }
  return Quote(text);
}

std::string FormalPar(std::string_view type, std::string_view name) {
  return joined({type, " ", name});
}
