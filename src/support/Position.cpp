#include "support/Position.h"

#include <cstdlib>

#include "support/Idents.h"

int Compare(const tPosition& a, const tPosition& b) {
  if (a.File != b.File) return a.File < b.File ? -1 : 1;
  if (a.Line != b.Line) return a.Line < b.Line ? -1 : 1;
  if (a.Column != b.Column) return a.Column < b.Column ? -1 : 1;
  return 0;
}

std::string PositionText(const tPosition& position) {
  std::string text = gIdents.GetCStr(position.File);
  text += '(' + std::to_string(position.Line) + ") ";
  if (position.Column != 0) text += ": column " + std::to_string(position.Column) + ' ';
  return text;
}

void WritePosition(FILE* stream, const tPosition& position) {
  const std::string text = PositionText(position);
  std::fwrite(text.data(), 1, text.size(), stream);
}

std::string FormatPosition(const tPosition& position) {
  char numbers[64];
  std::snprintf(numbers, sizeof numbers, "\":%4u,%3u", position.Line, static_cast<unsigned>(position.Column));
  return std::string("\"") + gIdents.GetCStr(position.File) + numbers;
}

tPosition ReadPosition(const std::string& text) {
  if (text.size() < 2 || text.front() != '"') return NoPosition;
  const size_t quote = text.rfind('"');
  if (quote == 0) return NoPosition;
  unsigned line = 0;
  unsigned column = 0;
  int used = 0;
  if (std::sscanf(text.c_str() + quote + 1, ":%u,%u%n", &line, &column, &used) != 2 ||
      quote + 1 + static_cast<size_t>(used) != text.size() || column > 0xffff)
    return NoPosition;
  tPosition position;
  position.Line = line;
  position.Column = static_cast<uint16_t>(column);
  position.File = static_cast<uint32_t>(gIdents.MakeIdent(std::string_view(text).substr(1, quote - 1)));
  return position;
}
