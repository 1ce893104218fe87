#include "suite/params.h"

#include <cstring>
#include <fstream>
#include <map>

#include "value/error.h"
#include "value/value.h"

namespace lumos {

namespace {

std::map<std::string, std::string>& given() {
  static auto* all = new std::map<std::string, std::string>;
  return *all;
}

std::string trimmed(const std::string& text) {
  size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

const std::string* find(const char* module, const char* name) {
  auto found = given().find(std::string(module) + "." + name);
  if (found == given().end()) found = given().find(name);
  return found == given().end() ? nullptr : &found->second;
}

}  // namespace

bool add_parameter(const std::string& definition) {
  size_t equals = definition.find('=');
  if (equals == std::string::npos) return false;
  std::string name = trimmed(definition.substr(0, equals));
  if (!name.empty() && name.back() == ':') name = trimmed(name.substr(0, name.size() - 1));
  if (name.empty()) return false;
  given()[name] = trimmed(definition.substr(equals + 1));
  return true;
}

bool read_parameter_file(const std::string& path, std::string& error) {
  std::ifstream in(path);
  if (!in) {
    error = "could not open '" + path + "'";
    return false;
  }
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    line = trimmed(line);
    if (line.empty() || line[0] == '#' || line.compare(0, 2, "//") == 0) continue;
    if (add_parameter(line)) continue;
    error = path + ", line " + std::to_string(number) + ": '=' is missing";
    return false;
  }
  return true;
}

bool set_from_parameter(const char* module, const char* name, lumo_value_t location) {
  const std::string* text = find(module, name);
  if (!text) return false;
  static char message[256];
  bool read;
  {
    std::string error;
    read = read_value(location, *text, error);
    std::strncpy(message, error.c_str(), sizeof message - 1);
  }
  if (!read)
    fault("module parameter %s.%s cannot be set to %.200s: %s", module, name, text->c_str(), message);
  return true;
}

}  // namespace lumos
