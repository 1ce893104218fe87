// What the units of the expression generator share.
#pragma once

#include <string>
#include <vector>

#include "FileAPI/CBase.h"
#include "driver/diagnostics/T3Exception.h"
#include "generator/expressions/CGExpression.h"
#include "generator/text/LUMOS.h"

namespace cg {
using Mode = vexa_allocation_mode_t;

/// The text of a call.
std::string Call(std::string_view function, const std::vector<std::string>& arguments);
std::string Call(std::string_view function, CWords arguments);
/// The locations of an operand, which is evaluated.
std::string InC(T3Tree_Node* node, CFunction& function);
std::string InRTS(T3Tree_Node* node, Mode allocation, CFunction& function);
/// Reserves a run-time value for a node, and returns its location.
std::string AllocateRTSValue(T3Tree_Node* node, Mode allocation, CFunction& function);
/// Sets where the result of a node is, to the end of the statement.
void StoreCLocation(T3Tree_Node* node, const std::string& text);
void StoreRTSLocation(T3Tree_Node* node, const std::string& text);
/// A temporary of the statement.
std::string Temporary(const std::string& type, CFunction& function);
/// The node's type behind names and subtypes.
T3Tree_Node* TypeOf(T3Tree_Node* expression);
std::string CastToUnsignedLong(const std::string& text);
std::string CastToLongLong(const std::string& text);
/// Stands while statements are written that run only on a condition: what the module is initialized with must
/// not be made there.
class Conditional {
 public:
  Conditional();
  Conditional(const Conditional&) = delete;
  Conditional& operator=(const Conditional&) = delete;
  ~Conditional();
};
/// What is thrown for constructs that no code is generated for.
class not_supported : public internal_exception {
 public:
  not_supported(int line, const std::string& reason)
      : internal_exception("CGExpression", line, "CGExpression", reason), reason_(reason) {}
  const std::string& reason() const { return reason_; }

 private:
  std::string reason_;
};
[[noreturn]] void NotSupported(T3Tree_Node* node);
/// The call that ends the test case with an error and this text.
void ReportAtRunTime(const std::string& text, CFunction& function);

/// Stands while the left side of an assignment is evaluated: fields that are missing are made on the way.
class LeftSide {
 public:
  LeftSide();
  LeftSide(const LeftSide&) = delete;
  LeftSide& operator=(const LeftSide&) = delete;
  ~LeftSide();
};
bool IsLeftSide();
/// Stands while an index on the left side is evaluated, which is read only.
class ReadSide {
 public:
  ReadSide();
  ReadSide(const ReadSide&) = delete;
  ReadSide& operator=(const ReadSide&) = delete;
  ~ReadSide();

 private:
  int left_sides_;
  int probes_;
};
/// Stands while it is asked whether something is there: what is missing on the way is no fault.
class Probe {
 public:
  Probe();
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;
  ~Probe();
};
bool IsProbe();
/// The location of a place that may be written later, or not at all: what is missing above it, and an
/// alternative that is not chosen, comes into being with the first write. `makes_field` also makes an omitted
/// field; otherwise its location is that of `omit`.
std::string PlaceToWrite(T3Tree_Node* reference, bool makes_field, CFunction& function);

/// Stand while references to templates mean the template, and while they mean its value, which is the rule.
class TemplateMode {
 public:
  TemplateMode();
  TemplateMode(const TemplateMode&) = delete;
  TemplateMode& operator=(const TemplateMode&) = delete;
  ~TemplateMode();

 private:
  bool before_;
};
class ValueMode {
 public:
  ValueMode();
  ValueMode(const ValueMode&) = delete;
  ValueMode& operator=(const ValueMode&) = delete;
  ~ValueMode();

 private:
  bool before_;
};
bool IsTemplateMode();
/// Stands while the functions of a template are written, which find what a module declares by its name.
class ReferencesViaSymbolTable {
 public:
  ReferencesViaSymbolTable();
  ReferencesViaSymbolTable(const ReferencesViaSymbolTable&) = delete;
  ReferencesViaSymbolTable& operator=(const ReferencesViaSymbolTable&) = delete;
  ~ReferencesViaSymbolTable();

 private:
  bool before_;
};
/// Stands while the functions of a template with parameters are written that is declared in a block: what
/// else is local there is found by its name when they run.
class TemplateOfBlock {
 public:
  explicit TemplateOfBlock(T3TemplateDecl* decl);
  TemplateOfBlock(const TemplateOfBlock&) = delete;
  TemplateOfBlock& operator=(const TemplateOfBlock&) = delete;
  ~TemplateOfBlock();

 private:
  T3TemplateDecl* before_;
};
/// What a declaration at module level, or an import, is called here: its name in C, or its entry in the
/// symbol table.
std::string AccessNamedEntity(T3Tree_Node* decl);
/// The C expressions of a function and of its type.
struct Callee {
  std::string function;
  std::string type;
};
Callee CalleeOf(T3Tree_Node* decl);
/// A declared template, or the import of one.
bool IsTemplateDecl(T3Tree_Node* decl);
/// True for a matching mechanism, a reference to a template, and a compound value with one of them in it.
bool HoldsTemplate(T3Tree_Node* node);
/// `infinity`, also with a minus.
bool IsInfinityExpression(T3Tree_Node* node);
/// The place of a reference in a template in line that stands for one of the arguments of its functions.
inline constexpr int kPassedToTemplate = 7;

/// False for a qualifier that names a declaration of another module, or an enumeration value.
bool IsField(T3Qualifier* node);
/// What a field is a part of: a module before the name of a type in `anytype` is none.
T3Tree_Node* WholeOf(T3Qualifier* field);
/// The place of a field among the fields of the whole; in `anytype`, of the type that it names.
int64_t PlaceOfField(T3Qualifier* field);

/// True for a literal with characters beyond ASCII.
bool IsWideLiteral(T3Tree_Node* node);

// Each returns false for a node of another group.
bool Operator(T3Tree_Node* node, Mode allocation, CFunction& function);
bool Literal(T3Tree_Node* node, Mode allocation, CFunction& function);
bool Reference(T3Tree_Node* node, Mode allocation, CFunction& function);
bool Matching(T3Tree_Node* node, Mode allocation, CFunction& function);
bool Behaviour(T3Tree_Node* node, Mode allocation, CFunction& function);
bool PreDefinedFunction(T3Tree_Node* node, Mode allocation, CFunction& function);

void CompoundValue(T3CompoundValue* node, Mode allocation, CFunction& function);
/// The alternative of an `anytype` that stands for a declared type, by the order in which it lists them: each
/// module has a list of its own.
int64_t AlternativeOfAnyType(T3Tree_Node* anytype, T3Tree_Node* type_decl);
/// Whether an operation carries a parameter: `in` goes with calls, `out` with replies, `inout` with both.
bool FieldValueIsRelevant(T3Tree_Node* formal, vexa_template_mode_t mode);

/// The location of the text of a pattern: a T3CharStringMatch or a _T3SpecialStringMatch.
std::string PatternText(T3Tree_Node* node, CFunction& function);
/// The words of C for a character.
std::string CharacterText(char c);
std::string WideCharacterText(unsigned group, unsigned plane, unsigned row, unsigned cell);
/// The call that gives the value of this type in C.
const char* RTS2CFunction(T3Tree_Node* type);

/// The call that sets a run-time value of the node's type to its C location.
void SetFromC(T3Tree_Node* node, const std::string& target, CFunction& function);
}  // namespace cg
