// What all builders of generated text have in common: the file that they belong to, the indentation of the
// line being written, and scopes. A builder that is not ended contributes nothing.
#pragma once

#include <string>
#include <string_view>

#include "FileAPI/CSection.h"

class CFile;

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

  /// The beginning of a new line at the current indentation, or at so many columns less.
  std::string_view line(unsigned less = 0) const { return nextLine(less).substr(1); }
  /// The same behind a comma.
  std::string_view nextLine(unsigned less = 0) const;

  CFile* file_;
  unsigned indentation_ = 2;
  unsigned nextLocal_ = 0;

 private:
  /// A comma, a new line, and the blanks that it may begin with. Nobody counts columns beyond some thirty
  /// scopes, and blanks for each of them would be most of what is written.
  static constexpr std::string_view kLine =
      ",\n                                                                ";
};

inline std::string_view CBase::nextLine(unsigned less) const {
  const size_t size = 2 + indentation_ - less;
  return {kLine.data(), size < kLine.size() ? size : kLine.size()};
}
