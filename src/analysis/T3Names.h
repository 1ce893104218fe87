// Names and scopes: the maps of declarations, the look-up that gathers a name's declarations from all
// enclosing scopes and classifies them, labels and groups, and the built-in types.
#pragma once

#include "frontend/T3Tree.h"

// The singletons of types; each stands for one type everywhere, and is made by InitBuiltinTypes.
extern T3Tree_Node *gT3NoType, *gT3ErrorType, *gT3WildcardType, *gT3AnyAnyType;
extern T3Tree_Node *gT3IntegerType, *gT3FloatType, *gT3BooleanType, *gT3ObjectIdentifierType, *gT3VerdictType,
    *gT3BitStringType, *gT3OctetStringType, *gT3HexStringType, *gT3CharStringType,
    *gT3UniversalCharStringType, *gT3TimerType, *gT3CharacterType, *gT3UniversalCharacterType,
    *gT3DefaultType, *gT3AnyType, *gT3AddressType;
// Generic types: each matches every type of its class.
extern T3Tree_Node *gT3AnyEnumeratedType, *gT3AnyComponentType, *gT3AnyAddressType, *gT3AnyPortType,
    *gT3AnyRecordType, *gT3AnyRecordOfType, *gT3AnyArrayType, *gT3AnySetType, *gT3AnySetOfType,
    *gT3AnyUnionType, *gT3AnyModuleType;

/// A new scope over `map` (which the caller keeps alive) inside `outer`.
T3Tree_Node* MakeMapEnv(T3Tree_Node* outer, T3DeclMap* map);
/// A new scope of labels or groups.
T3Tree_Node* MakeEnv(T3Tree_Node* outer, T3Tree_Node* head);

/// Enters a declaration or formal parameter, with the literals of an enumeration type, into `map`.
void RegisterDecl(T3Tree_Node* decl, tIdent moduleId, T3DeclMap*& map);
/// The declaration, or type of an enumeration literal, that a name means in `env`; T3NoDecl after a
/// failure, which is reported once for each key of a scope. `report`: whether "no declaration" is reported.
T3Tree_Node* NewIdentify1(T3Tree_Node* env, tIdent name, tIdent qualifier, const tPosition& position,
                          bool report);
T3Tree_Node* NewIdentifyId(T3Tree_Node* env, T3Tree_Node* identifier);
/// Each looks the entity's own name up, which reports duplicates.
T3Tree_Node* NewIdentifyDecl(T3Tree_Node* env, T3Tree_Node* decl);
T3Tree_Node* NewIdentifyFormalPar(T3Tree_Node* env, T3Tree_Node* par);
T3Tree_Node* IdentifyQualified(T3Tree_Node* env, T3Tree_Node* qualifier);
void CollectDecls(T3Tree_Node* env, tIdent name, tIdent qualifier, T3NodeSet& set);
bool IsDeclared(const T3Tree_Node* node);
bool IsLocalDecl(const T3Tree_Node* node);
/// A user's definition of `address`: a T3TypeDecl of that name whose type is not T3Address.
bool IsAddressRedefinition(const T3Tree_Node* decl);
/// The type of a type declaration; of an import that of the imported one, followed to the end.
T3Tree_Node* ExtractTypeFromDecl(T3Tree_Node* decl);
T3Tree_Node* GetTypeIdentifierNode(T3Tree_Node* decl);
T3Tree_Node* ResolveExplicifiedType(T3Tree_Node* env, T3Tree_Node* type_reference);
bool DefUsePositionsConsistent(T3Tree_Node* def, T3Tree_Node* use);
bool NewGroupUnique(T3Tree_Node* list, tIdent name);
bool VisibleUnqualified(T3Tree_Node* module, T3Tree_Node* import_decl);
/// The label statement, or T3NoStmt.
T3Tree_Node* FindLabel(T3Tree_Node* labelEnv, tIdent label);
T3Tree_Node* FindLabelFromHere(T3Tree_Node* env, T3Tree_Node* stmt, tIdent label);
/// The first name that occurs twice, or NoIdent.
tIdent DuplicatesInStructuredTypeBody(T3Tree_Node* type);
tIdent DuplicatesInEnumType(T3Tree_Node* type);
tIdent FindDuplicateParameterName(T3Tree_Node* fpl);
bool IsAsnNullType(const T3Tree_Node* decl);
/// Empties the name caches of all scopes.
void ClearNameCache();

/// Sets the place records of a whole T3Builtin root, builds its scopes, and registers its declarations.
/// `declsOut` of each list lies on the head of the list (cold). Runs first in T3Eval::Evaluate.
void SetPlaces(T3Tree_Node* root);
/// The same for a subtree made later, which stands where `like` stands.
void SetPlacesLike(T3Tree_Node* subtree, const T3Tree_Node* like);
