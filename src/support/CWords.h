// Names that C reads as something else, wherever they stand: a name of the source that stands bare in generated C must be
// none of them.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

/// Whether it is a keyword of C, of some edition or compiler, a macro of the headers and compilers that the generated code
/// meets, or may be a word of the run-time interface, some of which are macros.
inline bool IsWordOfC(std::string_view name) {
  static constexpr std::string_view kWords[] = {
      "NULL", "alignas", "alignof", "asm", "assert", "auto", "bool", "break", "case", "char", "const",
      "constexpr", "continue", "default", "do", "double", "else", "enum", "errno", "extern", "false", "float",
      "for", "goto", "i386", "if", "inline", "int", "linux", "long", "nullptr", "offsetof", "register",
      "restrict", "return", "short", "signed", "sizeof", "static", "static_assert", "stderr", "stdin", "stdout",
      "struct", "switch", "thread_local", "true", "typedef", "typeof", "typeof_unqual", "union", "unix",
      "unsigned", "void", "volatile", "while"};
  if (name.starts_with("lumo_") || name.starts_with("LUMO") || name.starts_with("t3asn_")) return true;
  return std::find(std::begin(kWords), std::end(kWords), name) != std::end(kWords);
}
