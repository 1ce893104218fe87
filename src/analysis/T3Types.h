// Types of entities and expressions: three views of each type, candidates from the context, exclusion in
// two passes, compatibility, and the messages of type faults.
#pragma once

#include <string>

#include "frontend/T3Tree.h"

// Accessors compute at the first read and may be called on a node of any module whose places are set.

/// The declaration, formal parameter, type (of an enumeration literal) or field that a reference means;
/// T3NoDecl (or gT3ErrorType for a field) where there is none. Reports the failure once.
T3Tree_Node* Def(T3Tree_Node* reference);
// Types of types, declarations, formal and actual parameters.
T3Tree_Node* AbsoluteTypeDef(T3Tree_Node* entity);
T3Tree_Node* LocalTypeDef(T3Tree_Node* entity);
T3Tree_Node* BaseTypeDef(T3Tree_Node* entity);
// Types of expressions, template definitions and template references. Inside a body these are final only
// after InferExpression ran on the outermost expression; the accessors see to that.
T3Tree_Node* ExpressionAbsoluteType(T3Tree_Node* expression);
T3Tree_Node* ExpressionLocalType(T3Tree_Node* expression);
T3Tree_Node* ExpressionBaseType(T3Tree_Node* expression);

/// The candidates that a context gives: `types1` holds local views, `types2` base views.
struct T3Candidates {
  T3TypeSet types1;
  T3TypeSet types2;
  T3ValidSet valid;

  T3Candidates() = default;
  T3Candidates(T3Tree_Node* local, T3Tree_Node* base) : types1{local}, types2{base}, valid{true} {}
  size_t size() const { return types1.size(); }
};
/// Infers a whole expression from its context's candidates, children included, and reports what fails.
void InferExpression(T3Tree_Node* expression, T3Candidates candidates, bool strict);

void Exclude(T3Candidates& candidates, T3Tree_Node* local, T3Tree_Node* base, bool update, bool strict);
void ExcludeTypeSet(T3Candidates& candidates, const T3TypeSet& locals, const T3TypeSet& bases);
void Invalidate(T3Candidates& candidates, T3Tree_Node* type);
T3Tree_Node* Check(const T3Candidates& candidates);
T3Tree_Node* CheckTypeSet(const T3Candidates& candidates, const T3TypeSet& allowed);
bool IsCompatible(T3Tree_Node* a, T3Tree_Node* b);
bool IsSameBuiltinType(T3Tree_Node* a, T3Tree_Node* b);
bool IsStringCompatible(T3Tree_Node* a, T3Tree_Node* b);
T3Tree_Node* EvaluateStringType(T3Tree_Node* a, T3Tree_Node* b);
bool CheckStrictTypeCompatibility(T3Tree_Node* a, T3Tree_Node* b);
bool AreComponentsAssignCompatible(T3Tree_Node* a, T3Tree_Node* b);
void ReportTypeError(T3Tree_Node* node, bool report);
std::string Type2String(T3Tree_Node* type);
T3Tree_Node* GetAddressBaseType(T3Tree_Node* type);
T3Tree_Node* FindName(T3Tree_Node* scope, tIdent name, T3Tree_Node* moduleRef);
T3Tree_Node* FindName1(T3Tree_Node* scope, tIdent name, tIdent moduleId);
/// The position of a field from 0, `vexa_index` + 1 of a parameter; -1 where absent.
long GetAlternativeIndex(T3Tree_Node* node, tIdent name, bool must_exist);
T3Tree_Node* FindIndex(T3Tree_Node* list, long n);
int64_t GetEnumValueNumber(T3Tree_Node* type, tIdent name);
void AssignEnumValues(T3Tree_Node* type);
bool TypeBodyContainsField(T3Tree_Node* type, tIdent field);
bool IsFieldOptional(T3Tree_Node* field);
T3Tree_Node* DerefType(T3Tree_Node* type);
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
bool IsValidAddressRef(T3Tree_Node* reference);
/// False when the text does not fit 64 bits.
bool CheckIntegerSize(const char* text);
int RequiredDigits(int64_t value, int64_t base);
void ClearTypeValidSets();
