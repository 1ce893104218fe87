#include "generator/CGTemplate.h"

#include <algorithm>

#include "analysis/T3References.h"
#include "analysis/T3Subtree.h"
#include "analysis/T3TemplateMerge.h"
#include "analysis/T3Types.h"
#include "driver/T3CommandLine.h"
#include "driver/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/CGCalls.h"
#include "generator/CGConstraint.h"
#include "generator/CGExpressionParts.h"
#include "generator/CGModule.h"
#include "generator/CGStatement.h"
#include "generator/CGTypeAccess.h"
#include "generator/CGTypeTables.h"
#include "generator/CLocations.h"
#include "generator/T3CodeDefs.h"
#include "generator/T3Context.h"
#include "generator/T3Decompile.h"

namespace {
constexpr size_t kDescriptionLine = 2000;

T3TemplateDef* DefinitionOf(T3TemplateDecl* decl) {
  auto* definition = decl->definition->try_as<T3TemplateDef>();
  if (definition == nullptr) cg::NotSupported(decl);
  return definition;
}

T3Tree_Node* TypeOfTemplate(T3TemplateDef* definition) {
  return definition->parent->is<T3NoType>() ? ExpressionLocalType(definition->constraint)
                                            : definition->parent;
}

bool IsSignatureTemplate(T3TemplateDef* definition) {
  return RootType(TypeOfTemplate(definition))->is<T3SignatureType>();
}

// Each of the functions walks the same tree, and needs locations of its own.
void ResetLocations(T3Tree_Node* definition) {
  gT3AST.TraverseT3TreeTD(definition, [](T3Tree_Node* node) {
    if ((node->is<_T3Expression>() || node->is<T3TemplateDef>()) && node->attributes != nullptr &&
        node->attributes->cold != nullptr)
      ResetLocation(node);
  });
}

// ---- Descriptions ----

std::string FieldProperty(T3Tree_Node* formal) {
  auto* typed = formal->as<_T3TypedFormal>();
  std::string property = PassModeConstant(typed->pass);
  t3_template_restriction_t restriction = t3_template_restriction_t::None;
  if (auto* template_par = formal->try_as<T3FormalTemplatePar>()) {
    property += std::string(" | ") + LUMO_FIELD_PROPERTY_TEMPLATE_C;
    restriction = template_par->restriction;
  }
  return property + " | " + TemplRestrModeConstant(restriction);
}

// The source of a template, as far as the user wants to see it, as the text of a literal of C; its
// backslashes are doubled already.
std::string Description(T3TemplateDecl* decl) {
  std::string text;
  for (const char c : GetTemplateDescription(decl, gT3CommandLine.template_description_length)) {
    if (c == '"') text += '\\';
    if (c == '?' && !text.empty() && text.back() == '?') text += "\" \"";
    text += c;
  }
  return text;
}

void WriteDescriptions(T3TemplateDecl* decl, T3TemplateDef* definition) {
  const std::string info_struct = VEXATemplateTypeInfoStructName(decl);
  GenPlainTypeStruct(VEXATemplateTypeStructName(decl), info_struct, true);
  CGTypeInfo info;
  info.name = Quote(decl->name);
  info.module = Quote(CGCurrentModule()->name);
  info.kind = LUMO_TYPE_KIND_TEMPLATE;
  info.resolved = false;
  info.constraintof_function = "&(" + VEXAConstraintOfName(decl) + ")";
  info.template_info = "&(" + VEXATemplateInfoName(decl) + ")";
  const unsigned count = GetParNumber(decl->fpl);
  info.number_of_fields = std::to_string(count);
  if (count > 0) {
    info.field_info = VEXATemplateFieldInfoName(decl);
    auto array = gT3Context.file().beginArray(LUMO_FIELD_INFO_T, info.field_info, true);
    for (T3Tree_Node* formal = decl->fpl; formal->is<_T3FormalPar>();
         formal = formal->as<_T3FormalPar>()->next)
      WriteFieldInfo(*array, Quote(formal->as<_T3FormalPar>()->name), FieldProperty(formal),
                     VEXAStaticTypeRef(formal->as<_T3TypedFormal>()->type));
    array->end();
  }
  WriteTypeInfoStruct(info_struct, info);
  const bool is_signature = IsSignatureTemplate(definition);
  const auto pointer = [](const std::string& name) { return "&(" + name + ")"; };
  const auto of_mode = [&](bool match, vexa_template_mode_t mode) {
    if (!is_signature) return std::string(C_NULL);
    return pointer(match ? VEXAMatchName(decl, mode) : VEXAValueOfName(decl, mode));
  };
  auto structure =
      gT3Context.file().beginStructure(LUMO_TEMPLATE_INFO_T, VEXATemplateInfoName(decl), false, true);
  structure->addMember(VEXAStaticTypeRef(TypeOfTemplate(definition)));
  structure->addMember(C_NULL);
  structure->addMember(SliceString(Quote(Description(decl)), kDescriptionLine));
  structure->addMember(pointer(VEXAValueOfName(decl, vexa_template_plain)));
  structure->addMember(of_mode(false, vexa_template_call));
  structure->addMember(of_mode(false, vexa_template_reply));
  structure->addMember(pointer(VEXASizeOfName(decl)));
  structure->addMember(pointer(VEXAMatchName(decl, vexa_template_plain)));
  structure->addMember(of_mode(true, vexa_template_call));
  structure->addMember(of_mode(true, vexa_template_reply));
  structure->end();
}

// ---- Functions ----

std::vector<std::string> Parameters(const std::vector<std::string>& behind) {
  std::vector<std::string> parameters = {FormalPar(LUMO_TYPE_T, VEXA_TYPE),
                                         FormalPar(LUMO_VALUE_T, std::string(VEXA_ARGV) + "[]")};
  parameters.insert(parameters.end(), behind.begin(), behind.end());
  parameters.push_back(FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT));
  return parameters;
}

// One function of a template. Where no code is generated for its body, it reports that when it is called, and
// returns `otherwise`.
template <class Body>
void TemplateFunction(T3TemplateDecl* decl, T3TemplateDef* definition, const char* result,
                      const std::string& name, const std::vector<std::string>& parameters,
                      const char* otherwise, const Body& body) {
  std::string reason;
  try {
    const CGStatementScope scope;
    ResetLocations(definition);
    auto function = gT3Context.file().beginFunction(result, name, Parameters(parameters), "", false);
    GenDefaultFormalPars(decl->fpl, *function);
    body(*function);
    function->end();
    return;
  } catch (const cg::not_supported& fault) {
    reason = fault.reason();
  }
  auto function = gT3Context.file().beginFunction(result, name, Parameters(parameters), "", false);
  cg::ReportAtRunTime(reason, *function);
  function->_return(otherwise);
  function->end();
}

void CGMatch(T3TemplateDecl* decl, T3TemplateDef* definition, vexa_template_mode_t mode) {
  TemplateFunction(
      decl, definition, C_BOOL, VEXAMatchName(decl, mode), {FormalPar(LUMO_VALUE_T, VEXA_VALUE)}, C_FALSE,
      [&](CFunction& function) {
        const cg::ValueMode value_mode;
        const std::string result = function.declare(C_BOOL, "", C_TRUE);
        const CGTest test{mode, VEXA_VALUE, result, break_by_mode, false, "<" + Description(decl) + ">"};
        GenConstraint(definition->constraint, RootType(TypeOfTemplate(definition)), test, function);
        function._return(result);
      });
}

// True for a matching mechanism anywhere in the body: there is no one value.
bool IsAmbiguous(T3Tree_Node* node) {
  bool found = false;
  ForEachInSubtree(node, [&found](T3Tree_Node* at) {
    found = found || at->is<_T3MatchingExpression>() || at->is<ExtraMatchingExpressions>();
    return !found && !at->is<T3Parameterization>();
  });
  return found;
}

void CGValueOf(T3TemplateDecl* decl, T3TemplateDef* definition, vexa_template_mode_t mode) {
  TemplateFunction(decl, definition, LUMO_VALUE_T, VEXAValueOfName(decl, mode),
                   {FormalPar(LUMO_ALLOC_STRATEGY_T, VEXA_ALLOC_STRATEGY)}, LUMO_ILLEGAL_VALUE_C,
                   [&](CFunction& function) {
                     if (IsAmbiguous(definition->constraint)) {
                       cg::ReportAtRunTime("attempting to turn ambiguous template into value", function);
                       function._return(LUMO_ILLEGAL_VALUE_C);
                       return;
                     }
                     const cg::ValueMode value_mode;
                     function._return(cg::InRTS(definition->constraint, vexa_strategy_alloc, function));
                   });
}

// The number of elements of a list without a mechanism that stands for any number; -1 for any other.
int CountOf(T3Tree_Node* constraint) {
  auto* compound = constraint->try_as<T3CompoundValue>();
  if (compound == nullptr) return -1;
  int count = 0;
  for (T3Tree_Node* at = compound->value; at->is<T3FieldValue>(); at = at->as<T3FieldValue>()->next) {
    if (at->as<T3FieldValue>()->value->is<T3AnyOrOmit>()) return -1;
    count += at->as<T3FieldValue>()->value->is<T3Omit>() ? 0 : 1;
  }
  return count;
}

void CGSizeOf(T3TemplateDecl* decl, T3TemplateDef* definition) {
  TemplateFunction(
      decl, definition, C_UNSIGNED_LONG, VEXASizeOfName(decl), {}, "0", [&](CFunction& function) {
        const cg::ValueMode value_mode;
        T3Tree_Node* constraint = definition->constraint;
        if (const int count = CountOf(constraint); count >= 0) {
          function._return(std::to_string(count));
        } else if (!IsAmbiguous(constraint)) {
          function._return(
              cg::Call(LUMO_SIZE_OF, {cg::InRTS(constraint, vexa_temp_alloc, function), VEXA_CONTEXT}));
        } else {
          cg::ReportAtRunTime(std::string("Attempt to call sizeof for template ") + T3KindName(constraint),
                              function);
          function._return("0");
        }
      });
}

void CGConstraintOf(T3TemplateDecl* decl, T3TemplateDef* definition) {
  TemplateFunction(decl, definition, LUMO_VALUE_T, VEXAConstraintOfName(decl),
                   {FormalPar(LUMO_ALLOC_STRATEGY_T, VEXA_ALLOC_STRATEGY)}, LUMO_ILLEGAL_VALUE_C,
                   [&](CFunction& function) {
                     const cg::TemplateMode mode;
                     function._return(cg::InRTS(definition->constraint, vexa_strategy_alloc, function));
                   });
}

void CGTemplateWorker(T3TemplateDecl* decl) {
  T3TemplateDef* definition = DefinitionOf(decl);
  if (AwaitsMerge(definition)) cg::NotSupported(definition);
  const bool is_signature = IsSignatureTemplate(definition);
  CGMatch(decl, definition, vexa_template_plain);
  CGValueOf(decl, definition, vexa_template_plain);
  if (is_signature) {
    for (const vexa_template_mode_t mode : {vexa_template_call, vexa_template_reply}) {
      CGMatch(decl, definition, mode);
      CGValueOf(decl, definition, mode);
    }
  }
  CGSizeOf(decl, definition);
  CGConstraintOf(decl, definition);
  ResetLocations(definition);
  WriteDescriptions(decl, definition);
  gT3Context.file().addDefine(VEXATemplateConstName(decl), "&(" + VEXATemplateTypeStructName(decl) + ")");
}

// ---- Templates in line ----

bool IsLocal(T3Tree_Node* def) {
  if (T3Is<_T3FormalPar>(def)) return true;
  // A template of a block that has its value where it is declared.
  if (T3Is<T3TemplateDecl>(def)) return HasRTSLocation(def);
  return (T3Is<T3VarDecl>(def) || T3Is<T3ConstDecl>(def)) && def->as<_T3DeclList>()->attr().vexa_place > 2;
}

bool IsFunctionCall(T3Tree_Node* node) {
  auto* call = node->try_as<T3Parameterization>();
  return call != nullptr && T3Is<_T3FunctionDecl>(BehindImport(Def(call)));
}

// What the functions of the new template cannot reach: it is passed to them.
std::vector<T3Tree_Node*> LocalReferences(T3Tree_Node* constraint) {
  std::vector<T3Tree_Node*> references;
  ForEachInSubtree(constraint, [&](T3Tree_Node* node) {
    if (IsFunctionCall(node)) {
      references.push_back(node);
      return false;
    }
    if (node->is<T3Identifier>() && IsLocal(Def(node))) references.push_back(node);
    return true;
  });
  return references;
}

// How a node is read inside of the template's functions.
struct Passed {
  T3Tree_Node* node;
  int* place;
  const char** text;
};

Passed PassedNode(T3Tree_Node* node) {
  if (auto* name = node->try_as<T3Identifier>())
    return {node, &name->cold().vexa_id_place, &name->cold().template_special_rts_loc};
  auto& call = node->as<T3Parameterization>()->cold();
  return {node, &call.vexa_id_place, &call.template_special_rts_loc};
}

T3Tree_Node* FormalFor(T3Tree_Node* reference, size_t index, T3Tree_Node* next) {
  const tIdent name = gIdents.MakeIdent("_" + std::to_string(index));
  const tPosition position = reference->as<_T3Expression>()->position;
  T3Tree_Node* type = ExpressionLocalType(reference);
  T3Tree_Node* formal;
  if (cg::HoldsTemplate(reference))
    formal = gT3AST.mT3FormalTemplatePar(position, next, name, type, t3_par_pass_t::In, _sgT3NoExpression(),
                                         t3_template_restriction_t::None);
  else
    formal = gT3AST.mT3FormalPar(position, next, name, type, t3_par_pass_t::In, _sgT3NoExpression());
  formal->as<_T3FormalPar>()->attr().vexa_index = static_cast<int>(index);
  return formal;
}

// `keeps`: the template outlives the statement, so that it needs values of its own.
std::string Explicified(T3TemplateDef* definition, bool keeps, CFunction& function) {
  const std::vector<T3Tree_Node*> references = LocalReferences(definition->constraint);
  std::vector<std::string> arguments;
  for (T3Tree_Node* reference : references) {
    const cg::TemplateMode mode;
    std::string argument = cg::InRTS(reference, vexa_temp_alloc, function);
    if (keeps && !cg::HoldsTemplate(reference))
      argument = cg::Call(LUMO_VALUE_COPY, {argument, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
    arguments.push_back(argument);
  }
  T3Tree_Node* formals = _sgT3NoFormalPar();
  for (size_t i = references.size(); i > 0; --i) formals = FormalFor(references[i - 1], i - 1, formals);
  const std::string name =
      gT3Context.file().uniqueName("vexa_" + CGModuleName(CGCurrentModule()) + "_EXPL_TEMPLATE");
  auto* decl = gT3AST.mT3TemplateDecl(definition->position, _sgT3NoDecl(), gIdents.MakeIdent(name),
                                      _sgT3NoWith(), formals, definition);
  decl->place = definition->place;
  decl->attr().vexa_place = 3;
  std::vector<Passed> passed;
  for (size_t i = 0; i < references.size(); ++i) {
    passed.push_back(PassedNode(references[i]));
    *passed.back().place = cg::kPassedToTemplate;
    *passed.back().text = gT3AST.KeepText(std::string(VEXA_ARGV) + "[" + std::to_string(i) + "]");
  }
  CGTemplateWorker(decl);
  for (const Passed& node : passed) *node.place = 0;
  std::string array = C_NULL;
  if (!references.empty()) {
    array = function.declareArray(LUMO_VALUE_T, references.size() + 1);
    for (size_t i = 0; i < arguments.size(); ++i)
      function.assign(array + "[" + std::to_string(i) + "]", arguments[i]);
    function.assign(array + "[" + std::to_string(arguments.size()) + "]", C_NULL);
  }
  std::string location = cg::Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(location, LUMO_TYPE_INSTANTIATE_TEMPLATE,
                         {"&(" + VEXATemplateTypeStructName(decl) + ")", LUMO_TEMP_ALLOC_C, array,
                          std::to_string(static_cast<int>(definition->restriction)), VEXA_CONTEXT});
  return location;
}
}  // namespace

void CGTemplate(T3Tree_Node* node) {
  auto* decl = node->as<T3TemplateDecl>();
  CGTemplateWorker(decl);
  if (decl->attr().vexa_place == 1)
    CGSymTabAddEntry({Quote(decl->name), LUMO_SYMTAB_KIND_USERDEFINED_TYPE,
                      "&(" + VEXATemplateTypeStructName(decl) + ")"});
}

namespace {
// True for a template with parameters that also needs what is local where it stands.
bool NeedsMoreThanParameters(T3TemplateDecl* decl, T3TemplateDef* definition) {
  for (T3Tree_Node* reference : LocalReferences(definition->constraint)) {
    T3Tree_Node* def = reference->is<T3Identifier>() ? Def(reference) : nullptr;
    bool own = false;
    for (T3Tree_Node* formal = decl->fpl; formal->is<_T3FormalPar>();
         formal = formal->as<_T3FormalPar>()->next)
      own = own || formal == def;
    if (!own && !IsFunctionCall(reference)) return true;
  }
  return false;
}
}  // namespace

void CGLocalTemplate(T3TemplateDecl* decl, CFunction& function) {
  T3TemplateDef* definition = DefinitionOf(decl);
  if (decl->fpl->is<_T3FormalPar>()) {
    if (NeedsMoreThanParameters(decl, definition)) cg::NotSupported(decl);
    return CGTemplate(decl);
  }
  const std::string location =
      function.declare(LUMO_VALUE_T, VEXALocalVarName(decl->name), LUMO_ILLEGAL_VALUE_C);
  {
    const CGStatementScope scope(function);
    function.assign(location, Explicified(definition, true, function));
  }
  SetRTSLocation(decl, location);
}

void CGTemplateImport(T3Tree_Node* node) {
  auto* import = node->as<T3ImportTemplateDecl>();
  T3Tree_Node* origin = import->attr().def_aux;
  if (!T3Is<T3TemplateDecl>(origin))
    internal_error_ast("CGTemplate", __LINE__, "CGTemplateImportHelper", import);
  const std::string name = VEXATemplateTypeStructName(import);
  const std::string module = Quote(origin->place->vexa_module_name);
  auto structure = gT3Context.file().beginStructure(LUMO_TYPE_STRUCT_T, name, false, true);
  structure->addMember(module);
  structure->addMember(Quote(origin->as<_T3Decl>()->name));
  for (int i = 0; i < 7; ++i) structure->addMember(C_NULL);
  structure->end();
  gT3Context.file().addDefine(VEXATemplateConstName(import), "&(" + name + ")");
  CFunction& bind = gT3Context.registerFunction();
  bind.addComment("setting type info struct for imported template");
  bind.assign("(" + name + ".type_info)", FindOriginCall(import) + "->type_descriptor->type_info");
  CGSymTabAddEntry({Quote(std::string(gIdents.GetString(origin->place->vexa_module_name)) + '.' +
                          gIdents.GetCStr(origin->as<_T3Decl>()->name)),
                    LUMO_SYMTAB_KIND_USERDEFINED_TYPE, "&(" + name + ")"});
}

std::string CGInlinedTemplate(T3Tree_Node* node, vexa_template_mode_t, CFunction& function) {
  auto* definition = node->try_as<T3TemplateDef>();
  T3Tree_Node* constraint = definition != nullptr ? definition->constraint : node;
  if (definition != nullptr && !definition->modifies->is<T3NoTemplateReference>()) {
    if (AwaitsMerge(definition)) cg::NotSupported(definition);
    return Explicified(definition, false, function);
  }
  const bool is_signature = cg::TypeOf(constraint)->is<T3SignatureType>();
  const bool has_mechanism = constraint->is<_T3MatchingExpression>() ||
                             constraint->is<ExtraMatchingExpressions>() ||
                             (constraint->is<T3CompoundValue>() && cg::HoldsTemplate(constraint)) ||
                             (constraint->is<T3CompoundValue>() && is_signature);
  if (definition != nullptr && has_mechanism) return Explicified(definition, false, function);
  if (cg::HoldsTemplate(constraint)) {
    const cg::TemplateMode mode;
    return cg::InRTS(constraint, vexa_temp_alloc, function);
  }
  const cg::ValueMode mode;
  return cg::InRTS(constraint, vexa_temp_alloc, function);
}

std::string CGTemplateExpression(T3Tree_Node* node, vexa_template_mode_t mode, CFunction& function) {
  return CGInlinedTemplate(node, mode, function);
}
