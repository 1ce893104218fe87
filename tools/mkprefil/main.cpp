// mkprefil: looks which modules ASN.1 files hold, and writes an option file with their prefixes.
//
//   mkprefil -OPTION-FILE=path [-A=directory...] file...
#include <cstdio>
#include <set>

#include "asn1/front/FilePrefix.h"
#include "mesk/Lexer.h"
#include "mesk/Options.h"

namespace {

struct Found {
  std::string module, file_prefix, prefix;
};

/// Gives those modules that stand behind the first one of a file prefixes by their names, which no other one
/// has.
void nameFurther(std::vector<Found>& found) {
  std::set<std::string> taken;
  for (const Found& one : found) taken.insert(one.prefix);
  for (Found& one : found) {
    if (!one.prefix.empty()) continue;
    one.prefix = one.module.substr(0, asn1::kLongestPrefix);
    for (int number = 2; !taken.insert(one.prefix).second; ++number) {
      const std::string ending = "-" + std::to_string(number);
      one.prefix = one.module.substr(0, asn1::kLongestPrefix - ending.size()) + ending;
    }
  }
}

/// The modules whose headers stand in a file.
bool scan(const std::string& path, std::vector<Found>& found) {
  mesk::SourceFile file;
  file.path = path;
  if (!mesk::readSource(path, file.text)) {
    std::printf("%s(1): the file can not be read\n", path.c_str());
    return false;
  }
  // Errors of the text are the compiler's to report.
  mesk::Reporter reporter(false);
  const std::vector<mesk::Token> tokens = mesk::tokenize(file, reporter);
  size_t modules = 0;
  for (size_t i = 0; i + 1 < tokens.size(); ++i) {
    if (tokens[i].kind != mesk::Tok::kUpper || mesk::isReservedWord(tokens[i].text)) continue;
    size_t next = i + 1;
    if (tokens[next].kind == mesk::Tok::kSymbol && tokens[next].text == "{" && tokens[next].match > 0) {
      next = static_cast<size_t>(tokens[next].match) + 1;
    }
    if (tokens[next].kind != mesk::Tok::kUpper || tokens[next].text != "DEFINITIONS") continue;
    const std::string prefix = asn1::FilePrefixOf(path);
    found.push_back(Found{std::string(tokens[i].text), prefix, modules++ == 0 ? prefix : std::string()});
  }
  if (modules == 0) std::printf("%s(1): the file holds no ASN.1 module\n", path.c_str());
  return modules > 0;
}

bool readable(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file) std::fclose(file);
  return file != nullptr;
}

std::string locate(const std::vector<std::string>& directories, const std::string& name) {
  for (const std::string& directory : directories) {
    const std::string path = directory == "." ? name : mesk::joinPath(directory, name);
    if (name.size() > 4 && name.compare(name.size() - 4, 4, ".asn") == 0 && readable(path)) return path;
    if (readable(path + ".asn")) return path + ".asn";
    if (readable(path)) return path;
  }
  return std::string();
}

}  // namespace

int main(int argc, char** argv) {
  std::string option_file;
  std::vector<std::string> directories, names;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word.rfind("-OPTION-FILE=", 0) == 0) {
      option_file = word.substr(13);
    } else if (word.rfind("-A=", 0) == 0) {
      directories.push_back(word.size() > 3 ? word.substr(3) : ".");
    } else if (!word.empty() && word[0] != '-') {
      names.push_back(word);
    }
  }
  if (option_file.empty() || names.empty()) {
    std::puts("Usage: mkprefil -OPTION-FILE=path [-A=directory...] file...");
    return 1;
  }
  if (directories.empty()) directories.push_back(".");
  bool good = true;
  std::vector<Found> found;
  for (const std::string& name : names) {
    const std::string path = locate(directories, name);
    if (path.empty()) {
      std::printf("%s(1): the file was not found\n", name.c_str());
      good = false;
    } else {
      good &= scan(path, found);
    }
  }
  if (!good) return 1;
  nameFurther(found);
  std::FILE* file = std::fopen(option_file.c_str(), "wb");
  if (file) {
    for (const Found& module : found) {
      std::fprintf(file, "-PREFIX=%s:%s:%s\n", module.module.c_str(), module.file_prefix.c_str(),
                   module.prefix.c_str());
    }
  }
  if (!file || std::fclose(file) != 0) {
    std::printf("%s(1): the file can not be written\n", option_file.c_str());
    return 1;
  }
  return 0;
}
