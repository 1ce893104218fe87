// The catalogue of messages.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

// A row is one line of the catalogue: its text in quotes, its level, and the number of its arguments.
TEST(Diagnostics, CatalogueCountsItsArguments) {
  std::ifstream catalogue(ORVANE_SOURCE_DIR "/src/driver/diagnostics/T3ErrorMessages.h");
  int rows = 0;
  for (std::string line; std::getline(catalogue, line);) {
    if (line.rfind("inline constexpr _vexa_error_message_t ERR_", 0) != 0) continue;
    const size_t begin = line.find('"');
    const size_t end = line.rfind('"');
    ASSERT_NE(begin, end) << line;
    const std::string text = line.substr(begin, end - begin);
    const int expected = line.at(line.size() - 3) - '0';
    int formats = 0;
    for (size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
      EXPECT_EQ(text[at + 1], 's') << text;
      ++formats;
    }
    EXPECT_EQ(formats, expected) << text;
    ++rows;
  }
  EXPECT_GT(rows, 100);
}
