#include "suite/option_place.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>

#include "suite/nearest.h"

namespace lumos {

namespace {

std::string current;

std::map<std::string, std::string>& places() {
  static auto* all = new std::map<std::string, std::string>;
  return *all;
}

// False where it has no end.
bool read_line(FILE* file, std::string& line, bool& is_last) {
  constexpr size_t longest = 1 << 22;
  line.clear();
  int c;
  while ((c = std::getc(file)) != EOF && c != '\n' && line.size() < longest) line += static_cast<char>(c);
  is_last = c == EOF;
  return line.size() < longest;
}

}  // namespace

void set_option_place(const std::string& place) {
  current = place.empty() ? "" : place + ": ";
}

const std::string& option_place() {
  return current;
}

std::string trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

bool read_option_lines(const std::string& path,
                       const std::function<bool(const std::string& line, std::string& error)>& take,
                       std::string& error) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "re"), std::fclose);
  std::string line;
  for (int number = 1; file; ++number) {
    bool is_last;
    if (!read_line(file.get(), line, is_last)) {
      error = path + ", line " + std::to_string(number) + ": the line is too long";
      return false;
    }
    if (std::ferror(file.get())) break;
    if (number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0) line.erase(0, 3);
    line = trimmed(line);
    set_option_place(path + ", line " + std::to_string(number));
    const bool is_comment = line.empty() || line[0] == '#' || line.compare(0, 2, "//") == 0;
    const bool is_taken = is_comment || take(line, error);
    if (!is_taken) error = option_place() + error;
    set_option_place("");
    if (!is_taken || is_last) return is_taken;
  }
  error = "could not open " + in_quotes(path) + ": " + std::strerror(errno);
  return false;
}

void note_option_place(const std::string& name) {
  places()[name] = current;
}

std::string place_of_option(const std::string& name) {
  const auto found = places().find(name);
  return found == places().end() ? "" : found->second;
}

}  // namespace lumos
