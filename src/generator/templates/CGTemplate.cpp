#include "generator/templates/CGTemplate.h"

#include "analysis/names/T3Names.h"
#include "analysis/templates/T3TemplateMerge.h"
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3Subtree.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/expressions/CGCalls.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGModuleText.h"
#include "generator/templates/CGTemplateParts.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CGTypeTables.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"
#include "generator/text/T3Decompile.h"

namespace cgtemplate {
T3TemplateDef* DefinitionOf(T3TemplateDecl* decl) {
  auto* definition = decl->definition->try_as<T3TemplateDef>();
  if (definition == nullptr) cg::NotSupported(decl);
  return definition;
}

// A range of characters has the type of its bounds, but what it matches are strings.
T3Tree_Node* TypeOfTemplate(T3TemplateDef* definition) {
  if (!definition->parent->is<T3NoType>()) return definition->parent;
  T3Tree_Node* type = ExpressionLocalType(definition->constraint);
  if (type->is<T3CharacterType>()) return gT3CharStringType;
  return type->is<T3UniversalCharacterType>() ? gT3UniversalCharStringType : type;
}

bool IsSignatureTemplate(T3TemplateDef* definition) {
  return RootType(TypeOfTemplate(definition))->is<T3SignatureType>();
}

void ResetLocations(T3Tree_Node* definition) {
  ForEachInSubtree(definition, [](T3Tree_Node* node) {
    if (node->is<_T3Expression>() || node->is<T3TemplateDef>()) ResetLocation(node);
    return true;
  });
}

// All functions of a template ask for it one after the other.
const std::string& Description(T3TemplateDecl* decl) {
  static T3TemplateDecl* last = nullptr;
  static auto& text = *new std::string;
  if (decl == last) return text;
  last = decl;
  text = InLiteral(GetTemplateDescription(decl, gT3CommandLine.template_description_length));
  return text;
}

}  // namespace cgtemplate

namespace {
using namespace cgtemplate;

constexpr size_t kDescriptionLine = 2000;

// ---- Descriptions ----

std::string FieldProperty(T3Tree_Node* formal) {
  const char* pass = PassModeConstant(formal->as<_T3TypedFormal>()->pass);
  if (auto* of_template = formal->try_as<T3FormalTemplatePar>())
    return joined({pass, " | ", LUMO_FIELD_PROPERTY_TEMPLATE_C, " | ",
                   TemplRestrModeConstant(of_template->restriction)});
  return joined({pass, " | ", TemplRestrModeConstant(t3_template_restriction_t::None)});
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
    for (auto* formal : Items<_T3FormalPar>(decl->fpl))
      WriteFieldInfo(*array, Quote(formal->name), FieldProperty(formal),
                     VEXAStaticTypeRef(formal->as<_T3TypedFormal>()->type));
    array->end();
  }
  WriteTypeInfoStruct(info_struct, info);
  const bool is_signature = IsSignatureTemplate(definition);
  const auto pointer = [](std::string_view name) { return joined({"&(", name, ")"}); };
  const auto of_mode = [&](bool match, vexa_template_mode_t mode) {
    if (!is_signature) return std::string(C_NULL);
    return pointer(match ? VEXAMatchName(decl, mode) : VEXAValueOfName(decl, mode));
  };
  const std::string name = VEXATemplateInfoName(decl);
  CStructure structure(&gT3Context.file(), LUMO_TEMPLATE_INFO_T, name, false, true);
  structure.addMembers({VEXAStaticTypeRef(TypeOfTemplate(definition)), C_NULL,
                        SliceString(Quote(Description(decl)), kDescriptionLine),
                        pointer(VEXAValueOfName(decl, vexa_template_plain)),
                        of_mode(false, vexa_template_call), of_mode(false, vexa_template_reply),
                        pointer(VEXASizeOfName(decl)), pointer(VEXAMatchName(decl, vexa_template_plain)),
                        of_mode(true, vexa_template_call), of_mode(true, vexa_template_reply)});
  structure.end();
}
}  // namespace

namespace cgtemplate {
void CGTemplateWorker(T3TemplateDecl* decl) {
  T3TemplateDef* definition = DefinitionOf(decl);
  if (AwaitsMerge(definition)) cg::NotSupported(definition);
  WriteDescriptions(decl, definition);
  CGTemplateFunctions(decl, definition);
  gT3Context.file().addDefine(VEXATemplateConstName(decl),
                              joined({"&(", VEXATemplateTypeStructName(decl), ")"}));
}
}  // namespace cgtemplate

void CGTemplate(T3Tree_Node* node) {
  auto* decl = node->as<T3TemplateDecl>();
  CGTemplateWorker(decl);
  if (decl->attr().vexa_place == kAtModuleLevel)
    CGSymTabAddEntry({Quote(decl->name), LUMO_SYMTAB_KIND_USERDEFINED_TYPE,
                      joined({"&(", VEXATemplateTypeStructName(decl), ")"})});
}

void CGTemplateImport(T3Tree_Node* node) {
  auto* import = node->as<T3ImportTemplateDecl>();
  T3Tree_Node* origin = import->attr().def_aux;
  if (!T3Is<T3TemplateDecl>(origin))
    internal_error_ast("CGTemplate", __LINE__, "CGTemplateImportHelper", import);
  const std::string_view name = VEXATemplateTypeStructName(import);
  const std::string_view module = gIdents.GetString(origin->place->vexa_module_name);
  const std::string_view own_name = gIdents.GetString(DeclaredName(origin));
  gT3Context.file().addStructure(LUMO_TYPE_STRUCT_T, name, true,
                                 {Quote(origin->place->vexa_module_name), Quote(DeclaredName(origin)), C_NULL,
                                  C_NULL, C_NULL, C_NULL, C_NULL, C_NULL, C_NULL});
  const std::string address = joined({"&(", name, ")"});
  gT3Context.file().addDefine(VEXATemplateConstName(import), address);
  CFunction& bind = gT3Context.registerFunction();
  bind.addComment("setting type info struct for imported template");
  bind.addLine({"(", name, ".type_info) = ", FindOriginCall(import), "->type_descriptor->type_info;"});
  CGSymTabAddEntry({joined({"\"", module, ".", own_name, "\""}), LUMO_SYMTAB_KIND_USERDEFINED_TYPE, address});
}
