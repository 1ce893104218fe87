// Connections and mappings of ports.
#include "run/scheduler.h"
#include "value/error.h"
#include "ports/outside.h"
#include "ports/port.h"
#include "value/types.h"

using namespace lumos;

namespace {

// Array elements are numbered through the whole array.
long port_index(lumo_value_t index) {
  if (!index || index == lumo_no_value_c) return -1;
  if (index->form == Form::integer) return static_cast<long>(index->integer);
  return static_cast<long>(lumo_value_get_integer(index, nullptr));
}

Port& named_port(lumo_value_t component, const char* name, lumo_value_t index) {
  Component* c = component_of(component);
  if (!c) fault("a port of a component that is null or has ended");
  if (c == test_case->system) system_component();
  const long field = name && c->record ? element_index(c->record->type, name) : -1;
  Port* port = find_port(*c, field, port_index(index));
  if (!port) fault("component %s has no port '%s'", c->name.c_str(), name ? name : "");
  return *port;
}

// A component that has ended has no ports any more, and so neither connections nor mappings.
bool has_ended(lumo_value_t component) {
  const Component* c = component_of(component);
  return c && c->state == State::ended;
}

// One that gets a connection or mapping.
Port& port_to_link(lumo_value_t component, const char* name, lumo_value_t index) {
  if (has_ended(component))
    fault("a port of component %s, which has ended", component_of(component)->name.c_str());
  return named_port(component, name, index);
}

// "all port" and "all component" are told by lumo_value_all_c or a missing name.
bool is_all(lumo_value_t component, const char* port) {
  return component == lumo_value_all_c || !port;
}

// ---- What may be connected or mapped

bool same_type(lumo_type_t a, lumo_type_t b) {
  return !a || !b || root_of(a) == root_of(b) || root_of(a)->kind == lumo_type_kind_undefined ||
         root_of(b)->kind == lumo_type_kind_undefined;
}

// The place is where it likely stands.
bool has_row(const Port& port, unsigned property, lumo_type_t type, size_t place) {
  const lumo_field_info_t* rows = field_info(port.type);
  const size_t count = field_count(port.type);
  for (size_t n = 0; n < count; ++n) {
    const lumo_field_info_t& row = rows[(place + n) % count];
    if (row.property & property && same_type(row.type, type)) return true;
  }
  return false;
}

// Each type that one port has in one direction has to be one of the other port's in another.
void check_directions(const Port& from, unsigned property, const Port& to, unsigned wanted) {
  const lumo_field_info_t* rows = field_info(from.type);
  const size_t count = rows ? field_count(from.type) : 0;
  for (size_t i = 0; i < count; ++i)
    if (rows[i].property & property && !has_row(to, wanted, rows[i].type, i))
      fault("port %s does not fit to port %s, which has no type '%s' in that direction", from.name, to.name,
            type_name(rows[i].type));
}

constexpr unsigned in = lumo_field_property_in_value_c;
constexpr unsigned out = lumo_field_property_out_value_c;

// A port has at most one connection or mapping to a component.
void check_no_other(Links Port::*list, const Port& port, const Port& other) {
  if (const Port* p = linked_port(port, list, *other.owner))
    fault("port %s has a connection or mapping to port %s already, and gets none to %s of the same component",
          port.name, p->name, other.name);
}

template <class Act>
void each_owned_port(const char* operation, lumo_value_t component, Act act) {
  if (component != lumo_value_all_c) {
    Component* c = component_of(component);
    if (c)
      for (Port* p : c->ports) act(*p);
    return;
  }
  check_is_mtc(operation);
  for (auto& c : test_case->components)
    for (Port* p : c->ports) act(*p);
}

void remove_mapping(Port& a, Port& b) {
  if (!a.mappings.has(&b)) return;
  a.mappings.remove(&b);
  b.mappings.remove(&a);
  a.is_mapped_itself = b.is_mapped_itself = false;
  bool first_is_system = a.owner == test_case->system;
  outside_unmap(first_is_system ? b : a, first_is_system ? a : b);
}

// A test case without a system clause maps its ports at its start, for whoever wants to use them so;
// connecting one with another component says that it is meant otherwise.
void give_up_own_mapping(Port& port) {
  if (port.is_mapped_itself) remove_mapping(port, *port.mappings.last());
}

void remove_all_of(lumo_value_t component, const char* name, lumo_value_t index, bool mappings) {
  auto remove = [&](Port& p) {
    while (mappings && !p.mappings.empty()) remove_mapping(p, *p.mappings.last());
    while (!mappings && !p.connections.empty()) {
      Port* other = p.connections.last();  // which may be the port itself
      p.connections.remove(other);
      other->connections.remove(&p);
    }
  };
  if (!is_all(component, name)) {
    if (!has_ended(component)) remove(named_port(component, name, index));
    return;
  }
  each_owned_port(mappings ? "unmap" : "disconnect", component, remove);
}

}  // namespace

void lumo_component_connect_port(lumo_value_t component1, const char* port1, lumo_value_t index1,
                                 lumo_value_t component2, const char* port2, lumo_value_t index2,
                                 lumo_context_t) {
  maybe_yield();
  check_choice("connect");
  self();
  Port& a = port_to_link(component1, port1, index1);
  Port& b = port_to_link(component2, port2, index2);
  if (a.owner == test_case->system || b.owner == test_case->system)
    fault("a port of the system cannot be connected");
  if (a.is_mapped_itself && b.is_mapped_itself) fault("two ports of the system cannot be connected");
  give_up_own_mapping(a);
  give_up_own_mapping(b);
  if (!a.mappings.empty() || !b.mappings.empty()) fault("a mapped port cannot be connected");
  if (linked_port(a, &Port::connections, *b.owner) == &b) return;
  check_no_other(&Port::connections, a, b);
  check_no_other(&Port::connections, b, a);
  check_directions(a, out, b, in);
  check_directions(b, out, a, in);
  a.connections.add(&b);
  b.connections.add(&a);
}

void lumo_component_disconnect_port(lumo_value_t component1, const char* port1, lumo_value_t index1,
                                    lumo_value_t component2, const char* port2, lumo_value_t index2,
                                    lumo_context_t) {
  check_choice("disconnect");
  self();
  if (is_all(component1, port1) || !component2 || component2 == lumo_no_value_c || is_all(component2, port2))
    return remove_all_of(component1, port1, index1, false);
  if (has_ended(component1) || has_ended(component2)) return;
  Port& a = named_port(component1, port1, index1);
  Port& b = named_port(component2, port2, index2);
  a.connections.remove(&b);
  b.connections.remove(&a);
}

void lumo_component_map_port(lumo_value_t component1, const char* port1, lumo_value_t index1,
                             lumo_value_t component2, const char* port2, lumo_value_t index2,
                             lumo_context_t) {
  maybe_yield();
  check_choice("map");
  self();
  Port& a = port_to_link(component1, port1, index1);
  Port& b = port_to_link(component2, port2, index2);
  bool first_is_system = a.owner == test_case->system;
  if (first_is_system == (b.owner == test_case->system)) fault("a mapping needs one port of the system");
  Port& component_port = first_is_system ? b : a;
  Port& system_port = first_is_system ? a : b;
  if (!component_port.connections.empty()) fault("a connected port cannot be mapped");
  if (test_case->maps_by_itself && component_port.mappings.has(&system_port)) {
    component_port.is_mapped_itself = false;
    return;
  }
  check_no_other(&Port::mappings, component_port, system_port);
  check_no_other(&Port::mappings, system_port, component_port);
  check_directions(component_port, out, system_port, out);
  check_directions(system_port, in, component_port, in);
  outside_map(component_port, system_port);
  component_port.mappings.add(&system_port);
  system_port.mappings.add(&component_port);
  component_port.is_mapped_itself =
      test_case->maps_by_itself && component_port.owner == test_case->mtc && !component_port.was_mapped;
  component_port.was_mapped = true;
}

void lumo_component_unmap_port(lumo_value_t component1, const char* port1, lumo_value_t index1,
                               lumo_value_t component2, const char* port2, lumo_value_t index2,
                               lumo_context_t) {
  check_choice("unmap");
  self();
  if (is_all(component1, port1) || !component2 || component2 == lumo_no_value_c || is_all(component2, port2))
    return remove_all_of(component1, port1, index1, true);
  if (has_ended(component1) || has_ended(component2)) return;
  remove_mapping(named_port(component1, port1, index1), named_port(component2, port2, index2));
}
