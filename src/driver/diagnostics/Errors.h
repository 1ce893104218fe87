// The lower layer of diagnostics: writes one line for each message in a fixed form, counts the messages of
// each class, and ends the process on a fatal one. Messages are free text or have a code; the coded ones
// of syntax errors are put together from several reports.
#pragma once

#include <array>
#include <cstdio>
#include <string>

#include "support/Idents.h"
#include "support/Position.h"
#include "support/StringM.h"

/// Classes of messages.
inline constexpr int kFatal = 1;
inline constexpr int kRestriction = 2;
inline constexpr int kError = 3;
inline constexpr int kWarning = 4;
inline constexpr int kRepair = 5;
inline constexpr int kNote = 6;
inline constexpr int kInformation = 7;

/// How the optional information of a message prints; `information` then points to a value of that type,
/// and for the text classes is the text itself.
inline constexpr int kInfoInteger = 1;
inline constexpr int kInfoShort = 2;
inline constexpr int kInfoLong = 3;
inline constexpr int kInfoUnsignedLong = 4;
inline constexpr int kInfoFloat = 5;
inline constexpr int kInfoBool = 6;
inline constexpr int kInfoCharacter = 7;
inline constexpr int kInfoWideCharacter = 8;
inline constexpr int kInfoText = 9;
inline constexpr int kInfoWideText = 10;
inline constexpr int kInfoIdent = 11;
inline constexpr int kInfoWideIdent = 12;
inline constexpr int kInfoSet = 13;
inline constexpr int kInfoPosition = 14;

/// Codes of messages that others raise; all texts are in Errors::CodeToText.
inline constexpr int kCodeAllocOutOfMemory = 10;
inline constexpr int kCodeInternalError = 20;
inline constexpr int kCodeOutOfMemory = 21;
inline constexpr int kCodeFileStackUnderflow = 22;
inline constexpr int kCodeCannotOpenInput = 23;
inline constexpr int kCodeStartStackUnderflow = 24;
inline constexpr int kCodeSyntaxError = 30;
inline constexpr int kCodeExpectedTokens = 31;
inline constexpr int kCodeRestartPoint = 32;
inline constexpr int kCodeTokenInserted = 33;
inline constexpr int kCodeTokenFound = 34;
inline constexpr int kCodeFoundExpected = 35;
inline constexpr int kCodeTreeOutOfMemory = 40;
inline constexpr int kCodeInputOutput = 41;
inline constexpr int kCodeUnknownParameter = 45;
inline constexpr int kCodeCheckTree = 50;
inline constexpr int kCodeRoutineFailed = 70;

class Errors {
 public:
  Errors();

  /// Sets all counters to zero.
  void BeginErrors();

  void ErrorMessage(int code, int message_class, const tPosition& position);
  void ErrorMessageI(int code, int message_class, const tPosition& position, int info_class,
                     const void* information);
  void Message(const std::string& text, int message_class, const tPosition& position);
  void MessageI(const std::string& text, int message_class, const tPosition& position, int info_class,
                const void* information);

  /// Whether the line of a position has had a syntax error.
  bool HasSyntaxError(const tPosition& position) const { return last_line_ == LineOf(position); }
  /// A syntax error in the line of a position follows from what was told already, and is left out.
  void ExcuseSyntaxError(const tPosition& position) { excused_line_ = LineOf(position); }

  /// The number of messages of a class since BeginErrors. The parts of a syntax error are counted by
  /// gParseErrors, and not here.
  long Count(int message_class) const;
  long ErrorCount() const { return Count(kError); }

  /// The text of a code; "error code: n" for an unknown one.
  static std::string CodeToText(int code);
  /// The text of a class, twelve characters wide; "Error class: n " for an unknown one.
  static std::string ClassToText(int message_class);
  /// The information as it prints behind a message.
  static std::string InformationText(int info_class, const void* information);

  FILE* Stream() const { return stream_; }
  /// Where messages go from now on; returns the stream before.
  FILE* SetStream(FILE* stream);
  /// What ends the process after a fatal message; returns the routine before.
  using ExitRoutine = void (*)();
  ExitRoutine SetExit(ExitRoutine exit_routine);

 private:
  void Count1(int message_class);
  void Write(const std::string& text, int message_class, const tPosition& position,
             const std::string* information);
  void WriteCoded(int code, int message_class, const tPosition& position, const std::string* information);

  ExitRoutine exit_;
  FILE* stream_;
  // A line of a file; 0 for none.
  struct Line {
    uint32_t line = 0;
    uint32_t file = 0;
    bool operator==(const Line&) const = default;
  };
  static Line LineOf(const tPosition& position) { return {position.Line, position.File}; }
  // The line of the last coded message: one source line gets at most one of them.
  Line last_line_;
  Line excused_line_;
  // The found token of a syntax error, with the '/' that separates it from the expected ones.
  std::string found_;
  std::array<long, 8> counters_{};
};

inline Errors& gErrors = *new Errors;

/// The new-handler of the program: reports exhausted memory as a fatal message.
void OutOfMemory();
