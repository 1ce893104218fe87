#include "mesk/Compilation.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "asn1/front/FilePrefix.h"
#include "mesk/Parser.h"
#include "mesk/Resolver.h"
#include "mesk/Writer.h"

namespace mesk {

namespace {

bool exists(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  std::fclose(file);
  return true;
}

/// Whether a file may be a source: none of those that are written beside sources is.
bool maySource(const std::string& name) {
  static const std::set<std::string> written = {"stx", "typ", "def", "tab", "ext", "c",
                                                "h",   "o",   "t3a", "acs", "mak"};
  return written.count(name.substr(name.rfind('.') + 1)) == 0;
}

bool endsInAsn(const std::string& name) {
  return name.size() > 4 && name.compare(name.size() - 4, 4, ".asn") == 0;
}

/// The files that may be sources, by their prefixes: the first one in order, those with the usual ending before all
/// others, which are marked.
std::map<std::string, std::pair<bool, std::string>> filesByPrefix(const std::vector<std::string>& directories) {
  std::map<std::string, std::pair<bool, std::string>> files;
  for (const std::string& directory : directories) {
    std::error_code failed;
    for (std::filesystem::directory_iterator entry(directory, failed), end; !failed && entry != end;
         entry.increment(failed)) {
      const std::string file = entry->path().filename().string();
      if (!maySource(file)) continue;
      const std::pair found{!endsInAsn(file), directory == "." ? file : joinPath(directory, file)};
      const auto [place, fresh] = files.emplace(asn1::FilePrefixOf(file), found);
      if (!fresh) place->second = std::min(place->second, found);
    }
  }
  return files;
}

}  // namespace

/// The path of a source that is given by its base name or prefix; empty if there is none.
std::string Compilation::locate(const std::string& name) {
  // Copies that were made for another form of the codecs come before all that may have their names.
  std::vector<std::string> directories{joinPath(options_.syntax_directory, asn1::kCopiesFolder)};
  directories.insert(directories.end(), options_.source_directories.begin(),
                     options_.source_directories.end());
  if (directories.size() == 1) directories.push_back(".");
  for (const std::string& directory : directories) {
    const std::string path = directory == "." ? name : joinPath(directory, name);
    if (endsInAsn(name) && exists(path)) return path;
    if (exists(path + ".asn")) return path + ".asn";
  }
  if (name.find('/') != std::string::npos && exists(name)) return name;
  // A file without the usual ending.
  for (const std::string& directory : directories)
    if (exists(directory == "." ? name : joinPath(directory, name)))
      return directory == "." ? name : joinPath(directory, name);
  // A prefix is not always the file's name: it may be cut, or lack some characters.
  if (!by_prefix_) by_prefix_ = filesByPrefix(directories);
  const auto found = by_prefix_->find(name);
  return found == by_prefix_->end() ? std::string() : found->second.second;
}

bool Compilation::parseFile(const std::string& path) {
  if (!parsed_.insert(path).second) return true;
  SourceFile& file = files_.emplace_back();
  file.path = path;
  if (!readSource(path, file.text)) {
    reporter_.error("the file " + path + " can not be read");
    return false;
  }
  tokens_.push_back(tokenize(file, reporter_));
  const size_t first = modules_.size();
  Parser(file, tokens_.back(), arena_, reporter_).parseFile(file, modules_);
  for (size_t i = first; i < modules_.size(); ++i) {
    Module& module = *modules_[i];
    const auto given = options_.prefixes.find(module.name);
    if (given != options_.prefixes.end()) {
      // The file's prefix means a module that stands alone in it.
      module.file_prefix = modules_.size() - first == 1 ? given->second.file : given->second.generation;
      module.generation_prefix = given->second.generation;
    } else {
      module.file_prefix =
          i == first ? asn1::FilePrefixOf(path) : module.name.substr(0, asn1::kLongestPrefix);
      module.generation_prefix = module.file_prefix;
    }
  }
  return true;
}

void Compilation::parseSources() {
  for (const std::string& source : options_.sources) {
    const std::string path = locate(source);
    if (path.empty()) {
      reporter_.error("the source " + source + " was not found");
    } else {
      parseFile(path);
    }
  }
  const auto known = [&](const std::string& name) {
    for (const auto& module : modules_) {
      if (module->name == name) return true;
    }
    return false;
  };
  std::vector<std::string> missing;
  for (const auto& [name, prefixes] : options_.prefixes) {
    if (known(name)) continue;
    const std::string path = locate(prefixes.file);
    if (!path.empty()) parseFile(path);
    if (!known(name)) missing.push_back(name);
  }
  // A second module of a file has a prefix that is no file's, so that one may have come meanwhile.
  for (const std::string& name : missing) {
    if (options_.sources.empty() && !known(name) && reporter_.errors() == 0) {
      reporter_.error("the source of module " + name + " was not found");
    }
  }
}

/// Sources of imported modules that nobody named are tried under the modules' names.
void Compilation::parseImports() {
  std::set<std::string> tried;
  for (const auto& module : modules_) tried.insert(module->name);
  for (size_t i = 0; i < modules_.size(); ++i) {
    std::vector<std::string> names;
    for (const ImportAst& import : modules_[i]->imports) names.emplace_back(import.module);
    for (const std::string& name : names) {
      if (!tried.insert(name).second) continue;
      const std::string path = locate(name);
      if (!path.empty()) parseFile(path);
      for (const auto& module : modules_) tried.insert(module->name);
    }
  }
}

void Compilation::checkOutputs() {
  std::map<std::string, const Module*> outputs;
  for (const auto& module : modules_) {
    const auto [place, fresh] = outputs.emplace(module->generation_prefix, module.get());
    if (!fresh && place->second->name != module->name) {
      reporter_.error(module->place(module->token),
                      "modules " + inQuotes(module->name) + " and " + inQuotes(place->second->name) +
                          " have the same prefix " + inQuotes(module->generation_prefix));
    }
  }
}

bool Compilation::write(const std::string& path, const std::string& contents) {
  const std::string beside = path + "." + std::to_string(getpid());
  std::FILE* file = std::fopen(beside.c_str(), "wb");
  bool good = file && std::fwrite(contents.data(), 1, contents.size(), file) == contents.size();
  if (file && std::fclose(file) != 0) good = false;
  if (good && std::rename(beside.c_str(), path.c_str()) != 0) good = false;
  if (!good) {
    std::remove(beside.c_str());
    reporter_.error("the file " + path + " can not be written");
  }
  return good;
}

bool Compilation::writeAll() {
  Writer writer(modules_, reporter_);
  writer.number();
  std::vector<std::string> files;
  for (const auto& module : modules_) {
    files.push_back(
        writer.contents(*module, options_.optionsFor({module->file_prefix, module->generation_prefix})));
  }
  if (reporter_.errors() > 0) return false;
  for (size_t i = 0; i < files.size(); ++i) {
    const std::string path = joinPath(options_.syntax_directory, modules_[i]->generation_prefix + ".stx");
    if (!write(path, files[i])) return false;
    if (options_.verbose) std::printf("%s: %s\n", modules_[i]->name.c_str(), path.c_str());
  }
  return true;
}

int Compilation::run() {
  if (options_.strict) reporter_.beStrict();
  try {
    parseSources();
    parseImports();
    checkOutputs();
    if (reporter_.errors() == 0 && modules_.empty()) reporter_.error("no source was given");
    // After a syntax error most names would be missing.
    if (reporter_.errors() > 0) return 1;
    Resolver resolver(modules_, arena_, reporter_);  // keeps the nodes that are written
    resolver.run(options_.entries);
    if (reporter_.errors() > 0) return 1;
    return writeAll() ? 0 : 1;
  } catch (const TooManyErrors&) {
    return 1;
  }
}

}  // namespace mesk
