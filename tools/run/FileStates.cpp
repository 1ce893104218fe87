#include "run/FileStates.h"

#include <sys/stat.h>

#include <fstream>
#include <sstream>

namespace run {

namespace {

std::string Time(const timespec& time) {
  return std::to_string(time.tv_sec) + ":" + std::to_string(time.tv_nsec);
}

std::string State(const std::filesystem::path& file, int (*ask)(const char*, struct stat*)) {
  struct stat info = {};
  if (ask(file.c_str(), &info) != 0) return "missing";
  return Time(info.st_mtim) + ":" + Time(info.st_ctim) + ":" + std::to_string(info.st_size) + ":" +
         std::to_string(info.st_ino);
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// True where a character at `i` stands for the one behind it.
bool IsQuote(const std::string& text, size_t i) {
  if (i + 1 == text.size()) return false;
  const char next = text[i + 1];
  return text[i] == '\\' ? next == ' ' || next == '#' || next == '\\' : text[i] == '$' && next == '$';
}

}  // namespace

std::string StateOf(const std::filesystem::path& file) {
  return State(file, stat);
}

std::string StateOfEntry(const std::filesystem::path& file) {
  return State(file, lstat);
}

std::string ReadFile(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return "";
  std::ifstream in(file, std::ios::binary);
  std::ostringstream whole;
  whole << in.rdbuf();
  return whole.str();
}

std::vector<std::string> MakeWords(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && IsQuote(text, i)) {
      word += text[++i];
    } else if (i < text.size() && !IsBlank(text[i])) {
      word += text[i];
    } else {
      if (word.ends_with(':')) word.pop_back();
      if (!word.empty() && word != "\\") words.push_back(word);
      word.clear();
    }
  }
  return words;
}

bool AreRulesWhole(const std::string& text) {
  return text.ends_with('\n') && !text.ends_with("\\\n") && text.find(':') != std::string::npos;
}

}  // namespace run
