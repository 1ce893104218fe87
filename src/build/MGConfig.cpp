#include "build/MGConfig.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

constexpr std::string_view kWhiteSpace = " \t";
/// Placeholders nested deeper than this stop with a message.
constexpr size_t kMaxDepth = 1000;
/// So do placeholders that together stand for more characters than this in one value.
constexpr size_t kMaxLength = size_t{64} << 20;

void SkipWhiteSpace(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
}

/// The name of a section, or nothing outside of all sections.
using Section = std::optional<std::string>;

/// True when `line` is a section tag; `section` is then the one that holds behind it. `line` begins at
/// its first character that is no white space.
bool ReadSectionTag(std::string_view line, Section& section) {
  constexpr std::string_view kStart = "<SECTION=";
  if (line.starts_with(kStart)) {
    line.remove_prefix(kStart.size());
    const size_t end = line.find('>');
    if (end != std::string_view::npos) section = line.substr(0, end);
    return true;
  }
  if (!line.starts_with("</SECTION>")) return false;
  section.reset();
  return true;
}

/// Takes one word from the head of `text`, which begins with one. A backslash guards the character
/// behind it and stays in the word.
std::string_view TakeWord(std::string_view& text) {
  const bool quoted = text.front() == '"';
  if (quoted) text.remove_prefix(1);
  const std::string_view ends = quoted ? "\"" : kWhiteSpace;
  size_t end = text.find_first_of(ends);
  while (end != std::string_view::npos && end > 0 && text[end - 1] == '\\') {
    end = text.find_first_of(ends, end + 1);
  }
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(word.size() + (quoted ? 1 : 0), text.size()));
  return word;
}

}  // namespace

void Config::read_config_file(std::istream& in, const std::string& section) {
  Section current;
  std::string text;
  while (std::getline(in, text)) {
    if (text.ends_with('\r')) text.pop_back();
    std::string_view line = text;
    SkipWhiteSpace(line);
    if (line.empty() || line.starts_with("//") || ReadSectionTag(line, current)) continue;
    if (!current || *current == section) read_item(line);
  }
}

void Config::read_item(std::string_view line) {
  const size_t key_end = line.find_first_of(" \t+=");
  if (key_end == std::string_view::npos) return;
  const std::string key(line.substr(0, key_end));
  line.remove_prefix(key_end);
  SkipWhiteSpace(line);
  const bool append = line.starts_with("+=");
  if (!append && !line.starts_with("=")) return;
  line.remove_prefix(append ? 2 : 1);
  SkipWhiteSpace(line);
  if (line.empty()) {
    entries_.emplace(key, "");
    return;
  }
  if (!append) entries_.erase(key);
  read_words(key, line);
}

void Config::read_words(const std::string& key, std::string_view words) {
  for (SkipWhiteSpace(words); !words.empty(); SkipWhiteSpace(words)) {
    if (words.starts_with("//")) return;
    const std::string_view word = TakeWord(words);
    if (!word.empty()) entries_.emplace(key, word);
  }
}

void Config::add_default_value(const std::string& key, const std::string& value) {
  entries_.erase(key);
  entries_.emplace(key, value);
}

/// One walk through placeholders. What a placeholder stands for is worked out once; the names on the way
/// down are kept, so that one that reaches itself is seen.
class Config::Expansion {
 public:
  explicit Expansion(const Config& config) : config_(config) {}

  /// What was put in holds no "<" any more, so one pass from left to right finds every placeholder.
  std::string entry(std::string_view text) {
    std::string expanded;
    for (size_t begin = text.find('<'); begin != std::string_view::npos; begin = text.find('<')) {
      expanded += text.substr(0, begin);
      const size_t end = text.find('>', begin);
      const size_t length = end == std::string_view::npos ? text.size() - begin : end + 1 - begin;
      const std::string name(text.substr(begin, length));
      insert(expanded, placeholder(name), name);
      text.remove_prefix(begin + length);
    }
    expanded += text;
    return expanded;
  }

 private:
  const std::string& placeholder(const std::string& name) {
    if (const auto known = known_.find(name); known != known_.end()) return known->second;
    if (!open_.insert(name).second) throw "the placeholder " + name + " reaches itself";
    if (open_.size() > kMaxDepth) throw "the placeholder " + name + " is nested too deeply";
    std::string value;
    const auto [first, last] = config_.entries_.equal_range(name);
    for (auto place = first; place != last; ++place) value += entry(place->second);
    open_.erase(name);
    return known_.emplace(name, std::move(value)).first->second;
  }

  void insert(std::string& expanded, const std::string& value, const std::string& name) {
    length_ += value.size();
    if (length_ > kMaxLength) throw "the value of the placeholder " + name + " is too long";
    expanded += value;
  }

  const Config& config_;
  std::map<std::string, std::string> known_;
  std::set<std::string> open_;
  size_t length_ = 0;
};

std::vector<std::string> Config::items(const std::string& key, const std::string& default_value) const {
  Expansion expansion(*this);
  std::vector<std::string> values;
  const auto [first, last] = entries_.equal_range(key);
  for (auto place = first; place != last; ++place) values.push_back(expansion.entry(place->second));
  if (values.empty() && !default_value.empty()) values.push_back(default_value);
  return values;
}

std::string Config::item(const std::string& key, const std::string& default_value) const {
  std::string joined;
  for (const std::string& value : items(key)) joined += value;
  return joined.empty() ? default_value : joined;
}
