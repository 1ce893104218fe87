// The node that stands behind lumo_value_t, and the operations on nodes that the units of
// the run-time library share. A node owns its parts; a value that generated code made is
// a root, owned by the memory scope of its task (temp) or by whoever deletes it (perm).
// Parts keep their identity under assignment, so that a handle to a field stays good.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lumos.h"

namespace lumos {

struct Port;
struct Timer;

// What a node holds.
enum class Form : uint8_t {
  unset,
  special,  // omit, any value and their like; `special` tells which
  integer,
  real,
  boolean,
  character,
  wide_character,
  verdict,
  enumerated,
  string,       // characters of a charstring, digits of bit-, hex- and octetstring
  wide_string,  // universal charstring
  object_id,
  fields,       // record, set, signature, component: one slot for each field
  vector,       // record of, set of, array
  choice,       // union: one part and its index
  component,    // number of a component, 0 for null
  default_ref,  // number of an activated default, 0 for null
  port,
  timer,
  instance,    // a declared template with its arguments
  wrapped,     // template: parts[0] with if_present and length
  range,       // template: parts[0] .. parts[1]
  value_list,  // template: the parts, by list_kind
  pattern,     // template: parts[0] is the pattern text
  external     // value in the form of a codec
};

enum class Special : uint8_t {
  none,
  no_value,
  illegal,
  omit,
  not_used,
  anyone,
  anyornone,
  any,
  all,
  no_return,
  default_value,
  null_address,
  null_component,
  null_default,
  infinity
};

// An orphan is owned by the call that has it as an argument, and ends with it.
enum class Life : uint8_t { fixed, temp, perm, part, orphan };

struct TextBuffer {
  char* data;  // ends with NUL
  size_t size, capacity;
};
struct WideBuffer {
  char32_t* data;
  size_t size, capacity;
};
struct NumberBuffer {
  lumo_long_integer_t* data;
  size_t size, capacity;
};
// A slot is empty (nullptr), a fixed special value, or an owned part.
struct PartBuffer {
  lumo_value_t* data;
  size_t size, capacity;
};
struct ExternalHome {
  void* home;
  lumo_value_t (*translate)(void*, lumo_alloc_strategy_t, lumo_context_t);
  void (*destroy)(void*, lumo_context_t);
};

// What only few templates have.
struct Restraint {
  bool has_length = false;
  lumo_long_integer_t lower = 0;
  lumo_long_integer_t upper = -1;  // -1: no upper bound
  std::vector<std::pair<size_t, size_t>> permutations;
};

// What `rnd` begins with.
void set_random_seed(uint64_t seed);

}  // namespace lumos

struct lumo_value_struct {
  lumo_type_t type = nullptr;
  const char* label = nullptr;
  lumo_value_struct* parent = nullptr;
  lumos::Restraint* restraint = nullptr;
  lumo_type_kind_t kind = lumo_type_kind_undefined;  // of the type behind all references
  uint32_t root = 0;                                 // place among the roots of a task, of a temp
  lumos::Form form = lumos::Form::unset;
  lumos::Special special = lumos::Special::none;
  lumos::Life life = lumos::Life::fixed;
  bool dynamic = false;     // may hold matching mechanisms
  bool if_present = false;  // template: omit matches too
  bool pending = false;     // not yet a part of its parent, or below such a one: joins when first written
  bool pinned = false;      // a call has it as an argument
  bool owns_arguments = false;
  uint8_t list_kind = 0;
  uint8_t restriction = 0;
  uint32_t place = 0;  // of a pending part
  long index = -1;     // chosen alternative
  union {
    lumo_long_integer_t integer = 0;
    double real;
    bool boolean;
    char character;
    char32_t wide_character;
    lumo_verdict_t verdict;
    lumos::TextBuffer text;
    lumos::WideBuffer wide;
    lumos::NumberBuffer ids;
    lumos::PartBuffer parts;
    lumos::Port* port;
    lumos::Timer* timer;
    lumos::ExternalHome* external;
  };
};

namespace lumos {

using Value = lumo_value_t;

inline bool is_special(Value v, Special s) {
  return v->form == Form::special && v->special == s;
}
inline bool is_omit(Value v) {
  return v == lumo_omit_value_c || is_special(v, Special::omit);
}
inline bool has_parts(Form f) {
  return f == Form::fields || f == Form::vector || f == Form::choice || f == Form::wrapped ||
         f == Form::range || f == Form::value_list || f == Form::pattern;
}
// A template as opposed to a value: it holds or may hold a matching mechanism.
inline bool is_template(Value v) {
  return v->dynamic || (v->form >= Form::instance && v->form <= Form::pattern) ||
         (v->form == Form::special && (v->special == Special::anyone || v->special == Special::anyornone));
}
// What is all there as soon as it has that form: numbers, characters, strings.
inline bool is_scalar(Form f) {
  return f >= Form::integer && f <= Form::object_id;
}

// --- making and ending (values.cpp, memory.cpp)

// A node from the pool; free of contents, owned by nobody yet.
Value new_node(lumo_type_t type);
Value make_root(lumo_type_t type, lumo_alloc_strategy_t strategy);
Value make_part(lumo_type_t type, Value parent);
// Ends a node and all its parts.
void destroy(Value v);
// Leaves the node unset.
void clear_contents(Value v);
// Takes a part away that generated code may still hold: it lives on to the end of the scope.
void retire(Value part);
// Gives an unset node the shape of its type: slots of a record, elements of an array.
void shape(Value v);

// --- writing

void check_writable(Value v);
// Called before any change of contents: checks that the target can be written, and joins pending
// parts to what they are parts of.
void prepare_first_write(Value v);
inline void prepare_write(Value v) {
  if (!v || v->life == Life::fixed || v->pending) prepare_first_write(v);
}
// After a change of a plain value: a subtype that does not hold, its own or that of what it is a
// part of, is a fault.
void check_written(Value v);
// Copies contents without checks of the subtype.
void assign_contents(Value target, Value source);
// The same for what most assignments are about, numbers and strings that go to their own kind; false, with
// nothing done, for all else.
bool assign_scalar(Value target, Value source);
// A new part of the whole with such contents; null, with nothing done, where the part is of another kind or
// may be a template. Neither its label nor its place are set.
Value new_scalar_part(Value whole, lumo_type_t type, Value source);
Value copy_value(Value source, lumo_alloc_strategy_t strategy);
void set_special(Value v, Special s);
void set_text(Value v, std::string_view text);
// An uninitialized text of that many bytes.
void reserve_text(Value v, size_t size);
void set_wide(Value v, const char32_t* text, size_t size);
// As reserve_text, for a universal charstring.
void reserve_wide(Value v, size_t size);
void resize_parts(Value v, size_t size);
// The part in the slot, made where the slot is empty or special.
Value force_part(Value v, size_t slot);
// Puts a copy of the value into the slot.
void store_part(Value v, size_t slot, Value source);
lumo_type_t part_type(Value v, size_t slot);

// --- reading

// Follows values of codecs; faults on a handle that is no value.
Value settle(Value v);
inline Value settled(Value v) {
  return v && v->form != Form::external ? v : settle(v);
}
bool is_complete_whole(Value v);
inline bool is_complete(Value v) {
  return is_scalar(v->form) || is_complete_whole(v);
}
// Whether nothing was assigned to it yet, nor to any part of it.
bool is_blank_whole(Value v);
inline bool is_blank(Value v) {
  const bool may_be = v->form == Form::unset || v->form == Form::fields || v->form == Form::vector;
  return may_be && is_blank_whole(v);
}
// Whether the part is the whole itself, or lies below it.
bool is_within(Value part, Value whole);
bool equal_values(Value a, Value b);
// The same for values that are equal.
uint64_t hash_value(Value v);
std::string render(Value v);
void render_to(std::string& out, Value v);  // behind what is there
// As render, but the text of a charstring stands for itself.
std::string render_plain(Value v);
// Reads the notation that render writes; false leaves a message in error.
bool read_value(Value target, std::string_view text, std::string& error);
std::u32string wide_text(Value v);
std::string narrow_text(const std::u32string& text);
// What stands for a character in a text of narrow ones.
inline char narrow_character(char32_t c) {
  return c < 256 ? static_cast<char>(c) : '?';
}

inline char32_t code_of(lumo_wide_char_t c) {
  return char32_t(c.group) << 24 | char32_t(c.plane) << 16 | char32_t(c.row) << 8 | c.cell;
}
inline lumo_wide_char_t wide_char_of(char32_t c) {
  return {static_cast<unsigned char>(c >> 24), static_cast<unsigned char>(c >> 16),
          static_cast<unsigned char>(c >> 8), static_cast<unsigned char>(c)};
}

}  // namespace lumos
