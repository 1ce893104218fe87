// The encoding "JSON": values to objects, lists and texts, and back. It is a library of its own, since it
// brings a reader of JSON that few suites need; the library of the run finds it by the function at the end.
#include <cmath>
#include <sstream>

#include <nlohmann/json.hpp>

#include "codec/families.h"
#include "codec/plain.h"
#include "codec/raw.h"
#include "codec/trials.h"
#include "json_plan.h"
#include "value/error.h"
#include "value/task.h"
#include "value/types.h"

namespace lumos {

namespace {

using Json = nlohmann::ordered_json;

bool is_there(Value part) {
  return part && !is_omit(part) && part->form != Form::unset;
}

// --- to JSON

class Writer {
 public:
  bool write(const JsonPlan& plan, Value v, Json& json);
  std::string fault;

 private:
  bool fail(const std::string& what);
  bool write_fields(const JsonPlan& plan, Value v, Json& json);
  bool write_list(const JsonPlan& plan, Value v, Json& json);
  bool write_choice(const JsonPlan& plan, Value v, Json& json);
  FieldPath path_;
};

bool Writer::fail(const std::string& what) {
  const std::string field = path_.text();
  fault = field.empty() ? what : "field " + field + ": " + what;
  return false;
}

bool Writer::write_fields(const JsonPlan& plan, Value v, Json& json) {
  json = Json::object();
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    const JsonField& field = plan.fields[i];
    const Value part = v->parts.data[i];
    path_.enter(field.name.c_str());
    if (is_there(part)) {
      if (!write(*field.plan, part, json[field.name])) return false;
    } else if (!field.optional) {
      return fail("the field is not initialized");
    } else if (field.null_for_omit) {
      json[field.name] = nullptr;
    }
    path_.leave();
  }
  return true;
}

bool Writer::write_list(const JsonPlan& plan, Value v, Json& json) {
  json = Json::array();
  for (size_t i = 0; i < v->parts.size; ++i) {
    if (!is_there(v->parts.data[i])) return fail("an element is not initialized");
    json.emplace_back();
    if (!write(*plan.fields[0].plan, v->parts.data[i], json.back())) return false;
  }
  return true;
}

bool Writer::write_choice(const JsonPlan& plan, Value v, Json& json) {
  const JsonField& field = plan.fields[static_cast<size_t>(v->index)];
  if (!is_there(v->parts.data[0])) return fail("the value is not completely initialized");
  path_.enter(field.name.c_str());
  if (!plan.as_value) json = Json::object();
  if (!write(*field.plan, v->parts.data[0], plan.as_value ? json : json[field.name])) return false;
  path_.leave();
  return true;
}

bool Writer::write(const JsonPlan& plan, Value v, Json& json) {
  if (stack_is_short()) return fail("the value is nested too deeply");
  v = settled(v);
  switch (v->form) {
    case Form::integer:
      json = v->integer;
      return true;
    case Form::real:
      if (std::isfinite(v->real))
        json = v->real;
      else
        json = v->real > 0 ? "infinity" : "-infinity";
      return true;
    case Form::boolean:
      json = v->boolean;
      return true;
    case Form::enumerated:
      json = enum_name(plan.type, static_cast<long>(v->integer));
      return true;
    case Form::string:
      json = std::string(v->text.data, v->text.size);
      return true;
    case Form::wide_string:
      json = plain_octets(v);
      return true;
    case Form::verdict:
    case Form::object_id:
      json = render(v);
      return true;
    case Form::fields:
      return write_fields(plan, v, json);
    case Form::vector:
      return write_list(plan, v, json);
    case Form::choice:
      return v->index < 0 ? fail("no alternative is chosen") : write_choice(plan, v, json);
    default:
      if (is_record_kind(v->kind) && plan.fields.empty()) return json = Json::object(), true;
      return fail("the value is not completely initialized");
  }
}

// --- from JSON

class Reader {
 public:
  explicit Reader(size_t octets) : trials_(octets) {}
  bool read(const JsonPlan& plan, const Json& json, Value v);
  std::string fault;
  const Json* fault_at = nullptr;

 private:
  bool fail(const std::string& what);
  bool read_fields(const JsonPlan& plan, const Json& json, Value v);
  bool read_member(const JsonField& field, const Json* member, Value v, size_t i);
  bool read_list(const JsonPlan& plan, const Json& json, Value v);
  bool read_choice(const JsonPlan& plan, const Json& json, Value v);
  bool read_alternative(const JsonPlan& plan, size_t i, const Json& json, Value v);
  bool read_leaf(const JsonPlan& plan, const Json& json, Value v);
  bool read_text(const JsonPlan& plan, const std::string& text, Value v);
  bool check(Value v);
  FieldPath path_;
  const Json* at_ = nullptr;
  Trials trials_;
};

bool Reader::fail(const std::string& what) {
  if (!fault.empty()) return false;
  const std::string field = path_.text();
  fault = field.empty() ? what : "field " + field + ": " + what;
  fault_at = at_;
  return false;
}

bool Reader::check(Value v) {
  if (!has_check(v->type)) return true;
  const TempScope scope;
  const Quiet quiet;
  return lumo_type_check(v->type, v, current_task) || fail("the value is not of its type");
}

bool Reader::read_member(const JsonField& field, const Json* member, Value v, size_t i) {
  const bool is_null = member && member->is_null() && field.optional;
  if (member && !is_null) return read(*field.plan, *member, force_part(v, i));
  if (!member && field.default_value) {
    store_part(v, i, field.default_value);
    return true;
  }
  if (!field.optional) return fail("the member is missing");
  v->parts.data[i] = lumo_omit_value_c;
  return true;
}

bool Reader::read_fields(const JsonPlan& plan, const Json& json, Value v) {
  if (!json.is_object()) return fail("an object is needed");
  shape(v);
  size_t used = 0;
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    const auto member = json.find(plan.fields[i].name);
    used += member != json.end();
    path_.enter(plan.fields[i].name.c_str());
    if (!read_member(plan.fields[i], member == json.end() ? nullptr : &*member, v, i)) return false;
    path_.leave();
  }
  if (used == json.size()) return true;
  for (const auto& member : json.items()) {
    at_ = &member.value();
    if (std::none_of(plan.fields.begin(), plan.fields.end(),
                     [&](const JsonField& f) { return f.name == member.key(); }))
      return fail("there is no field for the member '" + member.key() + "'");
  }
  return true;
}

bool Reader::read_list(const JsonPlan& plan, const Json& json, Value v) {
  if (!json.is_array()) return fail("an array is needed");
  if (v->kind == lumo_type_kind_array && json.size() != array_length(v->type))
    return fail("the array has another length");
  shape(v);
  resize_parts(v, json.size());
  for (size_t i = 0; i < json.size(); ++i)
    if (!read(*plan.fields[0].plan, json[i], force_part(v, i))) return false;
  return true;
}

bool Reader::read_alternative(const JsonPlan& plan, size_t i, const Json& json, Value v) {
  shape(v);
  v->index = static_cast<long>(i);
  resize_parts(v, 1);
  path_.enter(plan.fields[i].name.c_str());
  const bool good = read(*plan.fields[i].plan, json, force_part(v, 0));
  path_.leave();
  return good;
}

bool Reader::read_choice(const JsonPlan& plan, const Json& json, Value v) {
  if (plan.as_value) {
    for (size_t i = 0; i < plan.fields.size(); ++i) {
      const size_t depth = path_.depth();
      fault.clear();
      at_ = &json;
      if (read_alternative(plan, i, json, v)) return true;
      path_.leave_to(depth);
      clear_contents(v);
    }
    return fail("no alternative fits");
  }
  if (!json.is_object() || json.size() != 1) return fail("an object with one member is needed");
  for (size_t i = 0; i < plan.fields.size(); ++i)
    if (plan.fields[i].name == json.begin().key()) return read_alternative(plan, i, json.begin().value(), v);
  return fail("there is no alternative '" + json.begin().key() + "'");
}

bool is_digits(const std::string& text, const char* digits) {
  return text.find_first_not_of(digits) == std::string::npos;
}

bool Reader::read_text(const JsonPlan& plan, const std::string& text, Value v) {
  size_t taken;
  std::string upper = text;
  for (char& c : upper) c = static_cast<char>(c >= 'a' && c <= 'f' ? c - 'a' + 'A' : c);
  switch (plan.kind) {
    case lumo_type_kind_bitstring:
      if (!is_digits(text, "01")) return fail("a text of bits is needed");
      set_text(v, text);
      return true;
    case lumo_type_kind_hexstring:
    case lumo_type_kind_octetstring:
      if (!is_digits(upper, "0123456789ABCDEF") ||
          (plan.kind == lumo_type_kind_octetstring && text.size() % 2))
        return fail("a text of hexadecimal digits is needed");
      set_text(v, upper);
      return true;
    case lumo_type_kind_enumerated: {
      const long number = enum_number(plan.type, text.c_str(), text.size());
      if (number == -1 && !enum_name(plan.type, -1)) return fail("the text is no literal of the enumeration");
      v->form = Form::enumerated;
      v->integer = number;
      return true;
    }
    case lumo_type_kind_float:
      if (text != "infinity" && text != "-infinity") return fail("a number is needed");
      v->form = Form::real;
      v->real = text[0] == '-' ? -INFINITY : INFINITY;
      return true;
    case lumo_type_kind_charstring:
      for (const char c : text)
        if (c & 0x80) return fail("the text has characters that a charstring cannot have");
      set_text(v, text);
      return true;
    default:
      return (set_plain(v, text, taken) && taken == text.size()) || fail("the text is no value of the type");
  }
}

bool Reader::read_leaf(const JsonPlan& plan, const Json& json, Value v) {
  if (json.is_string() && plan.kind != lumo_type_kind_integer && plan.kind != lumo_type_kind_boolean)
    return read_text(plan, json.get_ref<const std::string&>(), v);
  switch (plan.kind) {
    case lumo_type_kind_integer:
      if (!json.is_number_integer() || (json.is_number_unsigned() && json.get<uint64_t>() > INT64_MAX))
        return fail("an integer of 64 bits is needed");
      v->form = Form::integer;
      v->integer = json.get<int64_t>();
      return true;
    case lumo_type_kind_float:
      if (!json.is_number()) return fail("a number is needed");
      v->form = Form::real;
      v->real = json.get<double>();
      return true;
    case lumo_type_kind_boolean:
      if (!json.is_boolean()) return fail("true or false is needed");
      v->form = Form::boolean;
      v->boolean = json.get<bool>();
      return true;
    default:
      return fail("a text is needed");
  }
}

bool Reader::read(const JsonPlan& plan, const Json& json, Value v) {
  const Json* around = std::exchange(at_, &json);
  if (stack_is_short()) return fail("the value is nested too deeply");
  if (!trials_.begin()) return fail(too_many_trials);
  bool good;
  switch (plan.kind) {
    case lumo_type_kind_record:
    case lumo_type_kind_set:
      good = read_fields(plan, json, v);
      break;
    case lumo_type_kind_union:
      good = read_choice(plan, json, v);
      break;
    default:
      good = is_list_kind(plan.kind) ? read_list(plan, json, v) : read_leaf(plan, json, v);
  }
  good = good && check(v);
  at_ = around;
  return good;
}

// --- where a value stands in the text

// Counts values in the order of the text until the wanted one is met.
bool count_to(const Json& json, const Json* wanted, size_t& count) {
  ++count;
  if (&json == wanted) return true;
  return json.is_structured() && !stack_is_short() &&
         std::any_of(json.begin(), json.end(),
                     [&](const Json& part) { return count_to(part, wanted, count); });
}

size_t end_of_text(std::string_view octets, size_t at) {
  for (++at; at < octets.size() && octets[at] != '"'; ++at) at += octets[at] == '\\';
  return at + 1;
}

// Where the value of that number begins in octets that are known to be JSON: a text before a colon is a name.
size_t position_of(std::string_view octets, size_t number) {
  for (size_t at = 0; at < octets.size();) {
    const size_t start = at = octets.find_first_not_of(" \t\r\n,:]}", at);
    if (at >= octets.size()) break;
    const char c = octets[at];
    at = c == '"'               ? end_of_text(octets, at)
         : c == '{' || c == '[' ? at + 1
                                : octets.find_first_of(" \t\r\n,:]}", at);
    const size_t next = at < octets.size() ? octets.find_first_not_of(" \t\r\n", at) : octets.size();
    const bool is_name = c == '"' && next < octets.size() && octets[next] == ':';
    if (!is_name && --number == 0) return start;
  }
  return octets.size();
}

// --- the family

const JsonPlan& plan_of(lumo_type_t type) {
  std::vector<std::string> errors;
  return json_plan(type, errors);
}

bool encode(Value v, std::string& octets, std::string& fault) {
  const JsonPlan& plan = plan_of(v->type);
  Writer writer;
  Json json;
  if (!writer.write(plan, v, json)) return fault = writer.fault, false;
  try {
    octets += json.dump(-1, ' ', plan.ascii_only);
  } catch (const Json::exception& e) {
    return fault = e.what(), false;
  }
  return true;
}

// The value at the beginning; false leaves the octet in fault.
bool parse(std::string_view octets, Json& json, size_t& taken, std::string& fault) {
  std::istringstream in{std::string(octets)};
  try {
    in >> json;
  } catch (const Json::parse_error& e) {
    fault = "octet " + std::to_string(e.byte) + ": " + e.what();
    return false;
  } catch (const Json::exception& e) {
    const auto at = in.tellg();
    fault = "octet " + std::to_string(at < 0 ? octets.size() : static_cast<size_t>(at)) + ": " + e.what();
    return false;
  }
  const auto at = in.tellg();
  taken = at < 0 ? octets.size() : static_cast<size_t>(at);
  while (taken < octets.size() &&
         (octets[taken] == ' ' || octets[taken] == '\n' || octets[taken] == '\r' || octets[taken] == '\t'))
    ++taken;
  return true;
}

Value decode(lumo_type_t type, std::string_view octets, size_t& taken, std::string& fault) {
  Json json;
  if (!parse(octets, json, taken, fault)) return nullptr;
  Value v = make_root(type, lumo_temp_alloc_c);
  Reader reader(octets.size());
  if (reader.read(plan_of(type), json, v)) return v;
  size_t number = 0;
  count_to(json, reader.fault_at, number);
  fault = "octet " + std::to_string(position_of(octets, number) + 1) +
          (reader.fault.starts_with("field ") ? ", " : ": ") + reader.fault;
  return nullptr;
}

constexpr CodecFamily json_family = {
    "JSON", [](lumo_type_t type, std::vector<std::string>& errors) { json_plan(type, errors); }, encode,
    decode};

}  // namespace

}  // namespace lumos

extern "C" const lumos::CodecFamily* lumo_json_codec() {
  return &lumos::json_family;
}
