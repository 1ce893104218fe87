// The C structures, called homes, that hold decoded ASN.1 values: what the tool that declares them, the tools
// that write codecs and the compiler, which writes conversions, have to agree on.
//
// A definition has a C type of its name. A SEQUENCE or SET is a structure with the control member `compmask`
// where components may be missing, a bit for each component; a CHOICE one with `choice`, the index of the
// alternative, and an anonymous union; a SEQUENCE OF or SET OF one with the count `n` and the array `elem`. A
// structure inside another one lies in it, unless that would never end: then the component is a pointer.
#pragma once

#include <string>

#include "asn1/model/AsnModel.h"

namespace asn1 {

/// How a value is stored.
enum ValueForm {
  VF_NONE = 0,
  VF_BOOL = 1,
  VF_UI32 = 4,
  VF_I32 = 8,
  VF_I64 = 9,
  VF_REAL64 = 11,
  VF_DYNS = 20,
  VF_LIST = 21,
  VF_FRM = 22,
  VF_NULL = 23,
  VF_STRU = 24,
  VF_ANY = 25,
  VF_OBJI = 27,
  VF_EXTERNAL_1990 = 29,
  VF_OPEN = 31,
};

/// The form of a type, references followed.
ValueForm cGetVF(const AsnType& type);
/// ANY, open types: what holds an encoding that nobody looks into.
bool cIsFrameType(const AsnType& type);
/// Whether the type, references followed, is a structure or a list; an empty SEQUENCE is one.
bool IsStructured(const AsnType& type);
/// The C type that holds values of a leaf, whatever it is called.
const char* PredefinedType(const AsnType& type);
/// The C type of a definition, component or element.
std::string cBaseTypeId(const AsnType& type);
/// The C name of a component.
std::string cComponentId(const AsnType& component);
/// Whether a component of a structure is stored as a pointer to its type.
bool IsByPointer(const AsnType& component);
/// Whether a structure has the control member `compmask`, and its number of words of 32 bits; 0 without it.
int ControlWords(const AsnType& type);
/// The bit of a component in its word, and the word.
inline int ControlBit(int component) {
  return component % 32;
}
inline int ControlWord(int component) {
  return component / 32;
}
}  // namespace asn1
