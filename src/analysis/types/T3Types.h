// Types of entities and expressions: three views of each type, candidates from the context, exclusion in
// two passes, compatibility, and the messages of type faults.
//
// The local view is the type node that an entity's declaration leads to, imports followed; the absolute
// view is the same node once it is known to be a type; the base view has subtypes removed as well.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "analysis/types/T3Candidates.h"
#include "frontend/T3Tree.h"

// Accessors compute at the first read and may be called on a node of any module whose places are set.

/// The declaration, formal parameter, type (of an enumeration literal) or field that a reference means;
/// T3NoDecl (or gT3ErrorType for a field) where there is none. Reports the failure once.
T3Tree_Node* Def(T3Tree_Node* reference);
/// The declaration behind an import, followed to the end; any other node is its own.
T3Tree_Node* BehindImport(T3Tree_Node* def);
// Types of types, declarations, formal and actual parameters, fields.
T3Tree_Node* AbsoluteTypeDef(T3Tree_Node* entity);
T3Tree_Node* LocalTypeDef(T3Tree_Node* entity);
T3Tree_Node* BaseTypeDef(T3Tree_Node* entity);
/// The views of one entity at once; the absolute view is the local one.
struct T3TypeViews {
  T3Tree_Node* local;
  T3Tree_Node* base;
};
T3TypeViews TypeViewsOf(T3Tree_Node* entity);
// Types of expressions, template definitions and template references. Inside a body these are final only
// after InferExpression ran on the outermost expression; the accessors see to that.
T3Tree_Node* ExpressionAbsoluteType(T3Tree_Node* expression);
T3Tree_Node* ExpressionLocalType(T3Tree_Node* expression);
T3Tree_Node* ExpressionBaseType(T3Tree_Node* expression);

/// What became of an inference: a type, a failure that has its message, or one that its context reports.
enum class T3Inference { Good, Reported, Unreported };

/// Infers a whole expression or template definition from its context's candidates, children included, and
/// reports what fails, unless `report` is false: then a failure of the outermost node is left to the caller.
T3Inference InferExpression(T3Tree_Node* expression, T3Candidates candidates, bool strict,
                            bool report = true);
/// What the template of a port statement, or an actual parameter, is inferred as.
enum class T3TemplateUse { Other, ActualPar, UnknownPar, Port };
T3Inference InferTemplate(T3Tree_Node* definition, T3Candidates candidates, bool strict, T3TemplateUse use);

void Exclude(T3Candidates& candidates, T3Tree_Node* local, T3Tree_Node* base, bool update, bool strict);
/// `locals` and `bases` are parallel.
void ExcludeTypeSet(T3Candidates& candidates, std::span<T3Tree_Node* const> locals,
                    std::span<T3Tree_Node* const> bases);
void Invalidate(T3Candidates& candidates, T3Tree_Node* type);
T3Tree_Node* Check(const T3Candidates& candidates);
T3Tree_Node* CheckTypeSet(const T3Candidates& candidates, const T3TypeSet& allowed);
bool IsCompatible(T3Tree_Node* a, T3Tree_Node* b);
bool IsSameBuiltinType(T3Tree_Node* a, T3Tree_Node* b);
bool IsStringCompatible(T3Tree_Node* a, T3Tree_Node* b);
T3Tree_Node* EvaluateStringType(T3Tree_Node* a, T3Tree_Node* b);
bool CheckStrictTypeCompatibility(T3Tree_Node* a, T3Tree_Node* b);
bool AreComponentsAssignCompatible(T3Tree_Node* a, T3Tree_Node* b);

/// The message of a failed node; nothing when `report` is false.
void ReportTypeError(T3Tree_Node* node, bool report);
/// The same for a node that had `valid` candidates left.
void ReportTypeError(T3Tree_Node* node, size_t valid, T3TemplateUse use);
std::string Type2String(T3Tree_Node* type);
/// For the built-in `address` the base type of the user's definition that reaches the module, where there
/// is one; any other type is its own.
T3Tree_Node* GetAddressBaseType(T3Tree_Node* type);
/// The type that is written for an entity, or what it means where that is `address`; a subtype is one.
T3Tree_Node* LocalBehindAddress(T3Tree_Node* entity);
/// True for the built-in `address` with a user's definition.
bool IsRedefinedAddress(T3Tree_Node* type);

T3Tree_Node* FindName(T3Tree_Node* scope, tIdent name, T3Tree_Node* moduleRef);
T3Tree_Node* FindName1(T3Tree_Node* scope, tIdent name, tIdent moduleId);
/// The position of a field from 0, `vexa_index` + 1 of a parameter; -1 where absent.
long GetAlternativeIndex(T3Tree_Node* node, tIdent name, bool must_exist);
T3Tree_Node* FindIndex(T3Tree_Node* list, long n);
/// The number of a literal; nothing where the enumeration has none of that name.
std::optional<int64_t> EnumValueNumber(T3EnumType* type, tIdent name);
/// The same where it is known to have it.
int64_t GetEnumValueNumber(T3Tree_Node* type, tIdent name);
/// Gives each literal its number; reports two that are equal, once, at the type.
void AssignEnumValues(T3Tree_Node* type);
bool IsFieldOptional(T3Tree_Node* field);
/// The type node behind references and declarations; a subtype is one.
T3Tree_Node* DerefType(T3Tree_Node* type);
/// The element type of an array, `record of` or `set of`, else gT3ErrorType.
T3Tree_Node* ElementType(T3Tree_Node* base);
/// The formal parameters of a function-like declaration, template or signature; T3NoFormalPar for others.
T3Tree_Node* FormalParametersOf(T3Tree_Node* def);
bool IsWildcardType(const T3Tree_Node* type);
bool ExpandWildcardType(const T3Tree_Node* wildcard, const T3Tree_Node* type);
bool IsStringType(T3Tree_Node* type);
bool IsCharStringType(T3Tree_Node* type);
bool IsUniversalCharStringType(T3Tree_Node* type);
bool IsHomogeneousType(T3Tree_Node* type);
bool IsRecordOfType(T3Tree_Node* type);
bool IsSetOfType(T3Tree_Node* type);
bool IsRecordOrSetType(T3Tree_Node* type);
bool IsBuiltinType(T3Tree_Node* type);
bool IsReferenceToBuiltin(T3Tree_Node* type);
bool IsSignatureType(T3Tree_Node* type);
bool IsArrayType(T3Tree_Node* type);
bool IsTimer(T3Tree_Node* type);
bool IsTimerArray(T3Tree_Node* type);
bool IsPortOrPortArray(T3Tree_Node* type);
/// True for ports, timers and arrays of these, which are objects of their component and no values.
bool IsObjectType(T3Tree_Node* type);
/// True for strings, lists and arrays, whose parts stand in a row and can be cut out and turned round.
bool IsRowOfParts(T3Tree_Node* type);
bool IsValidAddressRef(T3Tree_Node* reference);
/// False when the text does not fit 64 bits.
bool CheckIntegerSize(const char* text);
int RequiredDigits(int64_t value, int64_t base);

/// The types that a port type lets in or out, in parallel sets of views; made at the first read.
struct T3PortTypes {
  const T3TypeSet& absolute;
  const T3TypeSet& local;
  const T3TypeSet& base;
  const T3SharedTypes& shared;
};
T3PortTypes PortTypesIn(T3Tree_Node* port_type);
T3PortTypes PortTypesOut(T3Tree_Node* port_type);
/// The same of the types that a signature may raise.
T3PortTypes ExceptionsOf(T3SignatureType* signature);
/// All type declarations that reach a module, imports and built-in types included, in order.
const T3NodeList& AllTypesOf(T3Tree_Node* module);
/// True for what `all` stands for in a port's type list.
bool PartOfAllTypes(T3Tree_Node* base);

/// Infers the variables of a parameter redirection from the signature, or by themselves where it is unknown.
void InferRedirectedParams(T3Tree_Node* values, T3Tree_Node* signature);
