// The functions that find, by the identifier of an object in a set, the type that an open type holds.
#pragma once

#include <string>
#include <vector>

#include "asn1/generate/Asn2T3.h"
#include "asn1/model/AsnObjects.h"

namespace asn1 {
/// The sets that open types of one module were constrained by, with the fields by which objects are found.
class ObjSetFieldMap {
 public:
  explicit ObjSetFieldMap(ModRec& module) : module_(module) {}

  /// Notes a set and a field for an open type; the name of the function that looks them up.
  std::string AddObjSetFieldMap(const AsnObjectSet& set, const std::string& field, const AsnType& open_type);
  /// Writes the functions for all that was noted, set by set.
  void Generate(T3AsnFiles& files) const;

 private:
  struct Row {
    AsnObjectSet set;
    std::string set_name;
    std::string field;
  };
  std::string NameOf(const Row& row) const;
  void translate_objectset(T3AsnFiles& files, const AsnObjectSet& set) const;

  ModRec& module_;
  std::vector<Row> rows_;  // in the order of noting
};
}  // namespace asn1
