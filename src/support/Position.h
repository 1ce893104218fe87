// Source positions: where a node, token or message stands.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

/// A place in a source file. Lines and columns count from 1; `File` is an identifier of gIdents.
/// A column beyond 65535 is kept as 65535.
struct tPosition {
  uint32_t Line = 0;
  uint32_t File = 1;
  uint16_t Column = 0;

  bool operator==(const tPosition&) const = default;
};

/// The position of generated nodes and of messages that have none.
inline constexpr tPosition NoPosition{};

/// Orders by file, then line, then column. Returns -1, 0 or 1.
int Compare(const tPosition& a, const tPosition& b);

/// Strict weak order of positions for ordered containers.
struct lt_Position {
  bool operator()(const tPosition& a, const tPosition& b) const { return Compare(a, b) < 0; }
};

/// The text that stands in front of a message: `file(line) : column c `, or `file(line) ` for column 0.
std::string PositionText(const tPosition& position);

/// Writes PositionText to `stream`.
void WritePosition(FILE* stream, const tPosition& position);

/// `"file":line,column` with the line in four and the column in three places.
std::string FormatPosition(const tPosition& position);

/// Reads the form that FormatPosition writes; any other text yields NoPosition.
tPosition ReadPosition(const std::string& text);
