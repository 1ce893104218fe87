#include "FileAPI/CFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>

#include "driver/diagnostics/T3Exception.h"
#include "support/TemporaryFiles.h"

namespace {
constexpr mode_t kDirectoryMode = 0775;
// What is longer goes to the file from where it is.
constexpr size_t kStreamBuffer = 0x1000;

// Makes a directory with those above it.
void MakeDirectory(const std::string& directory) {
  std::error_code error;
  if (std::filesystem::is_directory(directory, error)) return;
  const std::filesystem::path path(directory);
  if (path.has_parent_path() && path.parent_path() != path) MakeDirectory(path.parent_path().string());
  if (mkdir(directory.c_str(), kDirectoryMode) != 0 && !std::filesystem::is_directory(directory, error))
    throw "could not create directory " + directory;
}

std::string GuardStem(const std::string& headerName) {
  std::string stem = headerName.substr(headerName.find_last_of("/\\") + 1);
  if (const size_t point = stem.find('.'); point != std::string::npos) stem[point] = '_';
  return stem;
}
}  // namespace

// The files being written; they take their places together at the end.
class CFile::Output {
 public:
  explicit Output(bool counts_lines) : counts_lines_(counts_lines) {}
  /// What follows goes to a new file.
  void open(const std::string& path) {
    files_.push_back(std::make_unique<OutputFile>());
    lines_ = 0;
    if (!files_.back()->Open(path))
      throw internal_exception("CFile", __LINE__, "end", "could not create " + path);
    std::setvbuf(stream(), nullptr, _IOFBF, kStreamBuffer);
  }
  void write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stream()) != text.size()) failed(*files_.back());
    if (!counts_lines_) return;
    for (const char c : text) lines_ += c == '\n';
  }
  void write(const CTextBlocks& text) {
    text.forEachBlock([this](std::string_view block) { write(block); });
  }
  void write(const CSection& section) {
    section.forEachPiece([this](std::string_view piece) { write(piece); });
  }
  void flush() {
    for (const auto& file : files_) {
      if (std::fflush(file->stream()) != 0 || std::ferror(file->stream()) != 0) failed(*file);
    }
  }
  void removeOld() {
    for (const auto& file : files_) file->RemoveOld();
  }
  bool isLikeOld(bool (*isSame)(std::string_view, std::string_view)) {
    return std::all_of(files_.begin(), files_.end(),
                       [isSame](const auto& file) { return file->IsLikeOld(isSame); });
  }
  void commit() {
    for (const auto& file : files_) {
      if (!file->Commit()) failed(*file);
    }
  }
  unsigned lines() const { return lines_; }

 private:
  [[noreturn]] static void failed(const OutputFile& file) {
    throw internal_exception("CFile", __LINE__, "end", "error when writing file " + file.path());
  }
  FILE* stream() const { return files_.back()->stream(); }

  std::vector<std::unique_ptr<OutputFile>> files_;
  bool counts_lines_;
  unsigned lines_ = 0;
};

CFile::CFile(const std::string& directory, const std::string& headerName, const std::string& sourceName,
             bool usesOwnHeader, unsigned lineLimit)
    : lineLimit_(lineLimit),
      headerName_(headerName),
      sourceName_(sourceName),
      directory_(directory),
      usesOwnHeader_(usesOwnHeader),
      sourceFiles_{sourceName},
      generatedFiles_{sourceName, headerName} {
  if (!directory.empty()) MakeDirectory(directory);
}

CFile::~CFile() = default;

void CFile::add(Where where, const CMeasuredWords& parts) {
  positions_[where].text.add(CList(parts, ""));
}

void CFile::newline(Where where, unsigned count) {
  add(where, std::string(count, '\n'));
}

CTextBlocks& CFile::bodyText(Where where) {
  std::vector<Body>& bodies = positions_[where].bodies;
  if (bodies.empty() || !bodies.back().sections.empty()) bodies.emplace_back();
  return bodies.back().text;
}

void CFile::addSection(Where where, CSection&& section, bool together) {
  if (isKept(section)) return bodyText(where).add(section.text());
  std::vector<Body>& bodies = positions_[where].bodies;
  if (!together || lineLimit_ == kNoLineLimit) bodies.emplace_back();
  bodies.back().sections.push_back(std::move(section));
}

void CFile::add(Where where, CSection&& section) {
  addSection(where, std::move(section), false);
}

void CFile::add(Where where, CSection&& first, CSection&& second) {
  addSection(where, std::move(first), false);
  addSection(where, std::move(second), true);
}

void CFile::define(std::string_view name) {
  if (!defined_.TryEmplace(std::hash<std::string_view>{}(name) >> 1).second) throw CNameTaken{std::string(name)};
}

void CFile::addStructure(std::string_view type, std::string_view name, bool isStatic,
                         const CMeasuredWords& members) {
  define(name);
  const std::string_view storage = isStatic ? "static " : "";
  positions_[isStatic ? SourceStructureDecls : HeaderStructures].text.add(isStatic ? storage : "extern ",
                                                                          type, " ", name, ";\n");
  const auto addTo = [&](auto& text) {
    text.add(storage, type, " ", name, " = \n  {\n    ", CList(members, ",\n    "), "\n  };\n\n");
  };
  if (lineLimit_ == kNoLineLimit) return addTo(bodyText(SourceStructures));
  CSection section;
  addTo(section);
  add(SourceStructures, std::move(section));
}

void CFile::addInclude(const std::string& name, bool inSource, bool isSystem) {
  const std::string quoted = isSystem ? "<" + name + ">" : "\"" + name + "\"";
  add(inSource ? SourceIncludes : HeaderIncludes, "#include " + quoted + "\n");
  if (!isSystem) localHeaders_.push_back(name);
}

void CFile::addDefine(const std::string& name, const std::string& value) {
  add(HeaderDefines, {"#define ", name, " ", value, "\n"});
}

void CFile::addIfDefDefine(const std::string& condition, const std::string& name,
                           const std::string& valueIfDefined, const std::string& valueElse) {
  add(HeaderDefines, {"#ifdef ", condition, "\n"});
  addDefine(name, valueIfDefined);
  add(HeaderDefines, "#else\n");
  addDefine(name, valueElse);
  add(HeaderDefines, "#endif\n");
}

void CFile::addConstant(const std::string& type, const std::string& name, const std::string& value,
                        bool isStatic) {
  define(name);
  if (!isStatic) addExternalConstant(type, name);
  add(SourceConstants, (isStatic ? "static const " : "const ") + type + " " + name + " = " + value + ";\n");
}

void CFile::addExternalConstant(const std::string& type, const std::string& name) {
  add(HeaderConstants, {"extern const ", type, " ", name, ";\n"});
}

void CFile::addVariable(const std::string& type, const std::string& name, bool isStatic) {
  define(name);
  if (!isStatic) add(HeaderVariables, {"extern ", type, " ", name, ";\n"});
  add(SourceVariables, (isStatic ? "static " : "") + type + " " + name + ";\n");
}

void CFile::addVariableWithInit(const std::string& type, const std::string& name, const std::string& init,
                                bool isStatic) {
  define(name);
  if (!isStatic) add(HeaderVariables, {"extern ", type, " ", name, ";\n"});
  add(SourceVariables, (isStatic ? "static " : "") + type + " " + name + " = " + init + ";\n");
}

void CFile::addExternalFunctionDecl(const std::string& type, const std::string& name,
                                    const std::vector<std::string>& parameters) {
  define(name);
  add(SourceFunctionDecls, "extern " + getSignature(type, name, parameters) + ";\n");
}

void CFile::addExternalFunctionDeclConditionally(const std::string& condition, const std::string& type,
                                                 const std::string& name,
                                                 const std::vector<std::string>& parameters) {
  add(SourceFunctionDecls, {"#ifdef ", condition, "\n"});
  addExternalFunctionDecl(type, name, parameters);
  add(SourceFunctionDecls, "#endif\n\n");
}

std::string CFile::path(const std::string& name) const {
  return directory_.empty() ? name : directory_ + "/" + name;
}

bool CFile::end() {
  if (!valid_) return true;
  Output header(lineLimit_ != kNoLineLimit);
  Output source(lineLimit_ != kNoLineLimit);
  if (!headerName_.empty()) header.open(path(headerName_));
  source.open(path(sourceName_));
  if (!headerName_.empty()) writeHeader(header);
  writeSource(source);
  header.flush();
  source.flush();
  if (isSame_ != nullptr && header.isLikeOld(isSame_) && source.isLikeOld(isSame_)) return false;
  // A header that stays is no reason to compile again what includes it. To a new source it must fit to the
  // letter.
  const bool keepsHeader = isSame_ != nullptr && header.isLikeOld(nullptr);
  // A run that is ended here leaves no source, which make misses, and never one with another's header.
  source.removeOld();
  if (!keepsHeader) header.commit();
  source.commit();
  return true;
}

void CFile::writeHead(Output& output) {
  for (const std::string& line : headerMessage_) {
    output.write(line);
    output.write("\n");
  }
}

void CFile::writeHeader(Output& output) {
  writeHead(output);
  output.write("\n");
  const std::string stem = GuardStem(headerName_);
  output.write("#ifndef __" + stem + "\n#define __" + stem + "\n\n");
  for (size_t where = HeaderIncludes; where <= HeaderArrays; ++where) flushPosition(output, where, false);
  output.write("#endif\n");
}

void CFile::writeSource(Output& output) {
  writeHead(output);
  output.write("\n");
  if (usesOwnHeader_ && !headerName_.empty()) addInclude(headerName_, true, false);
  for (size_t where = SourceIncludes; where <= SourceFunctions; ++where) flushPosition(output, where, true);
}

void CFile::flushPosition(Output& output, size_t where, bool splitAllowed) {
  const Position& position = positions_[where];
  if (!position.text.empty()) {
    if (splitAllowed && lineLimit_ != kNoLineLimit) splitIfFull(output, position.text.lineCount());
    output.write(position.text);
  }
  for (const Body& body : position.bodies) flushBody(output, body, splitAllowed);
  if (!position.text.empty() || !position.bodies.empty()) output.write("\n");
}

void CFile::flushBody(Output& output, const Body& body, bool splitAllowed) {
  output.write(body.text);
  if (splitAllowed && lineLimit_ != kNoLineLimit) {
    unsigned pending = 0;
    for (const CSection& section : body.sections) pending += section.lineCount();
    splitIfFull(output, pending);
  }
  for (const CSection& section : body.sections) output.write(section);
}

void CFile::splitIfFull(Output& output, unsigned pending) {
  if (static_cast<uint64_t>(output.lines()) + pending <= lineLimit_ || output.lines() <= lineLimit_ / 2)
    return;
  const std::string name = splitName();
  output.open(path(name));
  sourceFiles_.push_back(name);
  generatedFiles_.push_back(name);
  output.write(positions_[SourceIncludes].text);
}

std::string CFile::splitName() const {
  const std::string number = std::to_string(sourceFiles_.size() - 1);
  const size_t point = sourceName_.rfind('.');
  if (point == std::string::npos) return sourceName_ + number;
  return sourceName_.substr(0, point) + number + sourceName_.substr(point);
}
