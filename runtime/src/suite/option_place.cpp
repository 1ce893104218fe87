#include "suite/option_place.h"

#include <map>

namespace lumos {

namespace {

std::string current;

std::map<std::string, std::string>& places() {
  static auto* all = new std::map<std::string, std::string>;
  return *all;
}

}  // namespace

void set_option_place(const std::string& place) {
  current = place.empty() ? "" : place + ": ";
}

const std::string& option_place() {
  return current;
}

void note_option_place(const std::string& name) {
  places()[name] = current;
}

std::string place_of_option(const std::string& name) {
  const auto found = places().find(name);
  return found == places().end() ? "" : found->second;
}

}  // namespace lumos
