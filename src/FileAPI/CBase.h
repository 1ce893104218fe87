// What all builders of generated text have in common: the file that they belong to, the indentation of the
// line being written, and scopes. A builder that is not ended contributes nothing.
#pragma once

#include <string>
#include <string_view>

#include "FileAPI/CSection.h"

class CFile;

/// Writes n blanks.
void indent(CSection& section, unsigned n);

class CBase {
 public:
  explicit CBase(CFile* file) : file_(file) {}
  CBase(const CBase&) = delete;
  CBase& operator=(const CBase&) = delete;

  /// Closes the text and moves it into the file. Throws internal_exception without a file.
  virtual void end() = 0;
  virtual ~CBase() = default;

  CFile* file() const { return file_; }

 protected:
  virtual void beginScope(CSection& section);
  virtual void endScope(CSection& section);

  /// Writes n blanks; a negative n means the current indentation.
  void indent(CSection& section, int n = -1) const;
  /// The beginning of a new line at the current indentation.
  std::string_view line() const {
    return CSection::kLine.substr(
        0, 1 + (indentation_ < CSection::kMostBlanks ? indentation_ : CSection::kMostBlanks));
  }
  void newline(CSection& section) const { section.addNewline(line().size() - 1); }

  CFile* file_;
  unsigned indentation_ = 2;
  unsigned nextLocal_ = 0;
};
