// ASN.1 definitions as objects: types with their components and constraints, values, modules. A handle is a
// module and the number of a record in it, is copied freely, and holds as long as the run's syntax files. One
// without a record is false.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "asn1/front/SyntaxTree.h"
#include "asn1/front/WideInteger.h"

namespace asn1 {

struct AsnHandle {
  ModRec* module = nullptr;
  int number = 0;
  explicit operator bool() const { return number != 0; }
  friend bool operator==(const AsnHandle& a, const AsnHandle& b) = default;
};

struct AsnType : AsnHandle {
  const TNode& node() const { return tNode(*module, number); }
};
struct AsnValue : AsnHandle {
  const VNode& node() const { return vNode(*module, number); }
};
struct AsnConstraint : AsnHandle {
  const SubRec& node() const { return subRec(*module, number); }
};

AsnType newAsnType(ModRec& module, int number);
AsnValue newAsnValue(ModRec& module, int number);
AsnConstraint newAsnConstraint(ModRec& module, int number);

// --- Modules

using ModuleCall = std::function<void(ModRec&)>;
/// The module's name with underscores; its file prefix for generation.
std::string getModuleRef(const ModRec& module);
std::string getModulePrefix(const ModRec& module);
/// The directory that one of the module's options names, with its separator; empty for the working directory.
std::string DirectoryOption(const ModRec& module, const char* option);
/// Each module that this one imports, directly or not, once, imports first; never the module itself.
void forEachExportingModule(ModRec& module, const ModuleCall& call);

// --- Types

using TypeCall = std::function<void(const AsnType&, int index)>;
/// The definitions of types in a module, in their order; classes are none.
void forEachType(ModRec& module, const TypeCall& call);
/// The components of a structured type in their order, extension markers included; the index counts without
/// them.
void forEachTypeComp(const AsnType& type, const TypeCall& call);
std::vector<AsnType> TypeComps(const AsnType& type, bool with_markers = false);
/// The component of a structured type that has a name, as getTypeCompId gives it; false where there is none.
AsnType findComponent(const AsnType& type, const std::string& name);
/// The element of a SEQUENCE OF or SET OF.
AsnType forTypeElem(const AsnType& type);

/// The main type as written; that behind all references.
MainType getTypeMainType(const AsnType& type);
MainType getBaseTypeMainType(const AsnType& type);
const char* getTypeMainTypeStri(MainType type);
/// A class, the predefined ones and other names of classes included.
bool isClassType(const AsnType& type);
/// The type that this one refers to by name: the next one, and the one at the end of the chain of references;
/// the type itself where it refers to none. A chain without an end is a fatal error.
AsnType forSynonymType(const AsnType& type);
AsnType forBaseType(const AsnType& type);
/// The type at the end of the references by name alone: selections stay what they are.
AsnType forNamedType(const AsnType& type);
/// The alternative that a selection type stands for.
AsnType forSelectionType(const AsnType& type);
/// One step towards the base, by a name or a selection; false where the type is its own base.
AsnType forTypeBehind(const AsnType& type);

/// The name with underscores for hyphens; "?!?" for a type without one.
std::string getTypeRef(const AsnType& type);
std::string getTypeCompId(const AsnType& type);
int getTypeCompStatus(const AsnType& type);
bool isDefinedType(const AsnType& type);
/// A definition that is no more than another type's name.
bool isSynonymType(const AsnType& type);
/// A component or element, or a definition, that refers to a type by name.
bool isReference(const AsnType& type);
bool isStructuredType(const AsnType& type);
bool isListType(const AsnType& type);
bool isLeafType(const AsnType& type);
bool isTypeExtensionmarker(const AsnType& type);
/// Whether a component may be missing without having a default: an OPTIONAL one, and an extension addition of
/// a structure, which an earlier version of the type does not send; whether it is there in each value.
bool isOptionalTypeComp(const AsnType& type);
bool isMandatoryTypeComp(const AsnType& type);
bool isExtensibleEnumeratedList(const AsnType& type);
bool isExtensionAdditionComponent(const AsnType& type);
int getNrOfTypeComps(const AsnType& type);
int getNrOfOptionalTypeComps(const AsnType& type);
/// The place of a component among its structure's, markers not counted.
int getTypeCompNbr(const AsnType& type);
int getUniqueTypeNr(const AsnType& type);
int getTypeDefinitionLine(const AsnType& type);
AsnType getFatherOfTypeComp(const AsnType& type);
/// The definition in which a component or element stands.
AsnType getDefinitionOf(const AsnType& type);
AsnValue forDefaultValue(const AsnType& type);
/// By its name in "-ENTRY=" options or its flag.
bool isEntryType(const AsnType& type);
/// The definition of a number or name in a module; false where there is none.
AsnType forTypeByUniqueNr(ModRec& module, int unique);
AsnType findTypeById(ModRec& module, const std::string& reference);

// --- Tags, outermost first, with the built-in one

struct AsnTag {
  TagClass tag_class;
  int number;
  bool constructed;
};
std::vector<AsnTag> TagsOf(const AsnType& type);

// --- Named numbers, enumeration items

using ValueCall = std::function<void(const AsnValue&, int index)>;
void forEachNamedNumber(const AsnType& type, const ValueCall& call);

// --- Values

void forEachValue(ModRec& module, const ValueCall& call);
MainType getValueMainType(const AsnValue& value);
/// The value behind all references.
AsnValue skipValues(const AsnValue& value);
std::string getValueRef(const AsnValue& value);
AsnType getTypeOfValue(const AsnValue& value);
void forEachValueComp(const AsnValue& value, const ValueCall& call);
bool booleanValue(const AsnValue& value);
/// A number; the nearest one of 64 bits where it lies beyond.
Wide WideValue(const AsnValue& value);
int64_t int64Value(const AsnValue& value);
std::string integerValueStri(const AsnValue& value);
const std::string& ValueText(const AsnValue& value);

/// A real number as ASN.1 writes it.
struct RealValue {
  enum Special { None, Zero, PlusInfinity, MinusInfinity } special = None;
  int64_t mantissa = 0;
  int base = 10;
  int exponent = 0;
};
RealValue realValue(const AsnValue& value);
double retRealVal(const RealValue& value);

// --- Constraints

using ConstraintCall = std::function<void(const AsnConstraint&, int index)>;
/// The constraints that stand at the type itself, as a chain.
AsnConstraint firstConstraint(const AsnType& type);
AsnConstraint nextConstraint(const AsnConstraint& constraint);
void forEachLocalTypeConstraint(const AsnType& type, const ConstraintCall& call);
bool isLocalTypeConstraints(const AsnType& type);
/// Whether the type or one that it refers to has constraints.
bool isConstraints(const AsnType& type);
ConstraintKind getConstraintKind(const AsnConstraint& constraint);
AsnConstraint FirstOperand(const AsnConstraint& constraint);
AsnConstraint SecondOperand(const AsnConstraint& constraint);
/// The size or range of sizes that a constraint names, as a length of TTCN-3 can; false where it is no SIZE,
/// or names more than one, or may be extended.
AsnConstraint SizeAsLength(const AsnConstraint& constraint);
/// The value of a single value or the low end of a range, and the high end; false where it is MIN or MAX.
AsnValue LowValue(const AsnConstraint& constraint);
AsnValue HighValue(const AsnConstraint& constraint);
AsnType forContainedSubtypeConstraint(const AsnConstraint& constraint);
}  // namespace asn1
