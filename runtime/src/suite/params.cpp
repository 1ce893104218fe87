#include "suite/params.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <set>

#include "suite/nearest.h"
#include "suite/option_place.h"
#include "text/log.h"
#include "value/error.h"
#include "value/value.h"

namespace lumos {

namespace {

struct Given {
  std::string text;
  std::string place;              // in a file, as messages begin with it
  bool is_shared = false;         // in a file of parameters
  mutable bool is_asked = false;  // some module has it
};

bool reads_shared_file = false;

std::map<std::string, Given>& given() {
  static auto* all = new std::map<std::string, Given>;
  return *all;
}

// The names that modules asked for.
std::set<std::string>& asked() {
  static auto* all = new std::set<std::string>;
  return *all;
}

const Given* find(const char* module, const char* name) {
  const std::string full_name = std::string(module) + "." + name;
  asked().insert(full_name);
  auto plain = given().find(name), full = given().find(full_name);
  if (plain != given().end()) plain->second.is_asked = true;
  if (full != given().end()) full->second.is_asked = true;
  if (full == given().end()) full = plain;
  return full == given().end() ? nullptr : &full->second;
}

}  // namespace

bool add_parameter(const std::string& definition) {
  size_t equals = definition.find('=');
  if (equals == std::string::npos) return false;
  std::string name = trimmed(definition.substr(0, equals));
  if (!name.empty() && name.back() == ':') name = trimmed(name.substr(0, name.size() - 1));
  if (name.empty()) return false;
  given()[name] = {trimmed(definition.substr(equals + 1)), option_place(), reads_shared_file};
  return true;
}

bool read_parameter_file(const std::string& path, std::string& error) {
  return read_option_lines(
      path,
      [](const std::string& line, std::string& fault) {
        reads_shared_file = true;
        const bool is_good = add_parameter(line);
        reads_shared_file = false;
        if (!is_good) fault = "'=' is missing";
        return is_good;
      },
      error);
}

bool all_parameters_known() {
  const std::vector<std::string> known(asked().begin(), asked().end());
  bool all_known = true;
  for (const auto& [name, one] : given()) {
    if (one.is_asked) continue;
    const std::string text =
        one.place + "there is no module parameter " + in_quotes(name) + did_you_mean(name, known);
    if (one.is_shared) {
      log_line(lumo_log_msg_warning_c, text);
    } else {
      std::fprintf(stderr, "%s\n", text.c_str());
      all_known = false;
    }
  }
  return all_known;
}

bool set_from_parameter(const char* module, const char* name, lumo_value_t location) {
  const Given* one = find(module, name);
  if (!one) return false;
  static char message[256];
  bool read;
  {
    std::string error;
    read = read_value(location, one->text, error);
    std::strncpy(message, error.c_str(), sizeof message - 1);
  }
  if (!read)
    fault("%smodule parameter %s.%s cannot be set to %.200s: %s", one->place.c_str(), module, name,
          one->text.c_str(), message);
  return true;
}

}  // namespace lumos
