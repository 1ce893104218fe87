// The stage of files: checking, finding their encoding, parsing.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <map>

#include "asn1/integration/T3ModuleSteps.h"
#include "driver/diagnostics/Errors.h"
#include "driver/controller/T3Controller.h"
#include "driver/modules/T3FileFormat.h"
#include "frontend/T3Parser.h"
#include "frontend/T3Scanner.h"
#include "frontend/T3Tree.h"
#include "support/rFsearch.h"
#include "support/FormatText.h"
#include "support/ModuleCaches.h"

namespace {
constexpr int kWaitForWriter = 1000;

// What came through pipes, by their names: a source is read more than once.
std::map<tIdent, TemporaryFile>& pipe_copies = *new std::map<tIdent, TemporaryFile>;

// Copies what comes through an open pipe; false when nothing does, since nobody writes, or on a fault.
bool CopyPipe(int pipe, FILE* to) {
  pollfd ready{pipe, POLLIN, 0};
  poll(&ready, 1, kWaitForWriter);
  char buffer[1 << 16];
  ssize_t length = read(pipe, buffer, sizeof buffer);
  bool good = length > 0 && fcntl(pipe, F_SETFL, 0) == 0;
  while (good && length > 0) {
    good = std::fwrite(buffer, 1, static_cast<size_t>(length), to) == static_cast<size_t>(length);
    length = read(pipe, buffer, sizeof buffer);
  }
  return good && length == 0;
}

bool TakePipe(tIdent name) {
  const auto [place, is_new] = pipe_copies.try_emplace(name);
  if (!is_new) return !place->second.path().empty();
  const int pipe = open(gIdents.GetCStr(name), O_RDONLY | O_NONBLOCK);
  if (pipe < 0) return false;
  place->second.Adopt(MakeTemporaryFile(".", "vexa"));
  FILE* copy = place->second.path().empty() ? nullptr : std::fopen(place->second.path().c_str(), "wb");
  const bool copied = copy != nullptr && CopyPipe(pipe, copy);
  const bool closed = copy != nullptr && std::fclose(copy) == 0;
  close(pipe);
  if (!copied || !closed) place->second.Remove();
  return copied && closed;
}

// Where the text of a source lies.
const char* PathOf(tIdent name) {
  const auto copy = pipe_copies.find(name);
  return copy == pipe_copies.end() ? gIdents.GetCStr(name) : copy->second.path().c_str();
}

// A directory or device is no source; a pipe is one for TTCN-3, since the tools for ASN.1 read files
// themselves.
bool CanBeRead(const file_argument_t& file) {
  const char* path = gIdents.GetCStr(file.name);
  struct stat status {};
  const bool exists = stat(path, &status) == 0;
  if (exists && S_ISFIFO(status.st_mode) && file.language == language_ttcn3) return TakePipe(file.name);
  if (exists && !S_ISREG(status.st_mode)) return false;
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
  const char* path = PathOf(argument.name);
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
    if (CanBeRead(*file)) continue;
    vexa_error(std::string("Cannot open file: ") + gIdents.GetCStr(file->name), NoPosition);
    all = false;
  }
  return all;
}

bool ParseFiles() {
  ClearAllCaches();
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
