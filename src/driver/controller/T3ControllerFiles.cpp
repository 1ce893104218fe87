// The stage of files: checking, finding their encoding, parsing.
#include <sys/stat.h>

#include <cstdio>

#include "asn1/integration/T3Representation.h"
#include "driver/diagnostics/Errors.h"
#include "driver/controller/T3Controller.h"
#include "driver/modules/T3FileFormat.h"
#include "frontend/T3Parser.h"
#include "frontend/T3Scanner.h"
#include "frontend/T3Tree.h"
#include "support/rFsearch.h"
#include "support/FormatText.h"

namespace {
// A source is read more than once: a directory, pipe or device is none.
bool CanBeRead(const char* path) {
  struct stat status {};
  if (stat(path, &status) == 0 && !S_ISREG(status.st_mode)) return false;
  FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr) return false;
  std::fclose(stream);
  return true;
}

long ModificationTime(const char* path) {
  struct stat status {};
  if (stat(path, &status) != 0) throw std::string("could not stat input file");
  return status.st_mtime;
}

// The scanner reads ASCII, and UTF-8 without a mark.
bool NeedsConversion(const char* path, file_format_t format) {
  return format != format_ascii && (format != format_utf8 || HasBOM(path));
}

bool ParseAs(::language of, const char* path, tIdent file) {
  const bool ttcn3 = of == language_ttcn3;
  vexa_compiler_phases(
      gT3CommandLine.CommonVerbosity(),
      FormatText("Parsing %s file \"%s\"", ttcn3 ? "TTCN-3" : "ASN.1", gIdents.GetCStr(file)));
  return ttcn3 ? ParseTTCN3(path, file) : ParseASN1(path, file);
}

bool ParseFile(const file_argument_t& argument) {
  const char* path = gIdents.GetCStr(argument.name);
  gCurrentFileModificationTime = ModificationTime(path);
  file_format_t format = argument.options.format;
  if (format == format_unknown) format = GuessFileFormat(path);
  if (format == format_unknown) return false;
  TemporaryFile converted;
  if (!NeedsConversion(path, format)) return ParseAs(argument.language, path, argument.name);
  if (ConvertToUTF_8(path, format, converted) != 0) throw std::string("File format conversion failed");
  return ParseAs(argument.language, converted.path().c_str(), argument.name);
}

void BackupSyntaxFiles() {
  std::string directory = gT3CommandLine.GetDirectory(language_asn1);
  if (directory.empty() || directory[0] != '/')
    directory = gT3CommandLine.project_directory + DirectorySeparator() + directory;
  mesk_backupSTXFiles(directory);
}
}  // namespace

bool CheckFiles(std::vector<file_argument_t>::const_iterator begin,
                std::vector<file_argument_t>::const_iterator end) {
  bool all = true;
  for (auto file = begin; file != end; ++file) {
    const char* path = gIdents.GetCStr(file->name);
    if (CanBeRead(path)) continue;
    vexa_error(std::string("Cannot open file: ") + path, NoPosition);
    all = false;
  }
  return all;
}

bool ParseFiles() {
  gT3AST.root = gT3AST.mT3NoModule(NoPosition);
  gT3IsPortAllTypes = false;
  bool all = true;
  bool all_asn1 = true;
  for (const file_argument_t& file : gT3CommandLine.files) {
    const bool parsed = ParseFile(file);
    all = all && parsed;
    if (file.language == language_asn1) all_asn1 = all_asn1 && parsed;
  }
  if (all_asn1 && gT3CommandLine.build_avoidance) BackupSyntaxFiles();
  if (all) vexa_checktree(gT3AST.root);
  return all;
}

bool ParseTTCN3(const char* path, tIdent file) {
  T3Scanner scanner;
  T3Parser parser(&scanner, &gErrors);
  gCurrentFilename = file;
  scanner.BeginFile(path);
  parser.Parse();
  if (gParseErrors > 0 && gParseErrors >= gT3CommandLine.maximum_errors) throw MaximumErrorsExceeded();
  return gParseErrors == 0 && gErrors.ErrorCount() == 0 && gT3AST.root != nullptr;
}
