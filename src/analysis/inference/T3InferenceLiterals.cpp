// Literals and the special values.
#include "analysis/inference/T3InferenceParts.h"
#include "analysis/types/T3References.h"
#include "driver/modules/T3UTF8String.h"

namespace t3infer {
namespace {
T3OwnTypes CharStringTypes(T3CharStringLiteral* literal) {
  auto& attributes = literal->attr();
  if (!attributes.IsEvaluated(T3CharStringLiteral_Attributes::char_string_kind_bit)) {
    attributes.char_string_kind = DetermineCharStringKind(literal->value);
    attributes.SetEvaluated(T3CharStringLiteral_Attributes::char_string_kind_bit);
  }
  switch (attributes.char_string_kind) {
    case kind_ascii_character:
      return {gT3CharacterType, gT3UniversalCharacterType, gT3CharStringType, gT3UniversalCharStringType};
    case kind_ascii_string:
      return {gT3CharStringType, gT3UniversalCharStringType};
    case kind_character:
      return {gT3UniversalCharacterType, gT3UniversalCharStringType};
    case kind_string:
      return {gT3UniversalCharStringType};
    default:  // malformed text has its own message
      return {gT3CharStringType, gT3UniversalCharStringType};
  }
}

// Items of an object identifier: numbers, named numbers, and references to values.
void InferObjIdItems(T3Tree_Node* items) {
  for (auto* at : Items<T3ObjIdItem>(items)) {
    T3Tree_Node* item = at->obj_id_item;
    if (T3Tree_Node* number = NumberInComponent(item)) {
      LetMeanNothing(item);
      Fails(number, {gT3IntegerType});
    } else if (item->is<_T3Expression>()) {
      Fails(item, T3Candidates::Types({gT3IntegerType, gT3ObjectIdentifierType}));
    }
  }
}

void InferQuadruple(T3UnivCharLiteral* literal) {
  for (T3Tree_Node* part : {literal->group, literal->plane, literal->row, literal->cell})
    Fails(part, {gT3IntegerType});
}

T3Tree_Node* LiteralType(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3IntLiteral:
      return gT3IntegerType;
    case T3Kind::T3FloatLiteral:
    case T3Kind::T3NoWait:
      return gT3FloatType;
    case T3Kind::T3BooleanLiteral:
      return gT3BooleanType;
    case T3Kind::T3VerdictLiteral:
      return gT3VerdictType;
    case T3Kind::T3ObjectIdentifierLiteral:
      return gT3ObjectIdentifierType;
    case T3Kind::T3UnivCharStringLiteral:
      return gT3UniversalCharStringType;
    case T3Kind::T3BitStringLiteral:
      return gT3BitStringType;
    case T3Kind::T3OctStringLiteral:
      return gT3OctetStringType;
    case T3Kind::T3HexStringLiteral:
      return gT3HexStringType;
    default:
      return nullptr;
  }
}
}  // namespace

T3Inference InferLiteral(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  if (auto* literal = node->try_as<T3ObjectIdentifierLiteral>()) InferObjIdItems(literal->value);
  if (T3Tree_Node* type = LiteralType(node)) return FinishOne(node, candidates, type, false, strict, report);
  switch (node->kind) {
    case T3Kind::T3CharStringLiteral:
      return FinishSet(node, candidates, CharStringTypes(node->as<T3CharStringLiteral>()), false, report);
    case T3Kind::T3UnivCharLiteral:
      InferQuadruple(node->as<T3UnivCharLiteral>());
      return FinishSet(node, candidates, {gT3UniversalCharacterType, gT3UniversalCharStringType}, false,
                       report);
    case T3Kind::T3Infinity:
      return FinishSet(node, candidates, {gT3IntegerType, gT3FloatType}, false, report);
    case T3Kind::T3Null:
      return FinishSet(node, candidates, {gT3DefaultType, gT3AnyComponentType, gT3AnyAddressType}, false,
                       report);
    default:  // `omit` and `-` are of any type
      return Finish(node, candidates, false, report);
  }
}
}  // namespace t3infer
