// The command line of an ASN.1 tool and its option files.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <optional>

#include "asn1/front/AsnFault.h"
#include "asn1/front/AsnOptions.h"

namespace asn1 {
namespace {
constexpr size_t kLongestOption = 512;
constexpr int kLongestPrefix = 32;
constexpr const char* kCommentMarks[] = {"/*", "*/", "//", "(*", "*)", "--", "#", "$"};

std::string remSpaces(const std::string& line) {
  const char* blanks = " \t\r\n\f\v";
  const size_t first = line.find_first_not_of(blanks);
  return first == std::string::npos ? std::string()
                                    : line.substr(first, line.find_last_not_of(blanks) + 1 - first);
}

bool BeginsFilePrefix(const std::string& text) {
  return !text.empty() && (std::isalnum(static_cast<unsigned char>(text[0])) || text[0] == '_');
}

class Reader {
 public:
  explicit Reader(AsnCommandLine& line) : line_(line) {}

  void Word(const std::string& word) {
    if (word.empty()) return;
    if (word[0] == '+') return OptionFile(word.substr(1));
    if (word[0] == '-') return Option(word.substr(1), "");
    FilePrefix(word);
  }

 private:
  void Ignored(const std::string& option, const std::string& file) {
    argumentIgnored(option, file);
    ++line_.warnings;
  }

  void PrefixLength(const std::string& text, const std::string& value, const std::string& file) {
    const bool digits = !value.empty() && value.size() < 3 && value[0] != '0' &&
                        std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
    const int length = digits ? std::stoi(value) : 0;
    if (length < 1 || length > kLongestPrefix || !line_.file_prefixes.empty()) return Ignored(text, file);
    line_.prefix_length = length;
  }

  void Option(const std::string& text, const std::string& file) {
    const bool printable =
        std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= ' ' && c < 0x7f; });
    if (text.size() > kLongestOption || !printable) return;
    const std::string option = optionToUpper(text);
    const size_t equals = option.find('=');
    const std::string name = option.substr(0, equals);
    const std::string value = equals == std::string::npos ? std::string() : option.substr(equals + 1);
    if (name == "S") {
      line_.syntax_directory = value.empty() || value.back() == '/' ? value : value + '/';
    } else if (name == "A") {
      line_.source_directories.push_back(value.empty() ? "." : value);
    } else if (name == "PREFIXLEN") {
      return PrefixLength(text, value, file);
    } else if (name == "VERSION" && equals == std::string::npos) {
      line_.version = true;
    }
    line_.options.push_back({text, file});
  }

  // A scope must be open before it ends, and closed before the next one begins.
  void CheckScope(const std::string& option, const std::string& file) {
    const bool begins = option.compare(0, 11, "BEGIN-SCOPE") == 0, ends = option == "END-SCOPE";
    if (begins && in_scope_)
      std::printf("\nWARNING : Unexpected -BEGIN-SCOPE: option file %s\n", file.c_str());
    if (ends && !in_scope_) std::printf("\nWARNING : Unexpected -END-SCOPE: option file %s\n", file.c_str());
    if (begins) in_scope_ = true;
    if (ends) in_scope_ = false;
  }

  void OptionFile(const std::string& name) {
    if (name.empty()) fatalError(kCannotRead, "(No option file name specified)");
    std::ifstream stream(name);
    if (!stream) fatalError(kCannotRead, name);
    in_scope_ = false;
    for (std::string line; std::getline(stream, line);) {
      line = remSpaces(line);
      if (optionToUpper(line) == "-END-OF-OPTIONS") break;
      if (line.empty() || IsComment(line)) continue;
      if (line[0] == '-') {
        CheckScope(optionToUpper(line.substr(1)), name);
        Option(line.substr(1), name);
      } else if (BeginsFilePrefix(line)) {
        FilePrefix(line);
      } else {
        Ignored(line, name);
      }
    }
    if (stream.bad()) fatalError(kReadFault, name);
    if (in_scope_) std::printf("\nWARNING : -END-SCOPE expected: option file %s\n", name.c_str());
  }

  void FilePrefix(std::string name) {
    constexpr std::string_view ending = ".stx";
    if (name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0)
      name.erase(name.size() - ending.size());
    if (!validFilePrefix(name)) {
      std::printf("\nERROR : Invalid file prefix: %s\n", name.c_str());
      return;
    }
    line_.file_prefixes.push_back(CutPrefix(name, line_.prefix_length, "File prefix"));
  }

  AsnCommandLine& line_;
  bool in_scope_ = false;
};
}  // namespace

bool IsComment(std::string_view line) {
  return std::any_of(std::begin(kCommentMarks), std::end(kCommentMarks),
                     [&](std::string_view mark) { return line.substr(0, mark.size()) == mark; });
}

void argumentIgnored(const std::string& option, const std::string& file) {
  std::printf("\nWARNING : Argument ignored: %s\n", option.c_str());
  if (!file.empty()) std::printf("          In option file  : %s\n", file.c_str());
}

void TellCutting(int length) {
  std::printf("          Truncating it to %d characters.\n", length);
  std::printf("          Check value of the PREFIXLEN option.\n");
}

std::string CutPrefix(const std::string& prefix, int length, const char* what) {
  if (prefix.size() <= static_cast<size_t>(length)) return prefix;
  std::printf("WARNING : %s '%s' longer than %d characters.\n", what, prefix.c_str(), length);
  TellCutting(length);
  return prefix.substr(0, static_cast<size_t>(length));
}

AsnCommandLine parseCmdLineParams(const std::vector<std::string>& words) {
  AsnCommandLine line;
  Reader reader(line);
  for (const std::string& word : words) reader.Word(word);
  return line;
}
}  // namespace asn1
