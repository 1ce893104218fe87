#include "mesk/Options.h"

#include <algorithm>
#include <cstdio>

#include "asn1/front/AsnOptions.h"
#include "asn1/front/FilePrefix.h"
#include "mesk/Lexer.h"

namespace mesk {

namespace {

constexpr size_t kLongestOption = 512;

std::string_view trimmed(std::string_view text) {
  const char* blanks = " \t\r\n\v\f";
  const size_t begin = text.find_first_not_of(blanks);
  return begin == std::string_view::npos ? std::string_view()
                                         : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::vector<std::string> splitAtColons(std::string_view text) {
  std::vector<std::string> parts(1);
  for (char c : text) {
    if (c == ':') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

bool isPrefix(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return isLetter(c) || isDigit(c) || c == '-' || c == '_'; });
}

}  // namespace

std::string joinPath(const std::string& directory, const std::string& name) {
  if (directory.empty()) return name;
  return directory.back() == '/' ? directory + name : directory + "/" + name;
}

std::string hyphenated(std::string_view name) {
  std::string result(name);
  std::replace(result.begin(), result.end(), '_', '-');
  return result;
}

bool Options::parse(const std::vector<std::string>& words) {
  bool good = true;
  for (const std::string& word : words) {
    if (word.empty()) continue;
    if (word[0] == '-') {
      good &= addOption(std::string_view(word).substr(1));
    } else if (word[0] == '+') {
      good &= readFile(word.substr(1));
    } else {
      sources.push_back(word);
    }
  }
  return good;
}

bool Options::readFile(const std::string& path) {
  std::FILE* file = path.empty() ? nullptr : std::fopen(path.c_str(), "rb");
  if (!file) {
    std::printf("Error: the option file %s can not be opened\n", path.c_str());
    return false;
  }
  std::string text;
  char buffer[4096];
  size_t read;
  while ((read = std::fread(buffer, 1, sizeof buffer, file)) > 0 && text.size() < (16u << 20))
    text.append(buffer, read);
  std::fclose(file);
  bool good = true;
  size_t begin = 0;
  while (begin < text.size()) {
    const size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view line = trimmed(std::string_view(text).substr(begin, end - begin));
    begin = end + 1;
    if (line.empty()) continue;
    if (line[0] == '-' && line.substr(0, 2) != "--") {
      std::string upper(line);
      std::transform(upper.begin(), upper.end(), upper.begin(),
                     [](char c) { return c >= 'a' && c <= 'z' ? c - 32 : c; });
      if (upper == "-END-OF-OPTIONS") break;
      good &= addOption(line.substr(1), path);
    } else if (isLetter(line[0]) || isDigit(line[0]) || line[0] == '_') {
      sources.emplace_back(line);
    } else if (!quiet && !asn1::IsComment(line)) {
      asn1::argumentIgnored(std::string(line), path);
    }
  }
  scope_.clear();
  return good;
}

bool Options::addPrefix(std::string_view value) {
  std::vector<std::string> parts = splitAtColons(value);
  parts.resize(std::max<size_t>(parts.size(), 3));
  const bool valid =
      parts.size() == 3 && !parts[0].empty() && isLetter(parts[0][0]) &&
      std::all_of(parts.begin(), parts.end(), [](const std::string& part) { return isPrefix(part); });
  if (!valid) {
    std::printf("Error: the option -PREFIX=%s is not of the form module:file:generation\n",
                std::string(value).c_str());
    return false;
  }
  if (parts[1].empty()) parts[1] = parts[0];
  if (parts[2].empty()) parts[2] = parts[1];
  prefixes[hyphenated(parts[0])] =
      Prefixes{parts[1].substr(0, asn1::kPrefixLength), parts[2].substr(0, asn1::kPrefixLength)};
  return true;
}

void Options::keepOption(const std::string& text, const std::string& file) {
  if (!quiet && !asn1::AsnOptions::IsKnown(text)) asn1::argumentIgnored(text, file);
  module_options.push_back(ModuleOption{text, scope_});
}

bool Options::addOption(std::string_view text, const std::string& file) {
  const size_t equals = text.find('=');
  std::string name(text.substr(0, equals));
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? c - 32 : c; });
  const std::string_view value =
      equals == std::string_view::npos ? std::string_view() : text.substr(equals + 1);
  const bool printable = std::all_of(text.begin(), text.end(),
                                     [](char c) { return static_cast<unsigned char>(c) >= 32 && c != 127; });
  if (name == "S") {
    syntax_directory = value.empty() ? "." : value;
  } else if (name == "A") {
    const std::string directory(value.empty() ? "." : value);
    auto& all = source_directories;
    if (std::find(all.begin(), all.end(), directory) == all.end()) all.push_back(directory);
  } else if (name == "VERBOSE") {
    verbose = value == "2" || value == "3" || value == "4";
    quiet = value == "0";
  } else if (name == "PREFIX") {
    return addPrefix(value);
  } else if (name == "BEGIN-SCOPE") {
    scope_ = splitAtColons(value);
  } else if (name == "END-SCOPE") {
    scope_.clear();
  } else if (name == "DUMP") {
    dump = value;
  } else if (name == "L" || name == "ANALYZE") {
    // Of other programs, or the rule here.
  } else if (text.size() > kLongestOption || !printable) {
    std::printf("Warning: an option is too long or holds an unprintable character, ignored\n");
  } else {
    strict |= name == "STRICTSTANDARD";
    keepOption(std::string(text), file);
    if (name == "ENTRY") entries.insert(hyphenated(asn1::AsnOptions::EntryOf(std::string(value))));
  }
  return true;
}

std::vector<std::string> Options::optionsFor(const Prefixes& prefixes) const {
  std::vector<std::string> texts;
  for (const ModuleOption& option : module_options) {
    const bool holds = option.scope.empty() ||
                       std::any_of(option.scope.begin(), option.scope.end(), [&](const auto& prefix) {
                         return prefix == prefixes.file || prefix == prefixes.generation;
                       });
    if (holds) texts.push_back(option.text);
  }
  return texts;
}

}  // namespace mesk
