// What the units of the expression generator share.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "FileAPI/CBase.h"
#include "driver/diagnostics/T3Exception.h"
#include "generator/expressions/CGExpression.h"
#include "generator/text/LUMOS.h"

namespace cg {
using Mode = CGMode;

/// The text of a call.
std::string Call(std::string_view function, const std::vector<std::string>& arguments);
std::string Call(std::string_view function, CWords arguments);
/// The locations of an operand, which is evaluated; in C it is a value.
std::string_view InC(T3Tree_Node* node, CFunction& function);
std::string_view InRTS(T3Tree_Node* node, Mode mode, CFunction& function);
/// Variables by their types.
using Variables = std::map<std::string_view, std::string>;
/// The type of a variable of C that can hold a value of a type; null for what is not held in one.
const char* CVariableType(const T3Tree_Node* type);
class Operands;
/// The location of an operand, which has one, after which the operands behind it may be evaluated: where one
/// of them may change what it leads to, that of the value that is there now.
std::string_view OperandInOrder(const Operands& operands, size_t at, vexa_expression_mode_t form,
                                CFunction& function);
/// The value that a location leads to, as it is now.
std::string Kept(std::string_view location, CFunction& function);
/// The location of a node that has one in this form. A long text is first put into a variable, one of
/// `variables` where that is given: what is nested deeply would otherwise be written once more at each level.
std::string_view ShortLocation(T3Tree_Node* node, vexa_expression_mode_t form, CFunction& function,
                               Variables* variables = nullptr);
/// Reserves a run-time value for a node, and returns its location.
std::string AllocateRTSValue(T3Tree_Node* node, Mode mode, CFunction& function);
/// A temporary of the statement.
std::string Temporary(std::string_view type, CFunction& function);
/// The node's type behind names and subtypes.
T3Tree_Node* TypeOf(T3Tree_Node* expression);
std::string CastToUnsignedLong(std::string_view text);
std::string CastToLongLong(std::string_view text);
/// What is thrown for constructs that no code is generated for, with the place of one.
struct not_supported {
  tPosition position;
  std::string reason;
};
[[noreturn]] void NotSupported(T3Tree_Node* node);
/// The call that ends the test case with an error, this text and a place in the source.
void ReportAtRunTime(std::string_view text, const tPosition& position, CFunction& function);

/// Whether a literal is a text that needs wide characters; sets a value to such a text.
bool IsWideText(T3Tree_Node* node);
void SetWideText(T3Tree_Node* node, std::string_view target, CFunction& function);

/// The location of a place that may be written later, or not at all: what is missing above it, and an
/// alternative that is not chosen, comes into being with the first write. `makes_field` also makes an omitted
/// field; otherwise its location is that of `omit`.
std::string_view PlaceToWrite(T3Tree_Node* reference, bool makes_field, CFunction& function);

/// What a declaration at module level, or an import, is called in the function: its name in C, or its entry
/// in the symbol table.
std::string AccessNamedEntity(T3Tree_Node* decl, const CFunction& function);
/// The C expressions of a function and of its type.
struct Callee {
  std::string function;
  std::string type;
};
Callee CalleeOf(T3Tree_Node* decl);
/// False for a qualifier behind the name of a module.
bool IsField(T3Qualifier* node);
/// What a field is a part of: a module before the name of a type in `anytype` is none.
T3Tree_Node* WholeOf(T3Qualifier* field);
/// The place of a field among the fields of the whole; in `anytype`, of the type that it names.
int64_t PlaceOfField(T3Qualifier* field);

/// True for the literal of an integer that takes more than 64 bits.
bool IsBeyondIntegers(T3Tree_Node* node);
/// True for a literal with characters beyond ASCII.
bool IsWideLiteral(T3Tree_Node* node);

/// A group of forms of expressions: generates a node of the group and returns true, or returns false.
using Form = bool (*)(T3Tree_Node* node, Mode mode, CFunction& function);
/// Makes a template of what stands where one is wanted, and returns its location.
using InPlaceForm = std::string (*)(T3Tree_Node* node, vexa_template_mode_t mode, CFunction& function);
/// As many as there are kinds of expressions.
constexpr size_t kForms = _T3Expression::kLast - _T3Expression::kFirst + 1;
/// The form of each kind of expression, in the order of the kinds; the list is the caller's, and stays. A
/// node of a kind that has none, or whose form returns false, is not supported. `in_place` is what
/// TemplateInPlace calls.
void SetForms(std::span<const Form, kForms> forms, InPlaceForm in_place);
/// The location of a template: a T3TemplateDef or an expression at its place of use.
std::string TemplateInPlace(T3Tree_Node* node, vexa_template_mode_t mode, CFunction& function);

bool Operator(T3Tree_Node* node, Mode mode, CFunction& function);
bool Literal(T3Tree_Node* node, Mode mode, CFunction& function);
bool Reference(T3Tree_Node* node, Mode mode, CFunction& function);
bool Matching(T3Tree_Node* node, Mode mode, CFunction& function);
bool Behaviour(T3Tree_Node* node, Mode mode, CFunction& function);
bool PreDefinedFunction(T3Tree_Node* node, Mode mode, CFunction& function);
bool Compound(T3Tree_Node* node, Mode mode, CFunction& function);

void CompoundValue(T3CompoundValue* node, Mode mode, CFunction& function);
/// The alternative of an `anytype` that stands for a declared type, by the order in which it lists them: each
/// module has a list of its own.
int64_t AlternativeOfAnyType(T3Tree_Node* anytype, T3Tree_Node* type_decl);

/// The location of the text of a pattern: a T3CharStringMatch or a _T3SpecialStringMatch.
std::string PatternText(T3Tree_Node* node, CFunction& function);
/// The words of C for a character.
std::string CharacterText(char c);
std::string WideCharacterText(unsigned group, unsigned plane, unsigned row, unsigned cell);
/// The call that gives the value of a node, which is of this type, in C.
const char* RTS2CFunction(T3Tree_Node* node, const T3Tree_Node* type);

/// The call that sets a run-time value of the node's type to its C location.
void SetFromC(T3Tree_Node* node, std::string_view target, CFunction& function);
}  // namespace cg
