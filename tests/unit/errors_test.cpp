// Diagnostics: the form of a line, the counters, syntax errors, the filter, the limit, verbosity.
#include "driver/diagnostics/Errors.h"

#include <gtest/gtest.h>

#include <fstream>

#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "support/Sets.h"

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

TEST_F(Diagnostics, LineHasPositionClassTextAndInformation) {
  gErrors.Message("text", kError, At("a.ttcn", 3, 12));
  EXPECT_EQ(Taken(), "a.ttcn(3) : column 12 : Error       text\n");
  gErrors.Message("text", kWarning, At("a.ttcn", 4, 0));
  EXPECT_EQ(Taken(), "a.ttcn(4) : Warning     text\n");
  gErrors.Message("text", kNote, NoPosition);
  EXPECT_EQ(Taken(), "Note        text\n");
  const char character = '$';
  gErrors.MessageI("illegal character", kError, At("a.ttcn", 5, 1), kInfoCharacter, &character);
  EXPECT_EQ(Taken(), "a.ttcn(5) : column 1 : Error       illegal character: $\n");
  gErrors.Message("text", 9, NoPosition);
  EXPECT_EQ(Taken(), "Error class: 9 text\n");
  gErrors.ErrorMessage(99, kRestriction, NoPosition);
  EXPECT_EQ(Taken(), "Restriction error code: 99\n");
}

TEST_F(Diagnostics, MessagesCountInTheirClass) {
  gErrors.Message("a", kError, NoPosition);
  gErrors.Message("a", kError, NoPosition);
  gErrors.Message("a", kWarning, NoPosition);
  gErrors.Message("a", 42, NoPosition);
  EXPECT_EQ(gErrors.ErrorCount(), 2);
  EXPECT_EQ(gErrors.Count(kWarning), 1);
  EXPECT_EQ(gErrors.Count(42), 0);
  gErrors.BeginErrors();
  EXPECT_EQ(gErrors.ErrorCount(), 0);
}

TEST_F(Diagnostics, InformationPrintsByItsClass) {
  const int integer = -3;
  const short small = -4;
  const long number = -5;
  const unsigned long natural = 6;
  const float real = 1.5F;
  const bool yes = true;
  const wchar_t wide = 0xe4;
  const tIdent ident = gIdents.MakeIdent("name");
  const tIdent wide_ident = gIdents.MakeIdent(L"n\u20ac");
  const tPosition position = At("f", 2, 3);
  tSet set(40);
  set.Include(33);
  set.Include(1);
  const struct {
    int info_class;
    const void* information;
    const char* text;
  } cases[] = {
      {kInfoInteger, &integer, "-3"},
      {kInfoShort, &small, "-4"},
      {kInfoLong, &number, "-5"},
      {kInfoUnsignedLong, &natural, "6"},
      {kInfoFloat, &real, "1.500000e+00"},
      {kInfoBool, &yes, "T"},
      {kInfoWideCharacter, &wide, "\u00e4"},
      {kInfoText, "text", "text"},
      {kInfoWideText, L"\u20ac", "\u20ac"},
      {kInfoIdent, &ident, "name"},
      {kInfoWideIdent, &wide_ident, "n\u20ac"},
      {kInfoSet, &set, "{1, 33}"},
      {kInfoPosition, &position, "f(2) : column 3 "},
      {15, nullptr, "info class: 15"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Errors::InformationText(c.info_class, c.information), c.text) << c.info_class;
}

TEST_F(Diagnostics, LongTextInformationEndsAtABlank) {
  const std::string letters(26, 'x');
  EXPECT_EQ(Errors::InformationText(kInfoText, letters.c_str()), letters);
  EXPECT_EQ(Errors::InformationText(kInfoText, (letters + " more").c_str()), letters + " ...");
  EXPECT_EQ(Errors::InformationText(kInfoText, (letters + "yy more and more").c_str()), letters + "yy ...");
  EXPECT_EQ(Errors::InformationText(kInfoText, (letters + "yy").c_str()), letters + "yy");
  EXPECT_EQ(Errors::InformationText(kInfoText, "a b c d e f g h i j k l m n o p"),
            "a b c d e f g h i j k l m n ...");
}

void SyntaxError(const tPosition& position, const char* found, const char* expected) {
  gErrors.ErrorMessage(kCodeSyntaxError, kError, position);
  gErrors.ErrorMessageI(kCodeTokenFound, kInformation, position, kInfoText, found);
  gErrors.ErrorMessageI(kCodeExpectedTokens, kInformation, position, kInfoText, expected);
  gErrors.ErrorMessage(kCodeRestartPoint, kInformation, position);
  gErrors.ErrorMessageI(kCodeTokenInserted, kRepair, position, kInfoText, ";");
}

TEST_F(Diagnostics, SyntaxErrorIsOneLineForASourceLine) {
  SyntaxError(At("s.ttcn", 7, 4), "integer_value", "; ,");
  EXPECT_EQ(Taken(), "s.ttcn(7) : column 4 : Error       found/expected : integer_value/; ,\n");
  SyntaxError(At("s.ttcn", 7, 9), "identifier", ";");
  EXPECT_EQ(Taken(), "");
  SyntaxError(At("s.ttcn", 8, 1), "identifier", "} ; , module");
  EXPECT_EQ(Taken(), "s.ttcn(8) : column 1 : Error       found/expected : identifier/} ; , module\n");
  SyntaxError(At("s.ttcn", 9, 1), "identifier", "} ; , altstep type function");
  EXPECT_EQ(Taken(),
            "s.ttcn(9) : column 1 : Error       found/expected : identifier/} ; , altstep type ...\n");
  SyntaxError(NoPosition, "a", "b");
  SyntaxError(NoPosition, "a", "b");
  EXPECT_EQ(Taken(), "Error       found/expected : a/b\nError       found/expected : a/b\n");
  EXPECT_EQ(gErrors.ErrorCount(), 0);
}

TEST_F(Diagnostics, FatalMessageEndsTheProcess) {
  EXPECT_EXIT(
      {
        gErrors.SetStream(stderr);
        gErrors.ErrorMessageI(kCodeCannotOpenInput, kFatal, NoPosition, kInfoText, "T3Scanner");
      },
      testing::ExitedWithCode(1), "Fatal       cannot open input file: T3Scanner\n");
  EXPECT_EXIT(
      {
        gErrors.SetStream(stderr);
        yyAbort("SeparateModules");
      },
      testing::ExitedWithCode(1), "Fatal       routine failed: T3Control.SeparateModules\n");
  EXPECT_EXIT(OutOfMemory(), testing::ExitedWithCode(1), "Fatal       rMemory.Alloc out of memory: [1-9][0-9]*\n");
}

TEST_F(Diagnostics, SupportLibraryFaultsAreReported) {
  gIdents.WriteIdent(stderr, 1000000000);
  EXPECT_EQ(Taken(), "Error       tIdent out of bounds: 1000000000\n");
  StringM::WriteString(stderr, nullptr);
  EXPECT_EQ(Taken(), "Error       tStringRef undefined (NULL)\n");
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

TEST_F(Diagnostics, MessagesWithoutPositionAreNeverFiltered) {
  vexa_filtered_error(ERR_type_na, NoPosition);
  vexa_filtered_error(ERR_type_na, NoPosition);
  EXPECT_EQ(Taken(), "Error       the type is not correct\nError       the type is not correct\n");
}

TEST_F(Diagnostics, ArgumentsAreTextsAndIdentifiersInAnyMixture) {
  const tIdent type = gIdents.MakeIdent("MyType");
  const tIdent module = gIdents.MakeIdent("MyModule");
  vexa_filtered_error(ERR_import_kind, At("args.ttcn", 1, 1), "type", type, module, std::string("function"));
  EXPECT_EQ(
      Taken(),
      "args.ttcn(1) : column 1 : Error       trying to import type \"MyType\" from module \"MyModule\" as "
      "function\n");
  vexa_filtered_error(ERR_undefined, At("args.ttcn", 2, 1), "%s%d");
  EXPECT_EQ(Taken(), "args.ttcn(2) : column 1 : Error       no declaration for \"%s%d\"\n");
}

TEST_F(Diagnostics, WrongNumberOfArgumentsIsOurOwnFault) {
  EXPECT_THROW(vexa_filtered_error(ERR_type_na, At("args.ttcn", 3, 1), "x"), internal_exception);
  EXPECT_THROW(vexa_filtered_error(ERR_undefined, At("args.ttcn", 3, 1)), internal_exception);
  EXPECT_EQ(Taken(), "");
}

// A row is one line of the catalogue: its text in quotes, its level, and the number of its arguments.
TEST_F(Diagnostics, CatalogueCountsItsArguments) {
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
  EXPECT_EQ(rows, 146);
}

TEST_F(Diagnostics, LongMessageIsCut) {
  const std::string name(3000, 'n');
  vexa_filtered_error(ERR_undefined, At("long.ttcn", 1, 1), name);
  const std::string line = Taken();
  const std::string head = "long.ttcn(1) : column 1 : Error       ";
  EXPECT_EQ(line.size(), head.size() + 2047 + 1);
}

TEST_F(Diagnostics, LimitIsReachedBySyntaxErrorsAndErrorsTogether) {
  gT3CommandLine.maximum_errors = 3;
  gParseErrors = 1;
  EXPECT_NO_THROW(vexa_error("one", NoPosition));
  vexa_warning(verbosity_level_t::Warnings, "no error", NoPosition);
  EXPECT_THROW(vexa_filtered_error(ERR_type_na, At("limit.ttcn", 1, 1)), MaximumErrorsExceeded);
  EXPECT_EQ(Taken(),
            "Error       one\nWarning     no error\n"
            "limit.ttcn(1) : column 1 : Error       the type is not correct\n");
  gErrors.BeginErrors();
  gParseErrors = 0;
  gT3CommandLine.maximum_errors = 0;
  EXPECT_THROW(vexa_error("first", NoPosition), MaximumErrorsExceeded);
}

TEST_F(Diagnostics, VerbosityLetsThroughFromItsLevelOn) {
  testing::internal::CaptureStdout();
  for (const auto level : {verbosity_level_t::Errors, verbosity_level_t::Warnings, verbosity_level_t::Stages,
                           verbosity_level_t::Progress}) {
    const std::string number = std::to_string(static_cast<int>(level));
    vexa_warning(level, "w" + number, NoPosition);
    vexa_compiler_phases(level, "s" + number);
    vexa_progress(level, "p" + number);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "s2\ns3\np3\n");
  EXPECT_EQ(Taken(), "Warning     w1\nWarning     w2\nWarning     w3\n");
}
}  // namespace
