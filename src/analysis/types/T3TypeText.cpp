// What types look like in messages, and the messages of nodes whose type cannot be established.
#include <cstring>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"

namespace {
// The module-qualified name of a declaration.
std::string QualifiedName(T3Tree_Node* decl) {
  const tIdent name = decl->as<_T3Decl>()->name;
  if (decl->place == nullptr || decl->place->vexa_module_name == NoIdent) return gIdents.GetCStr(name);
  return std::string(gIdents.GetCStr(decl->place->vexa_module_name)) + "." + gIdents.GetCStr(name);
}

const char* BuiltinText(const T3Tree_Node* type) {
  switch (type->kind) {
    case T3Kind::T3Integer:
      return "type integer";
    case T3Kind::T3Float:
      return "type float";
    case T3Kind::T3Boolean:
      return "type boolean";
    case T3Kind::T3VerdictType:
      return "type verdicttype";
    case T3Kind::T3BitStringType:
      return "type bitstring";
    case T3Kind::T3OctetStringType:
      return "type octetstring";
    case T3Kind::T3HexStringType:
      return "type hexstring";
    case T3Kind::T3CharStringType:
      return "type charstring";
    case T3Kind::T3TimerType:
      return "type timer";
    case T3Kind::T3Address:
      return "type address";
    case T3Kind::T3Default:
      return "type default";
    case T3Kind::T3ObjectIdentifierType:
      return "type objectidentifier";
    case T3Kind::T3UniversalCharStringType:
      return "type universal charstring";
    case T3Kind::T3CharacterType:
      return "type char";
    case T3Kind::T3UniversalCharacterType:
      return "type universal char";
    case T3Kind::T3AnyType:
      return "type anytype";
    default:
      return nullptr;
  }
}

// The declaration that a type is the type of, or null.
T3Tree_Node* DeclarationOf(T3Tree_Node* type) {
  if (T3Is<T3TypeDecl>(type->as<_T3Type>()->attr().typedecl)) return type->as<_T3Type>()->attr().typedecl;
  T3Tree_Node* above = type->parent;
  // a constructor under a constraint has the declaration of the subtype
  while (T3Is<T3SubType>(above) && above->as<T3SubType>()->parent == type) {
    type = above;
    above = type->parent;
  }
  return T3Is<T3TypeDecl>(above) && above->as<T3TypeDecl>()->type == type ? above : nullptr;
}

void ReportImport(_T3ImportDecl* import) {
  const tIdent object = DeclaredName(import);
  const tIdent module = ImportedModule(import);
  const bool is_named = object != NoIdent && module != NoIdent;
  if (!import->is<T3ImportTypeDecl>()) {
    if (is_named) vexa_filtered_error(ERR_type_decl_with_mod, import->position, module, object);
    return;
  }
  if (is_named)
    vexa_filtered_error(ERR_type_import, import->position, object, module);
  else
    vexa_filtered_error(ERR_type_import_na, import->position);
}

void ReportTemplate(T3TemplateDef* definition, size_t valid, T3TemplateUse use) {
  if (use == T3TemplateUse::UnknownPar) return;
  if (use == T3TemplateUse::ActualPar) return vexa_filtered_error(ERR_type_param, definition->position);
  if (use == T3TemplateUse::Other) return vexa_filtered_error(ERR_type_template, definition->position);
  vexa_filtered_error(valid > 1 ? ERR_type_template_ambiguous : ERR_type_template_check_port,
                      definition->position);
}

void ReportType(T3Tree_Node* type) {
  auto* reference = type->try_as<T3TypeReference>();
  if (T3Tree_Node* decl = DeclarationOf(type))
    return vexa_filtered_error(ERR_type, PositionOf(type), decl->as<_T3Decl>()->name);
  if (reference != nullptr && reference->reference->is<T3Identifier>())
    return vexa_filtered_error(ERR_type, PositionOf(type), reference->reference->as<T3Identifier>()->id);
  vexa_filtered_error(ERR_type_na, PositionOf(type));
}
}  // namespace

void ReportTypeError(T3Tree_Node* node, size_t valid, T3TemplateUse use) {
  if (node->is<_T3ImportDecl>()) return ReportImport(node->as<_T3ImportDecl>());
  if (node->is<_T3Decl>())
    return vexa_filtered_error(ERR_type_decl, PositionOf(node), node->as<_T3Decl>()->name);
  if (node->is<_T3TypedFormal>())
    return vexa_filtered_error(ERR_type_decl, PositionOf(node), node->as<_T3FormalPar>()->name);
  if (auto* definition = node->try_as<T3TemplateDef>()) return ReportTemplate(definition, valid, use);
  if (node->is<_T3Type>()) return ReportType(node);
  if (node->is<_T3Expression>() && valid > 1)
    return vexa_filtered_error(ERR_type_ambiguous, PositionOf(node));
  if (auto* identifier = node->try_as<T3Identifier>())
    return vexa_filtered_error(ERR_type, identifier->position, identifier->id);
  if (node->is<T3TemplateReference>())
    return vexa_filtered_error(ERR_type_template_modifies, PositionOf(node));
  vexa_filtered_error(ERR_type_na, PositionOf(node));
}

void ReportTypeError(T3Tree_Node* node, bool report) {
  if (report) ReportTypeError(node, size_t{0}, T3TemplateUse::Other);
}

std::string Type2String(T3Tree_Node* type) {
  if (T3Is<_T3ImportDecl>(type)) type = BehindImport(type);
  if (T3Is<T3TypeDecl>(type)) {
    const bool signature = type->as<T3TypeDecl>()->type->is<T3SignatureType>();
    return (signature ? "signature " : "type ") + QualifiedName(type);
  }
  if (!T3Is<_T3Type>(type)) return "type";
  if (const char* text = BuiltinText(type)) return text;
  if (type->is<T3TypeReference>()) return Type2String(LocalTypeDef(type));
  T3Tree_Node* decl = DeclarationOf(type);
  return decl == nullptr ? "type" : Type2String(decl);
}

bool CheckIntegerSize(const char* text) {
  static const char kLargest[] = "9223372036854775807";
  while (*text == '0') ++text;
  const size_t digits = std::strlen(text);
  if (digits != sizeof kLargest - 1) return digits < sizeof kLargest - 1;
  return std::strcmp(text, kLargest) <= 0;
}

int RequiredDigits(int64_t value, int64_t base) {
  int digits = 1;
  for (; value >= base; value /= base) ++digits;
  return digits;
}
