// The options of the generator.
#include <algorithm>
#include <cctype>
#include <cstdio>

#include "asn1/front/AsnFault.h"
#include "asn1/generate/Asn2T3.h"

namespace asn1 {
namespace {
constexpr size_t kLongestLogName = 513;

struct CodecWord {
  const char* word;
  AsnCodec codec;
  bool sets_use, ber, per;
};
constexpr CodecWord kCodecWords[] = {
    {"NONE", kCodecNone, true, false, false},
    {"BER_DEFINITE", kCodecBerDefinite, true, true, false},
    {"BER", kCodecBerDefinite, true, true, false},
    {"BER_INDEFINITE", kCodecBerIndefinite, true, true, false},
    {"PER_ALIGNED", kCodecPerAl, true, false, true},
    {"PER", kCodecPerAl, true, false, true},
    {"PER_UNALIGNED", kCodecPerUa, true, false, true},
    {"OWN", kCodecOwnRoutines, false, false, false},
    {"ALL", kCodecEach, true, true, true},
};

const CodecWord* CodecOf(const std::string& word) {
  const auto* row = std::find_if(std::begin(kCodecWords), std::end(kCodecWords),
                                 [&](const CodecWord& one) { return word == one.word; });
  return row == std::end(kCodecWords) ? nullptr : row;
}

bool TakeCodec(const std::string& word, T3AsnModuleOptions& options) {
  const CodecWord* row = CodecOf(word);
  if (row == nullptr) return false;
  options.codec = row->codec;
  if (row->sets_use) {
    options.ber_used = row->ber;
    options.per_used = row->per;
  }
  return true;
}

// A word in letters of any case, or its number.
bool TakeWord(const std::string& text, std::initializer_list<const char*> words, int& number) {
  std::string value = text;
  for (char& c : value) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  int position = 0;
  for (const char* word : words) {
    if (value == word || value == std::to_string(position)) {
      number = position;
      return true;
    }
    ++position;
  }
  return false;
}

bool TakeLogName(const std::string& value, T3AsnModuleOptions& options) {
  const bool good = !value.empty() && value.size() <= kLongestLogName &&
                    std::all_of(value.begin(), value.end(), [](unsigned char c) {
                      return std::isalnum(c) || std::string_view("./\\[]_-").find(static_cast<char>(c)) !=
                                                    std::string_view::npos;
                    });
  if (good) options.logfile = value;
  return good;
}

// The text behind "BEO=ASN2T3=", or the text itself.
std::string Plain(const std::string& text) {
  constexpr std::string_view mark = "BEO=", word = "ASN2T3=";
  if (optionToUpper(text).compare(0, mark.size(), mark) != 0) return text;
  const std::string inner = text.substr(mark.size());
  return inner.compare(0, word.size(), word) == 0 ? inner.substr(word.size()) : inner;
}

// "Type:option" holds for one type.
bool TakeTypeOption(T3AsnModuleOptions& options, const std::string& text, bool& known) {
  const size_t colon = text.find(':');
  known = colon != std::string::npos && colon > 0 && colon < text.find('=') &&
          std::isupper(static_cast<unsigned char>(text[0])) != 0;
  if (!known) return false;
  if (!typeBEOptionOK(options, convertHyphens(text.substr(0, colon)), optionToUpper(text.substr(colon + 1))))
    std::printf("Warning     Unrecognized back-end option: %s\n", text.c_str() + colon + 1);
  return true;
}

[[noreturn]] void PrintVersion() {
  std::printf("%s version %s for MESK version%s \n", kName, kVersion, kMeskVersion);
  std::fflush(stdout);
  throw AsnExit{0};
}

bool Take(ModRec& module, const std::string& text, bool& known) {
  T3AsnModuleOptions& options = OptionsOf(module);
  if (TakeTypeOption(options, text, known)) return true;
  const std::string option = optionToUpper(text);
  const size_t equals = option.find('=');
  const std::string name = option.substr(0, equals);
  const std::string value = equals == std::string::npos ? std::string() : option.substr(equals + 1);
  int number = 0;
  known = true;
  if (option == "VERSION") PrintVersion();
  if (name == "VERBOSE") return TakeWord(value, {"QUIET", "TERSE", "VERBOSE"}, options.verbosity);
  if (name == "ENTRYTAG") {
    const bool good = TakeWord(value, {"IGNORE", "WARN"}, number);
    if (good) options.entry_tag = number;
    return good;
  }
  if (name == "LOGFILE") return TakeLogName(value, options);
  if (name == "OWNI") {
    options.own_includes.push_back(value);
    return !value.empty();
  }
  if (name == "OWNF") {
    options.own_functions.insert(convertHyphens(value));
    return !value.empty();
  }
  if (option == "NOHEADERS") {
    options.no_headers = true;
    return true;
  }
  if (name == "FXE") {
    const bool good = TakeWord(value, {"FALSE", "TRUE"}, number) || TakeWord(value, {"NO", "YES"}, number);
    if (good) options.fxe = number != 0;
    return good;
  }
  if (name == "ASN2C_CODEC") return TakeCodec(value, options);
  known = false;
  return false;
}
}  // namespace

T3AsnModuleOptions& OptionsOf(ModRec& module) {
  if (module.meta == nullptr) module.meta = std::make_unique<T3AsnModuleOptions>();
  return static_cast<T3AsnModuleOptions&>(*module.meta);
}

bool typeBEOptionOK(T3AsnModuleOptions& module, const std::string& type, const std::string& option) {
  const size_t equals = option.find('=');
  const std::string name = option.substr(0, equals);
  const std::string value = equals == std::string::npos ? std::string() : option.substr(equals + 1);
  if (name == "ASN1_TYPEDEF") return true;
  T3AsnTypeOptions& options = module.types[type];
  if (option == "OWNF") return options.own_function = true;
  if (name == "CONST-CHOSEN") {
    options.chosen = value;
    return !value.empty() &&
           std::all_of(value.begin(), value.end(), [](unsigned char c) { return std::isdigit(c); });
  }
  if (name == "CONST-OMIT") {
    options.omitted = value;
    return !value.empty();
  }
  const CodecWord* row = name == "ASN2C_CODEC" ? CodecOf(value) : nullptr;
  if (row == nullptr) return false;
  options.codec = row->codec;
  module.ber_used = module.ber_used || row->ber;
  module.per_used = module.per_used || row->per;
  return true;
}

bool globalBEOptionOK(ModRec& module, const std::string& text) {
  bool known = false;
  if (Take(module, Plain(text), known)) return true;
  // What is no option of this generator may be one of the tools, which say so themselves.
  const bool is_ours = known || optionToUpper(text).compare(0, 4, "BEO=") == 0;
  if (is_ours) std::printf("\nWARNING : Option ignored: %.50s\n", text.c_str());
  return true;
}

bool AllowsCodec(ModRec& module, const AsnType& type, AsnCodec codec) {
  const T3AsnModuleOptions& options = OptionsOf(module);
  const auto of_type = options.types.find(getTypeRef(type));
  const auto allows = [codec](AsnCodec chosen) {
    return chosen == codec || (chosen == kCodecEach && codec != kCodecOwnRoutines);
  };
  return allows(options.codec) || (of_type != options.types.end() && allows(of_type->second.codec));
}

bool HasAnsiC(const ModRec& module) {
  return module.options.Number("ANSI-C", 1) != 0;
}
}  // namespace asn1
