// Information objects: the sets that table constraints name, their objects, and the fields of these.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "asn1/model/AsnModel.h"

namespace asn1 {
/// An object or a set of objects is the record of a value.
using AsnObject = AsnValue;
using AsnObjectSet = AsnValue;

/// The set that a table constraint names, references followed; false where there is none.
AsnObjectSet forObjectSet(const AsnConstraint& constraint);
/// The definitions of sets in a module.
std::vector<AsnObjectSet> ObjectSetsOf(ModRec& module);
/// The name of a set with underscores; empty for one that was written at its place of use.
std::string getObjectSetRef(const AsnObjectSet& set);
/// All objects of a set, those of sets within it included, in their order; a set without an end is a fatal
/// error.
std::vector<AsnObject> constructSetObjects(const AsnObjectSet& set);

using FieldValueCall = std::function<void(const AsnValue& field)>;
/// The fields for which an object has a value.
void forEachFieldValue(const AsnObject& object, const FieldValueCall& call);
/// The field's name without "&" and with underscores.
std::string getObjClassFieldRef(const AsnValue& field);
bool isTypeFieldValue(const AsnValue& field);
/// Whether the class of the object gives the field a type of its own, so that its value is an ordinary one.
bool isFixedTypeValueFieldValue(const AsnObject& object, const AsnValue& field);
/// The type that a type field stands for.
AsnType forTypeFieldValue(const AsnValue& field);

/// The definitions that objects of a module, those within its sets included, have for type fields.
std::vector<AsnType> TypesOfObjects(ModRec& module);

/// The class field that a component or open type was written by, as `getObjClassFieldRef` names it; empty for
/// none.
std::string ClassFieldOf(const AsnType& type);
/// The component that the at-notation of a table constraint names; false where the notation has not just one
/// step.
AsnType forAtNotation(const AsnConstraint& constraint);
}  // namespace asn1
