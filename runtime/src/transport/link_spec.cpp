#include "transport/link_spec.h"

#include <algorithm>
#include <deque>

namespace lumos {

namespace {

std::deque<LinkSpec>& links() {
  static auto* all = new std::deque<LinkSpec>;
  return *all;
}

struct KindName {
  std::string_view name;
  LinkKind kind;
};
constexpr KindName kinds[] = {{"udp", LinkKind::udp},
                              {"tcp", LinkKind::tcp},
                              {"tcp-listen", LinkKind::tcp_listen},
                              {"file", LinkKind::file},
                              {"loopback", LinkKind::loopback}};

bool set_option(LinkSpec& spec, std::string_view option) {
  const size_t equals = option.find('=');
  if (equals == std::string_view::npos) return false;
  const std::string_view name = option.substr(0, equals), value = option.substr(equals + 1);
  const bool has_local = spec.kind == LinkKind::udp || spec.kind == LinkKind::tcp;
  if (name == "local") return has_local && spec.local.port.empty() && read_endpoint(value, spec.local);
  if (name == "out") {
    spec.output = value;
    return spec.kind == LinkKind::file && !value.empty();
  }
  const auto framing = framing_named(value);
  if (name != "framing" || !framing || spec.kind == LinkKind::udp || spec.kind == LinkKind::loopback)
    return false;
  spec.framing = *framing;
  return true;
}

bool set_place(LinkSpec& spec, std::string_view place) {
  switch (spec.kind) {
    case LinkKind::loopback:
      return place.empty();
    case LinkKind::file:
      spec.path = place;
      return !place.empty();
    case LinkKind::udp:
      return place.empty() || read_endpoint(place, spec.peer);
    default:
      return read_endpoint(place, spec.peer);
  }
}

}  // namespace

bool read_endpoint(std::string_view text, Endpoint& endpoint) {
  const size_t colon = text.rfind(':');
  if (colon == std::string_view::npos || colon + 1 == text.size()) return false;
  std::string_view host = text.substr(0, colon);
  const std::string_view port = text.substr(colon + 1);
  if (!std::all_of(port.begin(), port.end(), [](char c) { return c >= '0' && c <= '9'; }) || port.size() > 5)
    return false;
  if (host.size() > 1 && host.front() == '[' && host.back() == ']')
    host = host.substr(1, host.size() - 2);
  else if (host.find(':') != std::string_view::npos)
    return false;
  endpoint = {std::string(host), std::string(port)};
  return std::stoi(endpoint.port) <= 65535;
}

bool read_link_spec(std::string_view text, LinkSpec& spec) {
  constexpr std::string_view blanks = " \t";
  const size_t end = text.find_first_of("= \t");
  size_t start = text.find_first_not_of(blanks, end);
  if (start != std::string_view::npos && text[start] == '=')
    start = text.find_first_not_of(blanks, start + 1);
  const size_t colon = start == std::string_view::npos ? start : text.find(':', start);
  if (end == 0 || colon == std::string_view::npos) return false;
  spec = {};
  spec.name = text.substr(0, end);
  const std::string_view word = text.substr(start, colon - start);
  const auto kind =
      std::find_if(std::begin(kinds), std::end(kinds), [&](const KindName& k) { return k.name == word; });
  if (kind == std::end(kinds)) return false;
  spec.kind = kind->kind;
  size_t at = text.find(',', colon);
  if (!set_place(spec, text.substr(colon + 1, at == std::string_view::npos ? at : at - colon - 1)))
    return false;
  while (at != std::string_view::npos) {
    const size_t next = text.find(',', at + 1);
    if (!set_option(spec, text.substr(at + 1, next == std::string_view::npos ? next : next - at - 1)))
      return false;
    at = next;
  }
  return spec.kind != LinkKind::udp || !spec.peer.port.empty() || !spec.local.port.empty();
}

bool add_link(const std::string& text) {
  LinkSpec spec;
  if (!read_link_spec(text, spec)) return false;
  for (LinkSpec& known : links())
    if (known.name == spec.name) {
      known = spec;
      return true;
    }
  links().push_back(spec);
  return true;
}

bool has_links() {
  return !links().empty();
}

std::vector<std::string> linked_ports() {
  std::vector<std::string> names;
  for (const LinkSpec& spec : links()) names.push_back(spec.name);
  return names;
}

const LinkSpec* link_for(std::string_view port, long index) {
  const std::string element = std::string(port) + "[" + std::to_string(index) + "]";
  for (const LinkSpec& spec : links())
    if (spec.name == port || (index >= 0 && spec.name == element)) return &spec;
  return nullptr;
}

}  // namespace lumos
