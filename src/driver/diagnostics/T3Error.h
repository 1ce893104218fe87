// Reporting of diagnostics: the catalogue, the filter of one message for a position, the limit on the
// number of errors, and the verbosity levels.
#pragma once

#include <string>

#include "driver/diagnostics/T3Exception.h"
#include "support/Idents.h"
#include "support/Position.h"

struct T3Tree_Node;

/// How far a user wants to be told: each level includes those before.
enum class verbosity_level_t { Errors = 0, Warnings = 1, Stages = 2, Progress = 3 };

/// An ordered level: a smaller number is a stronger claim about what is wrong.
enum class vexa_error_severity_t {
  sev_unsupported,
  sev_syntax,
  sev_import,
  sev_undefined,
  sev_unknown_field,
  sev_duplicate,
  sev_cycle,
  sev_template_type,
  sev_type,
  sev_value,
  sev_semantic,
  sev_subtype,
};

/// One row of the catalogue: a format with `%s` only, its level, and the number of its arguments.
struct _vexa_error_message_t {
  const char* text;
  vexa_error_severity_t severity;
  int expected_args;
};

#include "driver/diagnostics/T3ErrorMessages.h"

/// One argument of a message: a text, or an identifier of gIdents.
class T3ErrorArg {
 public:
  T3ErrorArg(const char* text) : text_(text) {}                 // NOLINT(google-explicit-constructor)
  T3ErrorArg(const std::string& text) : text_(text.c_str()) {}  // NOLINT(google-explicit-constructor)
  T3ErrorArg(tIdent ident) : text_(gIdents.GetCStr(ident)) {}   // NOLINT(google-explicit-constructor)
  const char* text() const { return text_; }

 private:
  const char* text_;
};

/// Count of syntax errors of the run.
extern long gParseErrors;

/// Throws MaximumErrorsExceeded when the errors and syntax errors so far have reached the limit; for
/// messages that do not go through the functions below.
void vexa_check_limit();

/// An error with free text, past the filter. Throws MaximumErrorsExceeded at the limit, as all below.
void vexa_error(const std::string& text, const tPosition& position);
/// A row of the catalogue at a position; the number of arguments must be the row's.
void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position);
void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position, T3ErrorArg a);
void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position, T3ErrorArg a,
                         T3ErrorArg b);
void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position, T3ErrorArg a,
                         T3ErrorArg b, T3ErrorArg c);
void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position, T3ErrorArg a,
                         T3ErrorArg b, T3ErrorArg c, T3ErrorArg d);
/// Drops the text when its position has had a message of this or a stronger level.
void vexa_error_through_filter(const std::string& text, const tPosition& position,
                               vexa_error_severity_t severity);
/// A warning: from verbosity Warnings on, no filter, no limit.
void vexa_warning(verbosity_level_t verbosity, const std::string& text, const tPosition& position);
/// Text and newline on standard output, from verbosity Stages on.
void vexa_compiler_phases(verbosity_level_t verbosity, const std::string& text);
/// Text and newline on standard output, from verbosity Progress on.
void vexa_progress(verbosity_level_t verbosity, const std::string& text);
/// Checks the tree; a fault writes a report file and throws internal_exception.
void vexa_checktree(T3Tree_Node* node);
/// An impossible node: writes its subtree to a report file and throws internal_exception. `file` is the
/// source unit's name without directory and extension, `function` the walk's name.
[[noreturn]] void internal_error_ast(const char* file, int line, const char* function, T3Tree_Node* node);
/// A walk met an impossible kind: reports "routine failed" with `routine` as class 1 and ends the process.
[[noreturn]] void yyAbort(const char* routine);
