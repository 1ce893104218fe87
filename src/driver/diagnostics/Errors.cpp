#include "driver/diagnostics/Errors.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>

#include "driver/diagnostics/T3Error.h"
#include "support/Global.h"
#include "support/Sets.h"
#include "support/FormatText.h"

namespace {
constexpr size_t kPlainTextLength = 26;

void ExitWithFailure() {
  std::exit(1);
}

// A fault that the support library found in what it was given.
void ReportSupportFault(int code, long information) {
  if (code == kFaultBadIdent)
    gErrors.ErrorMessageI(code, kError, NoPosition, kInfoLong, &information);
  else
    gErrors.ErrorMessage(code, kError, NoPosition);
}

const char* CodeText(int code) {
  switch (code) {
    case 1:
      return "too many messages";
    case 2:
      return "Tcl/Tk";
    case 10:
      return "rMemory.Alloc out of memory";
    case 11:
      return "tStringRef undefined (NULL)";
    case 12:
      return "tIdent out of bounds";
    case 20:
      return "internal error";
    case 21:
      return "out of memory";
    case 22:
      return "file stack underflow (too many calls of CloseFile)";
    case 23:
      return "cannot open input file";
    case 24:
      return "start stack underflow (too many calls of yyPop)";
    case 30:
      return "syntax error";
    case 31:
      return "expected tokens";
    case 32:
      return "restart point";
    case 33:
      return "token inserted ";
    case 34:
      return "token found    ";
    case 35:
      return "found/expected ";
    case 36:
      return "invalid call of ReParse";
    case 40:
      return "tree out of memory";
    case 41:
      return "I/O error in";
    case 42:
      return "QueryTree reached end of input";
    case 43:
      return "cannot write file yyNode";
    case 44:
      return "invalid parameter";
    case 45:
      return "ConfigureTree: unknown parameter";
    case 50:
      return "CheckTree error";
    case 51:
      return "addr of parent:";
    case 52:
      return "type of parent:";
    case 53:
      return "name of child :";
    case 54:
      return "value of child:";
    case 55:
      return "addr of child :";
    case 56:
      return "type of child :";
    case 57:
      return "expected type :";
    case 58:
      return "parent node   :";
    case 59:
      return "child node    :";
    case 60:
      return "cyclic attribute dependencies";
    case 70:
      return "routine failed";
    default:
      return nullptr;
  }
}

// A long text ends at the first blank behind its first 26 characters.
std::string ShortText(const char* text) {
  const std::string whole = text;
  if (whole.size() <= kPlainTextLength) return whole;
  const size_t blank = whole.find(' ', kPlainTextLength);
  if (blank == std::string::npos || whole.find_first_not_of(' ', blank) == std::string::npos)
    return whole.substr(0, blank);
  return whole.substr(0, blank) + " ...";
}

template <class T>
const T& As(const void* information) {
  return *static_cast<const T*>(information);
}

// A wide text or set as its writer puts it on a stream.
template <class Writer>
std::string Written(const Writer& write) {
  char* memory = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&memory, &size);
  if (stream == nullptr) return {};
  write(stream);
  std::fclose(stream);
  std::string result(memory, size);
  std::free(memory);
  return result;
}

std::string WideText(const wchar_t* text) {
  return Written([text](FILE* stream) {
    const std::wstring_view view(text);
    StringM::WriteWString(stream, gStringM.PutWString(view.data(), view.size()));
  });
}
}  // namespace

Errors::Errors() : exit_(ExitWithFailure), stream_(stderr) {
  gSupportFault = ReportSupportFault;
}

void Errors::BeginErrors() {
  counters_.fill(0);
}

FILE* Errors::SetStream(FILE* stream) {
  FILE* before = stream_;
  stream_ = stream;
  return before;
}

Errors::ExitRoutine Errors::SetExit(ExitRoutine exit_routine) {
  const ExitRoutine before = exit_;
  exit_ = exit_routine;
  return before;
}

void Errors::Count1(int message_class) {
  if (message_class >= 0 && message_class < static_cast<int>(counters_.size()))
    ++counters_[static_cast<size_t>(message_class)];
}

long Errors::Count(int message_class) const {
  if (message_class < 0 || message_class >= static_cast<int>(counters_.size())) return 0;
  return counters_[static_cast<size_t>(message_class)];
}

std::string Errors::CodeToText(int code) {
  const char* text = CodeText(code);
  return text != nullptr ? text : FormatText("error code: %ld", static_cast<long>(code));
}

std::string Errors::ClassToText(int message_class) {
  switch (message_class) {
    case kFatal:
      return "Fatal       ";
    case kRestriction:
      return "Restriction ";
    case kError:
      return "Error       ";
    case kWarning:
      return "Warning     ";
    case kRepair:
      return "Repair      ";
    case kNote:
      return "Note        ";
    case kInformation:
      return "Information ";
    default:
      return FormatText("Error class: %d ", message_class);
  }
}

std::string Errors::InformationText(int info_class, const void* information) {
  switch (info_class) {
    case kInfoInteger:
      return FormatText("%d", As<int>(information));
    case kInfoShort:
      return FormatText("%d", As<short>(information));
    case kInfoLong:
      return FormatText("%ld", As<long>(information));
    case kInfoUnsignedLong:
      return FormatText("%lu", As<unsigned long>(information));
    case kInfoFloat:
      return FormatText("%e", static_cast<double>(As<float>(information)));
    case kInfoBool:
      return As<bool>(information) ? "T" : "F";
    case kInfoCharacter:
      return std::string(1, As<char>(information));
    case kInfoWideCharacter: {
      const wchar_t text[2] = {As<wchar_t>(information), L'\0'};
      return WideText(text);
    }
    case kInfoText:
      return ShortText(static_cast<const char*>(information));
    case kInfoWideText:
      return WideText(static_cast<const wchar_t*>(information));
    case kInfoIdent:
      return std::string(gIdents.GetString(As<tIdent>(information)));
    case kInfoWideIdent:
      return Written([information](FILE* stream) { gIdents.WriteWIdent(stream, As<tIdent>(information)); });
    case kInfoSet:
      return Written([information](FILE* stream) { WriteSet(stream, As<tSet>(information)); });
    case kInfoPosition:
      return PositionText(As<tPosition>(information));
    default:
      return FormatText("info class: %d", info_class);
  }
}

void Errors::Write(const std::string& text, int message_class, const tPosition& position,
                   const std::string* information) {
  std::string line;
  if (position.Line != 0) line = PositionText(position) + ": ";
  line += ClassToText(message_class) + text;
  if (information != nullptr) line += ": " + *information;
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stream_);
  std::fflush(stream_);
  if (message_class == kFatal) exit_();
}

void Errors::WriteCoded(int code, int message_class, const tPosition& position,
                        const std::string* information) {
  if (position.Line != 0) {
    const bool told = HasSyntaxError(position) || excused_line_ == LineOf(position);
    last_line_ = LineOf(position);
    if (told) return;
  }
  Write(CodeToText(code), message_class, position, information);
}

void Errors::ErrorMessage(int code, int message_class, const tPosition& position) {
  switch (code) {
    case kCodeSyntaxError:
    case kCodeRestartPoint:
    case kCodeTokenInserted:
      return;
    default:
      Count1(message_class);
      WriteCoded(code, message_class, position, nullptr);
  }
}

// A syntax error arrives as its found token (kept until the expected ones follow), its expected tokens, and
// its repair, which is silent.
void Errors::ErrorMessageI(int code, int message_class, const tPosition& position, int info_class,
                           const void* information) {
  switch (code) {
    case kCodeSyntaxError:
    case kCodeRestartPoint:
    case kCodeTokenInserted:
      return;
    case kCodeTokenFound:
      if (info_class != kInfoText) break;
      found_ = std::string(static_cast<const char*>(information)) + '/';
      return;
    case kCodeExpectedTokens: {
      if (info_class != kInfoText) break;
      const std::string text = ShortText((found_ + static_cast<const char*>(information)).c_str());
      WriteCoded(kCodeFoundExpected, kError, position, &text);
      return;
    }
    default:
      break;
  }
  Count1(message_class);
  const std::string text = InformationText(info_class, information);
  WriteCoded(code, message_class, position, &text);
}

void Errors::Message(const std::string& text, int message_class, const tPosition& position) {
  Count1(message_class);
  Write(text, message_class, position, nullptr);
}

void Errors::MessageI(const std::string& text, int message_class, const tPosition& position, int info_class,
                      const void* information) {
  Count1(message_class);
  const std::string info = InformationText(info_class, information);
  Write(text, message_class, position, &info);
}

// Nothing here may ask for memory. The amount is what the process held at most, in bytes.
void OutOfMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  char line[80];
  const int length = std::snprintf(line, sizeof line, "Fatal       rMemory.Alloc out of memory: %lu\n",
                                   static_cast<unsigned long>(usage.ru_maxrss) * 1024);
  static_cast<void>(!write(STDERR_FILENO, line, static_cast<size_t>(length)));
  std::exit(1);
}
