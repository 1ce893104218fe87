// Diagnostics: long texts, the filter, the catalogue.
#include "driver/diagnostics/Errors.h"

#include <gtest/gtest.h>

#include <fstream>

#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"

namespace {
tPosition At(const char* file, unsigned line, unsigned column) {
  tPosition position;
  position.File = static_cast<uint32_t>(gIdents.MakeIdent(file));
  position.Line = line;
  position.Column = static_cast<uint16_t>(column);
  return position;
}

// Everything that gErrors writes while the object lives.
class Diagnostics : public testing::Test {
 protected:
  void SetUp() override {
    stream_ = open_memstream(&memory_, &size_);
    before_ = gErrors.SetStream(stream_);
    gErrors.BeginErrors();
    gParseErrors = 0;
  }
  void TearDown() override {
    gErrors.SetStream(before_);
    gErrors.BeginErrors();
    gParseErrors = 0;
    gT3CommandLine.maximum_errors = 100;
    std::fclose(stream_);
    std::free(memory_);
  }
  // What has been written since the last call.
  std::string Taken() {
    std::fflush(stream_);
    std::string text(memory_ + taken_, size_ - taken_);
    taken_ = size_;
    return text;
  }

 private:
  char* memory_ = nullptr;
  size_t size_ = 0;
  size_t taken_ = 0;
  FILE* stream_ = nullptr;
  FILE* before_ = nullptr;
};

TEST_F(Diagnostics, LongTextInformationEndsAtABlank) {
  const std::string letters(26, 'x');
  EXPECT_EQ(Errors::InformationText(kInfoText, letters.c_str()), letters);
  EXPECT_EQ(Errors::InformationText(kInfoText, (letters + " more").c_str()), letters + " ...");
  EXPECT_EQ(Errors::InformationText(kInfoText, (letters + "yy more and more").c_str()), letters + "yy ...");
  EXPECT_EQ(Errors::InformationText(kInfoText, (letters + "yy").c_str()), letters + "yy");
  EXPECT_EQ(Errors::InformationText(kInfoText, "a b c d e f g h i j k l m n o p"),
            "a b c d e f g h i j k l m n ...");
}

TEST_F(Diagnostics, FilterKeepsTheStrongestMessageOfAPosition) {
  const tPosition place = At("filter.ttcn", 1, 1);
  vexa_filtered_error(ERR_undefined, place, "x");
  EXPECT_EQ(Taken(), "filter.ttcn(1) : column 1 : Error       no declaration for \"x\"\n");
  vexa_filtered_error(ERR_undefined, place, "y");
  EXPECT_EQ(Taken(), "");
  vexa_filtered_error(ERR_expected, place, "z");
  EXPECT_EQ(Taken(), "filter.ttcn(1) : column 1 : Error       z expected\n");
  vexa_filtered_error(ERR_type_na, place);
  vexa_filtered_error(ERR_undefined, place, "x");
  EXPECT_EQ(Taken(), "");
  vexa_filtered_error(ERR_undefined, At("filter.ttcn", 1, 2), "x");
  vexa_filtered_error(ERR_undefined, At("filter2.ttcn", 1, 1), "x");
  EXPECT_EQ(gErrors.ErrorCount(), 4);
}

// A row is one line of the catalogue: its text in quotes, its level, and the number of its arguments.
TEST_F(Diagnostics, CatalogueCountsItsArguments) {
  std::ifstream catalogue(ORVANE_SOURCE_DIR "/src/driver/diagnostics/T3ErrorMessages.h");
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
  }
}

TEST_F(Diagnostics, LongMessageIsCut) {
  const std::string name(3000, 'n');
  vexa_filtered_error(ERR_undefined, At("long.ttcn", 1, 1), name);
  const std::string line = Taken();
  const std::string head = "long.ttcn(1) : column 1 : Error       ";
  EXPECT_EQ(line.size(), head.size() + 2047 + 1);
}

}  // namespace
