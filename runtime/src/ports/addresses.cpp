#include "ports/addresses.h"

#include "transport/link_spec.h"
#include "value/types.h"

namespace lumos {

namespace {

std::string text_in(Value v) {
  v = settled(v);
  return v->kind == lumo_type_kind_charstring && v->form == Form::string
             ? std::string(v->text.data, v->text.size)
             : "";
}

}  // namespace

bool address_text(Value address, std::string& text) {
  address = settled(address);
  text = text_in(address);
  if (address->form != Form::fields || address->parts.size != 2) return !text.empty();
  const Value host = address->parts.data[0], port = address->parts.data[1];
  if (!host || !port || settled(port)->form != Form::integer) return false;
  text = text_in(host);
  if (text.find(':') != std::string::npos) text = "[" + text + "]";
  text += ":" + std::to_string(settled(port)->integer);
  Endpoint endpoint;
  return read_endpoint(text, endpoint);
}

Value address_value(lumo_type_t type, const std::string& text) {
  Value v = make_root(type, lumo_temp_alloc_c);
  if (v->kind == lumo_type_kind_charstring) {
    set_text(v, text);
    return v;
  }
  Endpoint endpoint;
  shape(v);
  if (v->kind != lumo_type_kind_record || v->parts.size != 2 || !read_endpoint(text, endpoint))
    return nullptr;
  Value host = force_part(v, 0), port = force_part(v, 1);
  if (host->kind != lumo_type_kind_charstring || port->kind != lumo_type_kind_integer) return nullptr;
  set_text(host, endpoint.host);
  port->form = Form::integer;
  port->integer = std::stoi(endpoint.port);
  return v;
}

}  // namespace lumos
