#include "run/Modules.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>
#include <set>
#include <string_view>

namespace run {

namespace {

/// The characters of a file without those that fill up wider encodings.
std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream whole;
  whole << in.rdbuf();
  std::string text = whole.str();
  std::erase(text, '\0');
  return text;
}

bool IsWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/// The words and braces of a module's text; comments, strings and all other characters are passed over.
class Words {
 public:
  explicit Words(std::string_view text) : text_(text) {}

  /// The next word, or "{" or "}"; empty at the end.
  std::string_view next() {
    while (!text_.empty()) {
      if (text_.starts_with("//")) {
        skip_to("\n", 2);
      } else if (text_.starts_with("/*")) {
        skip_to("*/", 2);
      } else if (text_.front() == '"') {
        skip_to("\"", 1);
      } else if (text_.front() == '{' || text_.front() == '}') {
        return take(1);
      } else if (IsWordCharacter(text_.front())) {
        return take(std::find_if_not(text_.begin(), text_.end(), IsWordCharacter) - text_.begin());
      } else {
        text_.remove_prefix(1);
      }
    }
    return {};
  }

 private:
  std::string_view take(size_t length) {
    const std::string_view word = text_.substr(0, length);
    text_.remove_prefix(length);
    return word;
  }
  void skip_to(std::string_view end, size_t from) {
    const size_t place = text_.find(end, from);
    text_.remove_prefix(place == std::string_view::npos ? text_.size() : place + end.size());
  }

  std::string_view text_;
};

void AddModules(std::string_view text, std::vector<Module>& modules) {
  Words words(text);
  int depth = 0;
  std::string_view before;
  for (std::string_view word = words.next(); !word.empty(); before = word, word = words.next()) {
    if (word == "{") {
      if (depth++ == 1 && before == "control" && !modules.empty()) modules.back().has_control = true;
    } else if (word == "}") {
      --depth;
    } else if (before == "module" && depth == 0) {
      modules.push_back({std::string(word), {}, false});
    } else if (before == "import" && word == "from" && !modules.empty()) {
      modules.back().imports.emplace_back(word = words.next());
    }
  }
}

std::string OnlyOne(const std::vector<const Module*>& modules) {
  if (modules.size() == 1) return modules.front()->name;
  std::string names;
  for (const Module* module : modules) names += " " + module->name;
  throw "several modules could be the root, name one with -r:" + names;
}

}  // namespace

std::vector<Module> FindModules(const std::vector<std::string>& files) {
  std::vector<Module> modules;
  for (const std::string& file : files) AddModules(ReadText(file), modules);
  return modules;
}

std::string FindRoot(const std::vector<Module>& modules) {
  std::set<std::string_view> imported;
  for (const Module& module : modules) imported.insert(module.imports.begin(), module.imports.end());
  // two of one name are the compiler's to report
  std::set<std::string_view> seen;
  std::vector<const Module*> tops;
  std::vector<const Module*> with_control;
  for (const Module& module : modules) {
    if (imported.contains(module.name) || !seen.insert(module.name).second) continue;
    tops.push_back(&module);
    if (module.has_control) with_control.push_back(&module);
  }
  if (!with_control.empty()) return OnlyOne(with_control);
  // modules that import each other are the compiler's to report
  return tops.empty() ? "" : OnlyOne(tops);
}

}  // namespace run
