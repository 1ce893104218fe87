#include "asn1/generate/T3AsnObjectSets.h"

#include <algorithm>
#include <climits>
#include <optional>
#include <set>

#include "asn1/generate/T3AsnNames.h"
#include "asn1/model/AsnNames.h"
#include "generator/text/T3CodeDefs.h"

namespace asn1 {
namespace {
constexpr const char* kObjectSetsFamily = "_setfunc_";

// The name of a type among the alternatives of an open type: its module's and its own; empty for a type
// without one.
std::string AlternativeOf(const AsnType& type) {
  AsnType named = type;
  if (!isDefinedType(named) && isReference(named)) named = forSynonymType(named);
  if (!isDefinedType(named)) return {};
  return getModuleRef(*named.module) + "." + MakeASNIdent(getTypeRef(named));
}

// The number by which an object is found; none where it has no value for the field or one of another kind.
std::optional<int64_t> IdentifierOf(const AsnObject& object, const std::string& field) {
  std::optional<int64_t> number;
  forEachFieldValue(object, [&](const AsnValue& value) {
    if (getObjClassFieldRef(value) != field || !isFixedTypeValueFieldValue(object, value)) return;
    const MainType main_type = getValueMainType(skipValues(value));
    if (main_type == TYP_INTEGER || main_type == TYP_ENUM) number = int64Value(value);
  });
  return number;
}

class SetFunction {
 public:
  SetFunction(T3AsnFiles& files, std::string name, std::string set, std::string field)
      : files_(files),
        text_(files.source),
        name_(std::move(name)),
        set_(std::move(set)),
        field_(std::move(field)) {}

  void Write(const std::vector<AsnObject>& objects) {
    Head();
    text_.w("switch(id)\n");
    text_.open();
    for (const AsnObject& object : objects) Case(object);
    text_.w("default:\n");
    text_.w("break;\n");
    text_.close();
    text_.w(std::string(LUMO_REPORT_ERROR) + "(__LINE__, __FILE__, " + LUMO_FORMAT_WIDE_STRING +
            "(LUMO__ILLEGAL_OBJSET_ID, context, id, \"" + set_ + "\", \"" + field_ + "\"), context);\n");
    text_.w("return \"\";\n");
    text_.close();
  }

 private:
  void Head() {
    const std::string head = "const char* " + name_ + "(sint32 id, const char *fieldname, " +
                             std::string(LUMO_CONTEXT_T) + " context)";
    files_.header.put("/* setfunc */\n");
    text_.put("/* setfunc */\n");
    files_.header.put("extern " + head + ";\n");
    text_.put(head + "\n");
    text_.open();
  }

  // An object that another one of the set stands before, with the same identifier, is never found.
  void Case(const AsnObject& object) {
    const std::optional<int64_t> id = IdentifierOf(object, field_);
    if (!id || !taken_.insert(*id).second) return;
    if (*id < INT_MIN || *id > INT_MAX)
      return int64Warning(files_.module, object.node().line, "Integer value");
    text_.w("case ");
    text_.w(*id == INT_MIN ? "INT_MIN" : std::to_string(*id));
    text_.w(":\n");
    forEachFieldValue(object, [&](const AsnValue& value) { TypeField(object, value); });
    text_.w("break;\n");
  }

  void TypeField(const AsnObject& object, const AsnValue& value) {
    if (!isTypeFieldValue(value)) {
      if (!isFixedTypeValueFieldValue(object, value))
        t3asn_warn("Only Fixed Type Value Fields and Type Fields are supported.\n");
      return;
    }
    const std::string alternative = AlternativeOf(forTypeFieldValue(value));
    // A type that was written within the object has no codec, as it has no name.
    if (alternative.empty()) return t3asn_warn("Unsupported Table Constraint");
    text_.w("if(strcmp(fieldname, \"" + getObjClassFieldRef(value) + "\") == 0)\n");
    text_.w("return(\"" + alternative + "\");\n");
  }

  T3AsnFiles& files_;
  CText& text_;
  std::string name_, set_, field_;
  std::set<int64_t> taken_;
};
}  // namespace

std::string ObjSetFieldMap::NameOf(const Row& row) const {
  return "t3asn_" + getModuleRef(module_) + kObjectSetsFamily + row.set_name + "_" + row.field;
}

std::string ObjSetFieldMap::AddObjSetFieldMap(const AsnObjectSet& set, const std::string& field,
                                              const AsnType& open_type) {
  // A set of another module may have the name of one of this module; one without a name has that of its
  // place.
  std::string name = getObjectSetRef(set);
  if (name.empty())
    name = t3asn_inline_type_id(open_type);
  else if (set.module != &module_)
    name = getModuleRef(*set.module) + "_" + name;
  const auto known = std::find_if(rows_.begin(), rows_.end(),
                                  [&](const Row& row) { return row.set == set && row.field == field; });
  if (known != rows_.end()) return NameOf(*known);
  rows_.push_back({set, name, field});
  return NameOf(rows_.back());
}

void ObjSetFieldMap::translate_objectset(T3AsnFiles& files, const AsnObjectSet& set) const {
  for (auto row = rows_.rbegin(); row != rows_.rend(); ++row)
    if (row->set == set)
      SetFunction(files, NameOf(*row), row->set_name, row->field).Write(constructSetObjects(set));
}

void ObjSetFieldMap::Generate(T3AsnFiles& files) const {
  const std::vector<AsnObjectSet> own = ObjectSetsOf(module_);
  for (const AsnObjectSet& set : own) translate_objectset(files, set);
  std::vector<AsnObjectSet> done = own;
  for (const Row& row : rows_) {
    if (std::find(done.begin(), done.end(), row.set) != done.end()) continue;
    done.push_back(row.set);
    translate_objectset(files, row.set);
  }
}
}  // namespace asn1
