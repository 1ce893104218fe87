#include "support/rGetopt.h"

#include <vector>

int rOptind = 0;
const char* rOptarg = nullptr;
int rOptopt = 0;
const char* rOptmsg = nullptr;
bool rGetoptArgumentWithEqual = false;
bool rGetoptOptionalWithEqual = false;

namespace {
enum class Argument { None, Required, Optional };

struct Option {
  char first;
  char second;  // 0: an option of one character
  Argument argument;
};

struct OptionTable {
  bool built = false;
  bool return_plain = false;
  std::vector<Option> options;
};
OptionTable table;

// The rest of the cluster being read, or null between words.
const char* cluster = nullptr;

void Build(const char* text) {
  table.options.clear();
  table.built = true;
  table.return_plain = *text == '-';
  if (*text == '+' || *text == '-') ++text;
  while (*text != '\0' && table.options.size() < kMaxOptions) {
    Option option{*text++, 0, Argument::None};
    if (text[0] == '!' && text[1] != '\0') {
      option.second = text[1];
      text += 2;
    }
    if (*text == ':') {
      option.argument = Argument::Required;
      if (*++text == ':') {
        option.argument = Argument::Optional;
        ++text;
      }
    }
    table.options.push_back(option);
  }
}

int Fault(const char* message) {
  rOptmsg = message;
  return '?';
}

// The option at the cluster's place; an option of two characters goes before one of one. Null when there
// is none; `half` tells whether its first character begins a longer option.
const Option* Find(char first, char second, bool& half) {
  const Option* single = nullptr;
  half = false;
  for (const Option& option : table.options) {
    if (option.first != first) continue;
    if (option.second == 0) {
      if (single == nullptr) single = &option;
    } else if (option.second == second && second != '\0') {
      return &option;
    } else {
      half = true;
    }
  }
  return single;
}

// Ends the word that the cluster stands in; what is left of it is the option's argument.
const char* RestOfWord(bool with_equal) {
  const char* rest = cluster;
  cluster = nullptr;
  ++rOptind;
  if (with_equal && *rest == '=') ++rest;
  return rest;
}

bool TakeArgument(int argc, const char* const* argv, Argument kind) {
  if (kind == Argument::Optional) {
    if (*cluster != '\0')
      rOptarg = RestOfWord(rGetoptOptionalWithEqual);
    else
      RestOfWord(false);
    return true;
  }
  if (*cluster != '\0') {
    rOptarg = RestOfWord(rGetoptArgumentWithEqual);
    return true;
  }
  RestOfWord(false);
  if (rOptind >= argc) return false;
  rOptarg = argv[rOptind++];
  return true;
}

int ReadCluster(int argc, const char* const* argv) {
  const char first = *cluster++;
  rOptopt = static_cast<unsigned char>(first);
  bool half;
  const Option* option = Find(first, *cluster, half);
  if (option == nullptr) {
    const bool at_end = *cluster == '\0';
    if (at_end) RestOfWord(false);
    return Fault(half && at_end ? "missing second option character" : "illegal option character");
  }
  if (option->second != 0) ++cluster;
  if (option->argument != Argument::None) {
    if (!TakeArgument(argc, argv, option->argument)) return Fault("required argument missing for option");
  } else if (*cluster == '\0') {
    RestOfWord(false);
  }
  return option->second == 0 ? rOptopt : rGetoptCode(first, option->second);
}
}  // namespace

void rOptreset() {
  table.built = false;
}

int rGetopt(int argc, const char* const* argv, const char* optstring) {
  rOptmsg = nullptr;
  rOptarg = nullptr;
  if (rOptind == 0) {
    rOptind = 1;
    cluster = nullptr;
  }
  if (!table.built) Build(optstring);
  if (cluster == nullptr) {
    if (rOptind >= argc) return -1;
    const char* word = argv[rOptind];
    if (word[0] != '-') {
      if (!table.return_plain) return -1;
      rOptarg = word;
      ++rOptind;
      return 1;
    }
    if (word[1] == '\0') return -1;
    if (word[1] == '-' && word[2] == '\0') {
      ++rOptind;
      return -1;
    }
    cluster = word + 1;
  }
  return ReadCluster(argc, argv);
}
