// Templates at their places of use. What is written in line becomes a declaration without a name of its own;
// what is local where it stands is passed to it as arguments.
#include <map>

#include "analysis/types/T3References.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/templates/T3TemplateMerge.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/expressions/CGCalls.h"
#include "generator/expressions/CGModes.h"
#include "generator/expressions/CGReads.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGModuleText.h"
#include "generator/templates/CGInheritedArguments.h"
#include "generator/templates/CGTemplate.h"
#include "generator/templates/CGTemplateParts.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
using namespace cgtemplate;

// ---- What is passed ----

bool IsLocal(T3Tree_Node* def) {
  if (T3Is<_T3FormalPar>(def)) return true;
  // A template of a block that has its value where it is declared.
  if (T3Is<T3TemplateDecl>(def)) return HasRTSLocation(def);
  return (T3Is<T3VarDecl>(def) || T3Is<T3ConstDecl>(def)) &&
         def->as<_T3DeclList>()->attr().vexa_place > kAtModuleLevel;
}

bool IsFunctionCall(T3Tree_Node* node) {
  auto* call = node->try_as<T3Parameterization>();
  return call != nullptr && T3Is<_T3FunctionDecl>(BehindImport(Def(call)));
}

// A reference to something local, with the index of the argument that stands for it.
struct LocalReference {
  T3Tree_Node* node;
  size_t index;
};

// What the functions of the new template cannot reach, in the order of the source. References to one
// declaration have one index.
std::vector<LocalReference> GetLocalRefs(T3Tree_Node* constraint) {
  std::vector<LocalReference> references;
  std::map<T3Tree_Node*, size_t, T3NodeLess> known;
  size_t count = 0;
  ForEachFreeNode(constraint, [&](T3Tree_Node* node) {
    if (IsFunctionCall(node)) {
      references.push_back({node, count++});
      // What it writes is another value behind it.
      if (cg::HasEffects(node)) known.clear();
      return false;
    }
    if (!node->is<T3Identifier>() || !IsLocal(Def(node))) return true;
    const auto [place, is_new] = known.try_emplace(Def(node), count);
    if (is_new) ++count;
    references.push_back({node, place->second});
    return true;
  });
  return references;
}

// One reference for each index.
std::vector<T3Tree_Node*> Distinct(const std::vector<LocalReference>& references) {
  std::vector<T3Tree_Node*> distinct;
  for (const LocalReference& reference : references)
    if (reference.index == distinct.size()) distinct.push_back(reference.node);
  return distinct;
}

// How a node is read inside of the template's functions.
struct Passed {
  int* place;
  const char** text;
};

Passed PassedNode(T3Tree_Node* node) {
  if (auto* name = node->try_as<T3Identifier>())
    return {&name->cold().vexa_id_place, &name->cold().template_special_rts_loc};
  auto& call = node->as<T3Parameterization>()->cold();
  return {&call.vexa_id_place, &call.template_special_rts_loc};
}

// Stands while references mean the arguments of a template's functions.
class References {
 public:
  explicit References(const std::vector<LocalReference>& references) {
    for (const LocalReference& reference : references)
      Mean(reference.node, std::string(VEXA_ARGV) + "[" + std::to_string(reference.index) + "]");
  }
  References(const References&) = delete;
  References& operator=(const References&) = delete;
  ~References() {
    for (const Before& before : before_) {
      *before.passed.place = before.place;
      *before.passed.text = before.text;
    }
  }

 private:
  void Mean(T3Tree_Node* reference, const std::string& text) {
    const Passed passed = PassedNode(reference);
    before_.push_back({passed, *passed.place, *passed.text});
    *passed.place = kPassedToTemplate;
    *passed.text = gT3AST.KeepText(text);
  }

  struct Before {
    Passed passed;
    int place;
    const char* text;
  };
  std::vector<Before> before_;
};

// ---- Formal parameters ----

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

// ---- The declaration ----

// The declarations that the module being generated has. A definition may be shared by modules, when a
// template modifies one of another module.
T3NodeSet& MadeInThisModule() {
  static T3Tree_Node* module = nullptr;
  static auto& made = *new T3NodeSet;
  if (module != CGCurrentModule()) made.clear();
  module = CGCurrentModule();
  return made;
}

// The declaration that a definition in line becomes, once: another walk over the same place uses it again.
T3TemplateDecl* Explicification(T3TemplateDef* definition, const std::vector<LocalReference>& references) {
  auto& known = definition->cold().explicification;
  if (T3Is<T3TemplateDecl>(known) && MadeInThisModule().count(known) != 0) return known->as<T3TemplateDecl>();
  const std::vector<T3Tree_Node*> passed = Distinct(references);
  T3Tree_Node* formals = _sgT3NoFormalPar();
  for (size_t i = passed.size(); i > 0; --i) formals = FormalFor(passed[i - 1], i - 1, formals);
  const std::string name =
      gT3Context.file().uniqueName("vexa_" + CGModuleName(CGCurrentModule()) + "_EXPL_TEMPLATE");
  auto* decl = gT3AST.mT3TemplateDecl(definition->position, _sgT3NoDecl(), gIdents.MakeIdent(name),
                                      _sgT3NoWith(), formals, definition);
  decl->place = definition->place;
  decl->attr().vexa_place = kInBehaviour;
  {
    const References arguments(references);
    CGTemplateWorker(decl);
  }
  MadeInThisModule().insert(decl);
  known = decl;
  return decl;
}

// The argument for a reference, evaluated where the template is used. `keeps`: the template outlives the
// statement, so that it needs values of its own.
std::string RHSHelper(T3Tree_Node* reference, bool keeps, CFunction& function) {
  const std::string_view argument = cg::InRTS(reference, CGTemplateMode(), function);
  if (!keeps || cg::HoldsTemplate(reference)) return std::string(argument);
  return cg::Call(LUMO_VALUE_COPY, {argument, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
}

std::string Explicified(T3TemplateDef* definition, bool keeps, CFunction& function) {
  const std::vector<LocalReference> references = GetLocalRefs(definition->constraint);
  // What is modified is shared by all that modify it.
  if (!definition->modifies->is<T3NoTemplateReference>()) ResetLocations(definition);
  std::vector<std::string> arguments;
  {
    const InheritedArguments inherited(definition, "", function);
    const std::vector<T3Tree_Node*> passed = Distinct(references);
    const cg::Operands operands(passed);
    for (size_t i = 0; i < passed.size(); ++i) {
      const std::string argument = RHSHelper(passed[i], keeps, function);
      arguments.push_back(operands.MayChange(i, false, function) ? cg::Kept(argument, function) : argument);
    }
  }
  T3TemplateDecl* decl = Explicification(definition, references);
  std::string array = C_NULL;
  if (!arguments.empty()) {
    array = function.declareArray(LUMO_VALUE_T, arguments.size() + 1);
    for (size_t i = 0; i < arguments.size(); ++i)
      function.assign(array + "[" + std::to_string(i) + "]", arguments[i]);
    function.assign(array + "[" + std::to_string(arguments.size()) + "]", C_NULL);
  }
  std::string location = cg::Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(location, LUMO_TYPE_INSTANTIATE_TEMPLATE,
                         {joined({"&(", VEXATemplateTypeStructName(decl), ")"}), LUMO_TEMP_ALLOC_C, array,
                          std::to_string(static_cast<int>(definition->restriction)), VEXA_CONTEXT});
  return location;
}

// ---- Forms ----

bool RefersToTemplate(T3Tree_Node* node) {
  if (auto* call = node->try_as<T3Parameterization>()) return cg::IsTemplateDecl(Def(call));
  return (node->is<T3Identifier>() || node->is<T3Qualifier>()) && cg::IsTemplateDecl(Def(node));
}

bool RefersToFormalTemplatePar(T3Tree_Node* node) {
  return node->is<T3Identifier>() && T3Is<T3FormalTemplatePar>(Def(node));
}

std::string AsTemplate(T3Tree_Node* node, CFunction& function) {
  return std::string(cg::InRTS(node, CGTemplateMode(), function));
}

std::string AsValue(T3Tree_Node* node, CFunction& function) {
  return std::string(cg::InRTS(node, vexa_temp_alloc, function));
}

std::string InstantiateTemplate(T3Tree_Node* reference, CFunction& function) {
  const std::string call = AsTemplate(reference, function);
  if (call.find('(') == std::string::npos) return call;
  std::string location = cg::Temporary(LUMO_VALUE_T, function);
  function.assign(location, call);
  return location;
}
}  // namespace

// The functions of a template with parameters find templates of the block by their names, as they do
// variables.
static void NameTemplatesOf(T3TemplateDecl* decl, CFunction& function) {
  T3NodeSet named;
  ForEachInSubtree(decl, [&](T3Tree_Node* node) {
    T3Tree_Node* def = node->is<T3Identifier>() ? Def(node) : nullptr;
    if (T3Is<T3TemplateDecl>(def) && HasRTSLocation(def) && named.insert(def).second)
      function.call(LUMO_SOURCE_TRACKING_NAME_VALUE,
                    {Quote(def->as<T3TemplateDecl>()->name), RTSLocation(def), VEXA_CONTEXT});
    return true;
  });
}

void CGLocalTemplate(T3TemplateDecl* decl, CFunction& function) {
  T3TemplateDef* definition = DefinitionOf(decl);
  const bool is_alone =
      definition->modifies->is<T3NoTemplateReference>() && GetLocalRefs(definition->constraint).empty();
  // What it takes from the block would be another value later, or none.
  if (is_alone || decl->fpl->is<_T3FormalPar>()) {
    // A statement may be written more than once.
    if (MadeInThisModule().insert(decl).second) CGTemplate(decl);
    NameTemplatesOf(decl, function);
    return;
  }
  const std::string location =
      function.declare(LUMO_VALUE_T, VEXALocalVarName(decl->name), LUMO_ILLEGAL_VALUE_C);
  {
    const CGStatementScope scope(function);
    function.assign(location, Explicified(definition, true, function));
  }
  DeclareRTSLocation(decl, location);
}

std::string CGInlinedTemplate(T3Tree_Node* node, vexa_template_mode_t, CFunction& function) {
  auto* definition = node->try_as<T3TemplateDef>();
  T3Tree_Node* constraint = definition != nullptr ? definition->constraint : node;
  if (definition != nullptr && !definition->modifies->is<T3NoTemplateReference>()) {
    if (AwaitsMerge(definition)) cg::NotSupported(definition);
    return IsModifiedAtRunTime(definition) ? ModifiedAtRunTime(definition, function)
                                           : Explicified(definition, false, function);
  }
  if (RefersToTemplate(constraint)) return InstantiateTemplate(constraint, function);
  if (definition == nullptr || RefersToFormalTemplatePar(constraint))
    return cg::HoldsTemplate(constraint) ? AsTemplate(constraint, function) : AsValue(constraint, function);
  const bool is_signature =
      constraint->is<T3CompoundValue>() && cg::TypeOf(constraint)->is<T3SignatureType>();
  if (!is_signature && !cg::HoldsTemplate(constraint) && GetLocalRefs(constraint).empty())
    return AsValue(constraint, function);
  return Explicified(definition, false, function);
}

std::string CGTemplateExpression(T3Tree_Node* node, vexa_template_mode_t mode, CFunction& function) {
  auto* definition = node->try_as<T3TemplateDef>();
  T3Tree_Node* constraint = definition != nullptr ? definition->constraint : node;
  const bool is_signature =
      constraint->is<T3CompoundValue>() && cg::TypeOf(constraint)->is<T3SignatureType>();
  const bool is_modified = definition != nullptr && !definition->modifies->is<T3NoTemplateReference>();
  if (!is_signature && !is_modified && !cg::HoldsTemplate(constraint)) return AsValue(constraint, function);
  // What a variable or a function gives is there already.
  if (!is_modified && !constraint->is<T3CompoundValue>() && constraint->is<_T3Reference>() &&
      !RefersToTemplate(constraint))
    return AsTemplate(constraint, function);
  return CGInlinedTemplate(node, mode, function);
}
