#include "suite/port_names.h"

#include <cstdio>
#include <set>
#include <string>

#include "suite/nearest.h"
#include "suite/option_place.h"
#include "transport/link_spec.h"
#include "value/symbols.h"
#include "value/types.h"

namespace lumos {

namespace {

bool is_port(lumo_type_t type) {
  while (type && base_kind(type) == lumo_type_kind_array) type = element_type(type);
  const lumo_type_kind_t kind = base_kind(type);
  return kind == lumo_type_kind_port || kind == lumo_type_kind_port_ref;
}

void add_ports(lumo_type_t type, std::set<std::string>& names) {
  const lumo_type_kind_t kind = base_kind(type);
  if (kind != lumo_type_kind_component && kind != lumo_type_kind_component_ref) return;
  lumo_type_t record = record_type(type);
  const lumo_field_info_t* fields = record ? field_info(record) : nullptr;
  for (size_t i = 0; fields && i < field_count(record); ++i)
    if (fields[i].name && fields[i].type && is_port(fields[i].type)) names.insert(fields[i].name);
}

std::set<std::string> port_names() {
  std::set<std::string> names;
  for (const Module& m : registered_modules())
    for (unsigned long i = 0; i < m.row_count; ++i)
      if (m.rows[i].kind == lumo_symbol_entry_kind_userdefined_type && m.rows[i].type_descriptor)
        add_ports(m.rows[i].type_descriptor, names);
  return names;
}

}  // namespace

bool all_links_known() {
  const std::vector<std::string> links = linked_ports();
  if (links.empty()) return true;
  const std::set<std::string> known = port_names();
  for (const std::string& link : links) {
    const std::string name = link.substr(0, link.find('['));
    if (known.count(name)) continue;
    std::fprintf(stderr, "%sthere is no port %s%s\n", place_of_option(link).c_str(), in_quotes(link).c_str(),
                 did_you_mean(name, {known.begin(), known.end()}).c_str());
    return false;
  }
  return true;
}

}  // namespace lumos
