// The records of a syntax file, which the ASN.1 compiler writes for each module and the compiler and the code
// generators read: a sequence of records in the host's byte order, all of one kind together, kinds in
// ascending order. Records of one kind are numbered from 1 in the order of the file; 0 means none. A text is
// a string record's number.
#pragma once

#include <cstddef>
#include <cstdint>

namespace asn1 {

enum RecordKind : int {
  kMNode = 0,    // the module itself (record 1), then one record for each imported module
  kTNode = 1,    // types, their components and elements; classes and their fields
  kVNode = 2,    // values, their parts, named numbers; objects and object sets
  kTagRec = 3,   // tags as written, or as automatic tagging gives them
  kSubRec = 4,   // elements of subtype constraints
  kTedRec = 5,   // options
  kSNode = 6,    // steps of at-notations and field paths
  kString8 = 7,  // a 2-byte count of units, terminator included, and the units; 8, 16 and 32 bits wide
  kString16 = 8,
  kString32 = 9,
  kFileKinds = 10,
};
inline constexpr uint32_t kMaxStringUnits = 32001;

/// Both halves are written; readers ask for the second one.
inline constexpr uint16_t kFormatVersion = 213;

enum MainType : uint8_t {
#define MAIN_TYPE(number, name, tag, constructed, in_ttcn, asn1_name) name = number,
#include "asn1/front/MainTypes.def"
#undef MAIN_TYPE
  kNoValue = 41,  // of a value only
};

/// What a main type is in TTCN-3: a type with its name, one of those that are character strings, a type made
/// anew for each use, one whose values come as octets; something else or nothing.
enum class InTtcn : uint8_t { kNamed, kText, kMade, kOpen, kElse };

struct MainTypeRow {
  const char* name;
  int tag;
  bool constructed;
  InTtcn in_ttcn;
  const char* asn1_name;
};
inline constexpr MainTypeRow typeArr[] = {
#define MAIN_TYPE(number, name, tag, constructed, in_ttcn, asn1_name) \
  {#name, tag, constructed, InTtcn::in_ttcn, asn1_name},
#include "asn1/front/MainTypes.def"
#undef MAIN_TYPE
};
/// The row of a main type; numbers that are none have that of no type.
constexpr const MainTypeRow& rowOf(MainType type) {
  return typeArr[type < TYP_NONE ? type : TYP_NONE];
}
constexpr InTtcn inTtcn(MainType type) {
  return rowOf(type).in_ttcn;
}

struct MNode {
  uint16_t version_first, version;  // word 0
  int32_t date, time;  // YYYYMMDD and HHMMSS of the syntax file; of an import, those of the imported one
  int32_t name;        // with its hyphens
  int32_t file_prefix;
  int32_t first_type;          // definitions are linked by `next`
  int32_t first_value;         // 6
  int32_t first_object;        // 7: of the linked objects
  int32_t first_object_set;    // 8: of the linked object sets; in an import record the imported module's own
                               // entry, 1
  int32_t counts[kFileKinds];  // 9 to 18: number of records of each kind
  uint8_t code, import_bits, kept, pad;  // 19: code is 0 explicit, 1 implicit, 2 automatic tags
  int32_t generation_prefix;             // 20: text; none where it is the file prefix
  int32_t source;                        // 21: the path of the source file, text
  int32_t entry_types, visible_types, objects, object_sets;  // 22 to 25
  int32_t first_option, last_option;                         // 26, 27
};
static_assert(sizeof(MNode) == 112 && offsetof(MNode, code) == 76 && offsetof(MNode, entry_types) == 88);

/// Status of a type record.
enum TypeStatus : int32_t { kComponent = 4, kDefinition = 5 };
enum Presence : int32_t { kMandatory = 0, kOptional = 1, kDefault = 2 };
enum TypeFlags : uint8_t {
  kFlagEntryType = 64,  // in TNode::flags
};
enum TypeFlags2 : uint8_t {
  kFlag2Extensible = 1,     // an ENUMERATED with a marker, behind `extension_index` items
  kFlag2Recursive = 2,      // refers to itself, directly or through others
  kFlag2AutomaticTags = 4,  // a SEQUENCE, SET or CHOICE whose components got automatic tags
  kFlag2Wide = 8,           // an ENUMERATED with numbers beyond 32 bits
};

struct TNode {
  int32_t name;             // a definition's or component's name with its hyphens; none for an element
  int32_t first_component;  // 1: of a SEQUENCE, SET or CHOICE, with the extension markers among them; the
                            // element of a
                            //    SEQUENCE OF or SET OF; the fields of a class
  int32_t first_tag;        // 2: a TagRec, outermost first
  int32_t status;           // 3: TypeStatus
  int32_t presence;         // 4: Presence of a component; kDefinition for a definition
  int32_t next;             // 5: next definition, or next component
  int32_t constraint;       // 6: first SubRec; further constraints of the same type by SubRec::next
  int32_t
      first_named;  // 7: named numbers or bits, enumeration items, in their order: VNodes linked by `next`
  int32_t default_value;  // 8: a VNode
  int32_t parent;         // 9: the type around a component or element
  int32_t components;     // 10: their number, markers not counted
  int32_t component_nbr;  // 11: of a component, from 0, markers not counted
  uint16_t owner;         // bytes 48, 49
  uint8_t main_type;      // byte 50: MainType
  uint8_t addition;       // byte 51: 0 extension root, else 1 and the number of the addition group
  uint16_t field_kind;    // bytes 52, 53: of a class's field, FieldKind
  uint16_t line;          // bytes 54, 55: of the definition in its source
  uint8_t flags, flags2;  // bytes 56, 57
  uint16_t column;        // bytes 58, 59
  uint8_t value_form, size_class, options, spare;  // bytes 60 to 63
  int32_t extension_index;  // 16: of an extensible ENUMERATED, the number of items before the marker
  int32_t element_level;    // 17: nesting below the definition, which has 0
  int32_t definition;       // 18: the definition around, or itself
  int32_t ref_module;   // 19: of a reference (TYP_SYNONYM, TYP_SELECTION, a contained type): 1 this module,
                        //     from 2 on the number of an import record
  int32_t ref_type;     // 20: the referred TNode in that module
  int32_t ref_name;     // 21: of a TYP_SELECTION, the alternative; of a reference, the name that it uses
  int32_t unique;       // 22: a number of the definition in its module, from 1
  int32_t exception;    // 23: spare
  int32_t class_chain;  // 24: of a field reference, the TNode of the class's field
  int32_t low[2], high[2];  // 25 to 28: endpoints, low word first; computed by the reader
};
static_assert(sizeof(TNode) == 116 && offsetof(TNode, owner) == 48 && offsetof(TNode, line) == 54 &&
              offsetof(TNode, flags) == 56 && offsetof(TNode, ref_module) == 76 &&
              offsetof(TNode, low) == 100);

enum FieldKind : uint16_t {
  kTypeField = 1,           // &Type
  kFixedValueField = 2,     // &id INTEGER; the type is the field's own TNode
  kVariableValueField = 3,  // &value &Type
  kFixedValueSetField = 4,  // &Set INTEGER
  kVariableValueSetField = 5,
  kObjectField = 6,     // &object CLASS
  kObjectSetField = 7,  // &Objects CLASS
};

enum ValueFlags : uint8_t {
  kFlagAfterMarker = 1,  // the extension marker stands before this named number
  kFlagWide = 2,         // an integer beyond 64 bits: `text8` has its digits, `integer` the nearest number
};

struct VNode {
  int32_t name;    // of a definition, component, named number or part of an object identifier
  int32_t line;    // 1
  int32_t text8;   // 2: characters of a string, binary digits of a BIT STRING, hexadecimal ones of an OCTET
                   // STRING,
                   //    a time; of an enumerated value the item
  int32_t text16;  // 3: of a BMPString
  int32_t text32;  // 4: of a UniversalString
  int32_t ref_module;       // 5: of a reference, as in TNode
  int32_t ref_value;        // 6
  int32_t unique;           // 7: a number of the definition in its module, from 1
  int32_t next;             // 8: next definition, component, element, named number
  uint16_t owner;           // bytes 36, 37
  uint8_t main_type;        // byte 38: MainType; TYP_SYNONYM a reference, kNoValue none
  uint8_t flags;            // byte 39: ValueFlags
  int32_t actual_type;      // 10: of an open type's value, the TNode of its type
  int32_t type;             // 11: the governing TNode in this module
  int32_t first_component;  // 12: components (named), elements, the alternative, object identifier parts; the
                            // field
                            //     values of an object; the objects of an object set
  int32_t column;           // 13
  union {
    struct {
      int32_t integer[2];  // 14, 15: low word first
      int32_t unused;
    } i;
    struct {                // bytes 56 to 67
      int32_t mantissa[2];  // low word first
      int16_t
          base;  // -1: special, the mantissa is then -2 for minus infinity, -1 for plus infinity, 0 for zero
      int16_t exponent;
    } r;
  } v;
  int32_t components;  // 17
  int32_t field_type;  // 18: of a type field's value, the TNode
};
static_assert(sizeof(VNode) == 76 && offsetof(VNode, owner) == 36 && offsetof(VNode, main_type) == 38 &&
              offsetof(VNode, type) == 44 && offsetof(VNode, v) == 56);

enum TagClass : int32_t {
  kTagUniversal = 0,
  kTagApplication = 1,
  kTagContext = 2,
  kTagPrivate = 3,
  kTagEmpty = 5
};

struct TagRec {
  int32_t tag_class, number;
  int32_t is_explicit;  // 1: in front of the tag behind it; 0: in its place
  int32_t next;
};
static_assert(sizeof(TagRec) == 16);

enum ConstraintKind : uint8_t {
  kUnion = 1,  // of the two operands
  kIntersection = 2,
  kCatenation = 3,            // alternatives of a constraint list
  kExcept = 4,                // the first operand without the second
  kAllExcept = 5,             // all but the first operand
  kValueRange = 10,           // `value` and `value2`; 0 is MIN or MAX
  kPermittedAlphabet = 11,    // FROM the first operand
  kSize = 12,                 // SIZE of the first operand
  kSingleValue = 13,          // `value`
  kContainedSubtype = 14,     // the TNode `component_type`, a reference
  kWithComponent = 15,        // the first operand holds for each element
  kWithComponents = 16,       // the first operand is a chain (by `next`) of kComponentConstraint
  kTableConstraint = 17,      // `value` is the object set, `path` the at-notation
  kComponentConstraint = 18,  // of the component `text`: the first operand, or none; presence in the flags
  kPattern = 19,              // `text`
  kContents = 20,             // CONTAINING `component_type`
  kUserDefined = 21,          // CONSTRAINED BY
  kExtensionMarker = 22,
  kEmptyException = 24,
};
enum ConstraintFlags : uint8_t {
  kFlagException = 1,
  // bits 2 to 4 hold the presence constraint of a kComponentConstraint
  kPresencePresent = 2 << 2,
  kPresenceAbsent = 3 << 2,
  kPresenceOptional = 4 << 2,
  kFlagPartial = 32,  // of kWithComponents: { ..., }
};
enum RangeFlags : uint8_t { kLowOpen = 1, kHighOpen = 2 };  // SubRec::open

struct SubRec {
  int32_t next;  // 0: a further constraint of the same type, or in a kWithComponents the next component
  uint8_t kind, flags;     // bytes 4, 5
  uint8_t open, spare;     // RangeFlags
  int32_t first, second;   // 2, 3: operands, SubRecs
  int32_t text;            // 4
  int32_t component_type;  // 5: a TNode
  int32_t path;            // 6: an SNode
  int32_t value, value2;   // 7, 8: VNodes
};
static_assert(sizeof(SubRec) == 36 && offsetof(SubRec, kind) == 4 && offsetof(SubRec, value) == 28);

inline constexpr int32_t kPassOfOptions = 2;  // the mask of an option that holds
struct TedRec {
  int32_t mask;
  int32_t text;
};
static_assert(sizeof(TedRec) == 8);

struct SNode {
  uint8_t code,
      level;  // 121: a component reference; level: the dots behind an @, 0 for an outermost reference
  uint16_t spare;
  int32_t module;  // 1
  int32_t record;  // 2: the TNode of the component
  int32_t text;    // 3: its name
  int32_t next;    // 4: the next step of the path
};
static_assert(sizeof(SNode) == 20);
inline constexpr uint8_t kComponentReference = 121;

}  // namespace asn1
