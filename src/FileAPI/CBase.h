// What all builders of generated text have in common: the file that they belong to, the indentation of the
// line being written, and scopes. A builder that is not ended contributes nothing.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "FileAPI/CSection.h"

class CFile;

/// Writes n blanks.
void indent(CSection& section, unsigned n);

/// Words of C that are only looked at: a list of texts of any kind.
using CWords = std::initializer_list<std::string_view>;

/// The texts one behind the other.
std::string joined(CWords pieces);

/// returnType, blank (unless it is empty), name, "(", the parameters joined with ", ", ")".
std::string getSignature(std::string_view returnType, std::string_view name,
                         const std::vector<std::string>& parameters);
std::string getSignature(std::string_view returnType, std::string_view name, CWords parameters);

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
  /// A new line at the current indentation.
  void newline(CSection& section) const {
    constexpr unsigned most = 64;
    section.addNewline(indentation_ < most ? indentation_ : most);
  }

  CFile* file_;
  unsigned indentation_ = 2;
  unsigned nextLocal_ = 0;
};
