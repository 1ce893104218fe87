// Names and scopes: the maps of declarations, the look-up that gathers a name's declarations from all
// enclosing scopes and classifies them, labels and groups, and the built-in types.
#pragma once

#include "frontend/T3Tree.h"

// The singletons of types, as the module under analysis sees them. Each is one node for all TTCN-3 modules,
// but for gT3AddressType and gT3AnyType: these mean something else in each module, and are new for each.
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
/// The scope of a list of declarations: its map, made by SetPlaces; an empty one for an empty list.
T3DeclMap* DeclsOut(T3Tree_Node* decls);
/// The declaration, or type of an enumeration literal, that a name means in `env`; T3NoDecl after a
/// failure, which is reported once for each key of a scope. `report`: whether "no declaration" is reported.
T3Tree_Node* NewIdentify1(T3Tree_Node* env, tIdent name, tIdent qualifier, const tPosition& position,
                          bool report);
/// The same without reports and without trace in the caches.
T3Tree_Node* IdentifyQuietly(T3Tree_Node* env, tIdent name, tIdent qualifier);
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
/// The position of a node of any kind; NoPosition for the kinds that have none.
tPosition PositionOf(const T3Tree_Node* node);
/// The type of a type declaration; of an import that of the imported one, followed to the end. Any other
/// node yields gT3ErrorType.
T3Tree_Node* ExtractTypeFromDecl(T3Tree_Node* decl);
/// The reference that an instance declaration has as its type, or as the element type of its array;
/// T3NoExpression where it has another type.
T3Tree_Node* GetTypeIdentifierNode(T3Tree_Node* decl);
T3Tree_Node* ResolveExplicifiedType(T3Tree_Node* env, T3Tree_Node* type_reference);
/// False when `use` stands before the local declaration `def` of the same owner.
bool DefUsePositionsConsistent(T3Tree_Node* def, T3Tree_Node* use);
/// True when no group of a T3Env chain, or of a list of declarations, has the name.
bool NewGroupUnique(T3Tree_Node* list, tIdent name);
/// True when the import's object is reached in the module by its plain name.
bool VisibleUnqualified(T3Tree_Node* module, T3Tree_Node* import_decl);
/// The label statement, or T3NoStmt.
T3Tree_Node* FindLabel(T3Tree_Node* labelEnv, tIdent label);
T3Tree_Node* FindLabelFromHere(T3Tree_Node* env, T3Tree_Node* stmt, tIdent label);
/// The first name that occurs twice, or NoIdent.
tIdent DuplicatesInStructuredTypeBody(T3Tree_Node* type);
tIdent DuplicatesInEnumType(T3Tree_Node* type);
tIdent FindDuplicateParameterName(T3Tree_Node* fpl);
bool IsAsnNullType(const T3Tree_Node* decl);
/// The identifier of a T3ImportIdentifier, or of a group reference without a path; NoIdent for others.
tIdent Ref2Id(T3Tree_Node* reference);
/// The name by which a declaration is known in its module. An import, whose own `name` says nothing, has the
/// name of what it imports; NoIdent where that is no single declaration.
tIdent DeclaredName(T3Tree_Node* decl);
/// The module that an import statement or declaration names.
tIdent ImportedModule(const _T3ImportDecl* import);
/// Empties the name caches of all scopes.
void ClearNameCache();

/// The definitions of `address` that reach a module, imported ones included, in the order of the list.
T3NodeList AddressDefinitions(T3Tree_Node* module);
/// Reports each definition of `address` that reaches the module of a T3Builtin root, if there are several.
void CheckAddressConflicts(T3Tree_Node* root);

/// Sets the place records of a whole T3Builtin root, parents and child slots, builds its scopes, and
/// registers its declarations. The map of a list of declarations lies on the head of the list (cold). Sets
/// vexa_index, vexa_place, has_component, has_return_type, vexa_component_type and visible_unqualified.
/// Runs first in T3Eval::Evaluate.
void SetPlaces(T3Tree_Node* root);
/// The same for a subtree made later, which stands where `like` stands.
void SetPlacesLike(T3Tree_Node* subtree, const T3Tree_Node* like);
