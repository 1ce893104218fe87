#include "asn1/front/AsnOptions.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace asn1 {
namespace {
constexpr long kMostInt32 = 0x7fffffff;
constexpr size_t kLongestModuleName = 128;
constexpr int kMostAlternatives = 8;

// The longer letters first: "CL" is no "C" for something that begins with "L".
constexpr struct {
  const char* letters;
  NamingKind kind;
} kKinds[] = {{"CL", kNamesClasses},   {"VS", kNamesValueSets}, {"OS", kNamesObjectSets},
              {"T", kNamesTypes},      {"V", kNamesValues},     {"O", kNamesObjects},
              {"C", kNamesComponents}, {"F", kNamesFunctions}};
constexpr struct {
  const char* word;
  std::string FixRec::*field;
} kNamings[] = {{"CONV", &FixRec::conversion},
                {"PREF", &FixRec::prefix},
                {"NAME", &FixRec::name},
                {"SUFF", &FixRec::suffix}};

constexpr struct {
  const char* word;
  int feature;
} kFeatures[] = {{"OLD", 0},
                 {"REAL", 1},
                 {"REAL-N", -1},
                 {"COMMONTIME", 2},
                 {"DATETIMEZ", -2},
                 {"EXTERNAL", 3},
                 {"EXTERNAL-N", -3},
                 {"SIGNED-CONTROL-MEMBER", 4},
                 {"UNSIGNED-CONTROL-MEMBER", -4},
                 {"ANY-FUNCTIONS", 5},
                 {"NO-ANY-FUNCTIONS", -5}};

std::string Upper(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return result;
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == separator)
      parts.emplace_back();
    else
      parts.back() += c;
  }
  return parts;
}

// Digits only, without a zero in front of others.
std::optional<long> NumberIn(std::string_view text, long lowest, long highest) {
  if (text.empty() || text.size() > 10 || (text.size() > 1 && text[0] == '0')) return std::nullopt;
  long number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + (c - '0');
  }
  if (number < lowest || number > highest || number > kMostInt32) return std::nullopt;
  return number;
}

std::optional<long> WordIn(const std::string& value, const char* words) {
  std::istringstream stream(words);
  std::string word;
  for (long position = 0; stream >> word; ++position) {
    const size_t colon = word.find(':');
    if (word.substr(0, colon) != value) continue;
    return colon == std::string::npos ? position : std::stol(word.substr(colon + 1));
  }
  return std::nullopt;
}

bool IsNameCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
}

using Parts = std::vector<std::string>;

bool IsNameList(const std::string& value) {
  const Parts parts = Split(value, ':');
  return std::all_of(parts.begin(), parts.end(),
                     [](const std::string& part) { return validFilePrefix(part); });
}

// The name of a module, and two prefixes that may be missing.
bool IsPrefixes(const std::string& value) {
  const Parts parts = Split(value, ':');
  const std::string& name = parts[0];
  return parts.size() <= 3 && !name.empty() && std::isalpha(static_cast<unsigned char>(name[0])) &&
         name.find('_') == std::string::npos &&
         std::all_of(parts.begin(), parts.end(), [](const std::string& part) {
           return std::all_of(part.begin(), part.end(), IsNameCharacter);
         });
}

bool IsBitVector(const std::string& value) {
  return value.size() <= 8 && value.find_first_not_of("01") == std::string::npos;
}

// Up to three parts: nothing is made, all in one file, or a file for each.
bool IsGeneration(const std::string& value) {
  const Parts parts = Split(Upper(value), ':');
  return parts.size() <= 3 && std::all_of(parts.begin(), parts.end(), [](const std::string& part) {
           return part == "NONE" || part == "COMBINED" || part == "SEPARATE" ||
                  NumberIn(part, 0, 2).has_value();
         });
}

bool IsSize(const std::string& value) {
  const std::string upper = Upper(value);
  return upper == "0" || upper == "OPTIMIZE" || upper == "8" || upper == "16" || upper == "32" ||
         upper == "64";
}

bool IsIntegerSize(const std::string& value) {
  return IsSize(!value.empty() && (value[0] == 'U' || value[0] == 'u') ? value.substr(1) : value);
}

// "{mantissa,10,exponent}".
bool IsRealLimit(const std::string& value) {
  if (value.size() < 2 || value.front() != '{' || value.back() != '}') return false;
  const Parts parts = Split(value.substr(1, value.size() - 2), ',');
  return parts.size() == 3 && NumberIn(parts[0], 0, kMostInt32).has_value() && parts[1] == "10" &&
         NumberIn(parts[2], 0, 32767).has_value();
}

bool IsBrowserPrefix(const std::string& value) {
  return value.size() <= 32 && validFilePrefix(value);
}

// "H", "L" or "U", or the first with one of the others.
bool IsConversion(const std::string& value) {
  std::string_view rest = value;
  if (!rest.empty() && (rest[0] == 'H' || rest[0] == 'h')) rest.remove_prefix(1);
  return rest.empty() ||
         (rest.size() == 1 && std::string_view("LlUu").find(rest[0]) != std::string_view::npos);
}

// Names of types, classes and sets of values or objects begin with a capital, all others do not.
bool IsNameOf(NamingKind kind, const std::string& name) {
  const auto first = static_cast<unsigned char>(name[0]);
  const bool capital =
      kind == kNamesTypes || kind == kNamesClasses || kind == kNamesValueSets || kind == kNamesObjectSets;
  if (kind != kNamesFunctions && (capital ? !std::isupper(first) : !std::islower(first))) return false;
  return std::all_of(name.begin(), name.end(), [](char c) { return c != '_' && IsNameCharacter(c); });
}

enum class Form { Number, Boolean, Text };
struct OptionRow {
  const char* name;
  Form form;
  long lowest, highest;
  const char* words;
  bool (*is_good)(const std::string& value) = nullptr;  // of a text
};
constexpr OptionRow kOptions[] = {
#define OPTION_NUMBER(name, lowest, highest, words) {name, Form::Number, lowest, highest, words},
#define OPTION_BOOLEAN(name) {name, Form::Boolean, 0, 1, ""},
#define OPTION_TEXT(name) {name, Form::Text, 0, 0, ""},
#define OPTION_FORM(name, form) {name, Form::Text, 0, 0, "", form},
#include "asn1/front/OptionValues.def"
#undef OPTION_NUMBER
#undef OPTION_BOOLEAN
#undef OPTION_TEXT
#undef OPTION_FORM
};

const OptionRow* RowOf(const std::string& name) {
  static const auto rows = [] {
    std::unordered_map<std::string_view, const OptionRow*> by_name;
    for (const OptionRow& row : kOptions) by_name.emplace(row.name, &row);
    return by_name;
  }();
  const auto found = rows.find(name);
  return found == rows.end() ? nullptr : found->second;
}

std::optional<long> ValueOf(const OptionRow& row, const std::string& value) {
  const std::string upper = Upper(value);
  if (row.form == Form::Number) {
    const auto number = NumberIn(upper, row.lowest, row.highest);
    return number.has_value() ? number : WordIn(upper, row.words);
  }
  if (upper == "1" || upper == "YES" || upper == "TRUE") return 1;
  if (upper == "0" || upper == "NO" || upper == "FALSE") return 0;
  return std::nullopt;
}

// Lines that source control systems leave in option files.
bool isRCSKeyWord(const std::string& text) {
  return text.size() > 1 && text.front() == '$' && text.back() == '$';
}
}  // namespace

std::string optionToUpper(std::string_view option) {
  const size_t equals = std::min(option.find('='), option.size());
  return Upper(option.substr(0, equals)) + std::string(option.substr(equals));
}

std::string convertHyphens(std::string text) {
  std::replace(text.begin(), text.end(), '-', '_');
  return text;
}

std::string convertUnderscores(std::string text) {
  std::replace(text.begin(), text.end(), '_', '-');
  return text;
}

bool validFilePrefix(std::string_view prefix) {
  return !prefix.empty() && std::all_of(prefix.begin(), prefix.end(), IsNameCharacter);
}

int AsnOptions::Number(const std::string& name, int otherwise) const {
  const auto found = numbers_.find(name);
  return found == numbers_.end() ? otherwise : found->second;
}

std::string AsnOptions::Text(const std::string& name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::string() : found->second;
}

FixRec AsnOptions::getFixRec(NamingKind kind, const std::string& name) const {
  const auto own = fixes_.find({kind, name});
  if (own != fixes_.end()) return own->second;
  const auto global = fixes_.find({kind, std::string()});
  return global == fixes_.end() ? FixRec{} : global->second;
}

bool AsnOptions::TakeNaming(const std::string& name, const std::string& value) {
  for (const auto& kind : kKinds) {
    const std::string letters = kind.letters;
    if (name.compare(0, letters.size(), letters) != 0) continue;
    for (const auto& naming : kNamings) {
      if (name.substr(letters.size()) != naming.word) continue;
      const size_t colon = value.find(':');
      const std::string of = colon == std::string::npos ? std::string() : value.substr(0, colon);
      const std::string text = colon == std::string::npos ? value : value.substr(colon + 1);
      const bool good = naming.field == &FixRec::conversion
                            ? IsConversion(text)
                            : std::all_of(text.begin(), text.end(), IsNameCharacter);
      if (!good || (!of.empty() && !IsNameOf(kind.kind, of))) return false;
      FixRec& fix = fixes_[{kind.kind, of}];
      fix.*naming.field = text;
      return true;
    }
  }
  return false;
}

std::string AsnOptions::EntryOf(const std::string& value) {
  const auto is_number = [](const std::string& text) {
    const std::string upper = Upper(text);
    return upper == "SDU" || upper == "PDU" ||
           (!text.empty() && text.find_first_not_of("01234567") == std::string::npos);
  };
  // The number, or the word for a unit of data, may stand before the name or behind it.
  const size_t colon = value.find(':');
  if (colon == std::string::npos) return value;
  const std::string left = value.substr(0, colon), right = value.substr(colon + 1);
  // A type may have such a word for its name.
  if (is_number(right)) return left;
  return left.empty() || is_number(left) ? right : std::string();
}

bool AsnOptions::TakeEntry(const std::string& value) {
  const std::string name = EntryOf(value);
  if (name.empty() || !IsNameOf(kNamesTypes, name)) return false;
  entries_.insert(name);
  return true;
}

std::string AsnOptions::Cut(const std::string& prefix, const char* what) const {
  if (prefix.size() <= prefix_length_) return prefix;
  std::printf("WARNING : A %s '%s' is longer than %d characters.\n", what, prefix.c_str(),
              static_cast<int>(prefix_length_));
  TellCutting(static_cast<int>(prefix_length_));
  return prefix.substr(0, prefix_length_);
}

void AsnOptions::TakePrefix(const std::string& value) {
  const Parts parts = Split(value, ':');
  const std::string reference = parts[0].substr(0, kLongestModuleName);
  const std::string file = Cut(parts.size() > 1 && !parts[1].empty() ? parts[1] : reference, "file prefix");
  const bool own = parts.size() > 2 && !parts[2].empty();
  prefixes_[convertHyphens(reference)] = {file, own ? Cut(parts[2], "generation prefix") : file};
}

bool AsnOptions::TakeFeatures(const std::string& value) {
  for (const std::string& word : Split(value, ',')) {
    const auto* known = std::find_if(std::begin(kFeatures), std::end(kFeatures),
                                     [&](const auto& row) { return Upper(word) == row.word; });
    if (known == std::end(kFeatures)) return false;
    if (known->feature >= 0)
      c_generation_.insert(known->feature);
    else
      c_generation_.erase(-known->feature);
  }
  return true;
}

bool AsnOptions::TakeAlternatives(const std::string& names) {
  const int count = static_cast<int>(Split(names, ':').size());
  if (count > Number("ALTMAX", kMostAlternatives)) return false;
  alternatives_ = std::max(alternatives_, count);
  return true;
}

bool AsnOptions::TakeOption(const std::string& text) {
  const std::string option = optionToUpper(text);
  const size_t equals = option.find('=');
  const std::string name = option.substr(0, equals);
  if (equals == std::string::npos)
    return name == "ALLOW" || name == "ANALYZE" || name == "STRICTSTANDARD" || isRCSKeyWord(text) ||
           text.compare(0, 2, "//") == 0;
  const std::string value = option.substr(equals + 1);
  if (name == "PREFIX") return IsPrefixes(value);  // taken before all others
  if (name == "ENTRY") return TakeEntry(value);
  if (name == "C-GENERATION") return TakeFeatures(value);
  if (name == "INFO") {
    info_.push_back(value);
    return true;
  }
  if (name == "BEO" && value.compare(0, 2, "//") == 0) return true;
  if (const OptionRow* of_name = RowOf(name)) {
    const OptionRow& row = *of_name;
    if (row.form == Form::Text) {
      if (row.is_good != nullptr && !row.is_good(value)) return false;
      if (row.is_good == IsNameList && !TakeAlternatives(value)) return false;
      values_[name] = value;
      return true;
    }
    const auto number = ValueOf(row, value);
    if (name == "TABF" && number.has_value() && *number > Number("TAB", 1)) return false;
    if (name == "ALTMAX" && number.has_value() && *number < alternatives_) return false;
    if (number.has_value()) numbers_[name] = static_cast<int>(*number);
    return number.has_value();
  }
  return TakeNaming(name, value);
}

bool AsnOptions::IsKnown(const std::string& text) {
  static constexpr std::string_view kOfGenerators[] = {"VERSION",
                                                       "ENTRYTAG",
                                                       "LOGFILE",
                                                       "OWNI",
                                                       "OWNF",
                                                       "NOHEADERS",
                                                       "FXE",
                                                       "ASN2C_CODEC",
                                                       "BEO",
                                                       "COD-FUNC-PREF",
                                                       "PERCOD",
                                                       "ENCODING-VARIANT",
                                                       "BEGIN-SCOPE",
                                                       "END-SCOPE",
                                                       "ENCODING-VARIANT-FUNC-PREF",
                                                       "DEFAULT-VALUES-WARNINGS-DISABLE"};
  const std::string option = optionToUpper(text);
  const std::string name = option.substr(0, option.find('='));
  if (std::find(std::begin(kOfGenerators), std::end(kOfGenerators), name) != std::end(kOfGenerators))
    return true;
  // An option of one type has the type's name in front.
  const size_t colon = text.find(':');
  if (colon != std::string::npos && colon < text.find('=')) return true;
  return AsnOptions().TakeOption(text);
}

bool AsnOptions::IsPrefix(const std::string& text) {
  const std::string option = optionToUpper(text);
  return option.compare(0, 7, "PREFIX=") == 0 && IsPrefixes(option.substr(7));
}

void AsnOptions::Apply(const std::vector<std::string>& names,
                       const std::function<bool(const std::string&)>& unknown,
                       const std::vector<std::string>& common) {
  for (const std::vector<std::string>* texts : {&std::as_const(texts_), &common})
    for (const std::string& text : *texts)
      if (IsPrefix(text)) TakePrefix(text.substr(text.find('=') + 1));
  bool in_scope = true;
  for (const std::vector<std::string>* texts : {&std::as_const(texts_), &common})
    for (const std::string& text : *texts) {
      const std::string option = optionToUpper(text);
      if (option.compare(0, 12, "BEGIN-SCOPE=") == 0) {
        const std::vector<std::string> list = Split(option.substr(12), ':');
        in_scope = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
          return std::find(list.begin(), list.end(), name) != list.end();
        });
      } else if (option == "END-SCOPE") {
        in_scope = true;
      } else if (in_scope && !TakeOption(text)) {
        unknown(text);
      }
    }
}
}  // namespace asn1
