// What tells whether a file is still the one that it was, and what a makefile's text says of other files.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace run {

/// All that tells two states of a file apart, as one word; the second of its last change stands first, in
/// front of a colon. Times alone would not do: a file may be replaced by an older one.
std::string StateOf(const std::filesystem::path& file);
/// The same of a link itself.
std::string StateOfEntry(const std::filesystem::path& file);

/// A file's contents; nothing for what is no regular file or cannot be read.
std::string ReadFile(const std::filesystem::path& file);

/// The words of a makefile or of the rules that a compiler writes of an object and its sources, without
/// make's quoting; colons behind a word are left out.
std::vector<std::string> MakeWords(const std::string& text);

/// False for rules of which the end is missing, as when a disk was full.
bool AreRulesWhole(const std::string& text);

}  // namespace run
