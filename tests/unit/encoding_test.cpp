// Encodings of source files and of literals.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "driver/diagnostics/Errors.h"
#include "driver/options/T3CommandLine.h"
#include "driver/modules/T3FileFormat.h"
#include "driver/modules/T3UTF8String.h"

using namespace std::string_literals;

namespace {
class Encodings : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/orvane-enc-XXXXXX";
    folder_ = mkdtemp(name);
    path_ = folder_ + "/source.ttcn";
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(folder_);
    gErrors.BeginErrors();
  }
  void TearDown() override {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(folder_);
    gErrors.BeginErrors();
    gT3CommandLine = T3CommandLine();
  }
  void Put(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }
  // The converted text; what was written on standard error where conversion failed.
  std::string Converted(const std::string& bytes, file_format_t format) const {
    Put(bytes);
    TemporaryFile converted;
    testing::internal::CaptureStderr();
    const int status = ConvertToUTF_8(path_.c_str(), format, converted);
    const std::string messages = testing::internal::GetCapturedStderr();
    if (status != 0) return messages;
    EXPECT_EQ(converted.path().substr(0, 6), "./vexa");
    std::ifstream stream(converted.path(), std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  std::string folder_;
  std::string path_;
  std::filesystem::path before_;
};

TEST_F(Encodings, FormatIsGuessedByTheFirstBytes) {
  const std::pair<std::string, file_format_t> cases[] = {
      {"\xEF\xBB\xBFmodule", format_utf8},
      {"\xEF\xBB", format_unknown},
      {"\xFE\xFF\0m"s, format_ucs2be},
      {"\xFF\xFEm\0"s, format_ucs2le},
      {"\xFF\xFE", format_ucs2le},
      {"\xFF\xFE\0\0"s, format_ucs2le},
      {"\0\0\xFE\xFF"s, format_unknown},
      {"+/v8", format_unknown},
      {"+/v9", format_unknown},
      {"+/v+", format_unknown},
      {"+/v/", format_unknown},
      {"+/v", format_utf8},
      {"\xF7\x64\x4C", format_unknown},
      {"\xDD\x73\x66\x73", format_unknown},
      {"\x0E\xFE\xFF", format_unknown},
      {"\xFB\xEE\x28\xFF", format_unknown},
      {"\xFB\xEE\x28", format_unknown},
      {"m", format_utf8},
      {"\0"s, format_utf8},
      {"\x80", format_unknown},
      {"", format_unknown},
  };
  for (const auto& [bytes, format] : cases) {
    Put(bytes);
    testing::internal::CaptureStderr();
    EXPECT_EQ(GuessFileFormat(path_.c_str()), format) << testing::PrintToString(bytes);
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        format == format_unknown ? "Error       Could not determine file format of " + path_ + "\n" : "");
  }
}

TEST_F(Encodings, MarkIsFoundAndDropped) {
  Put("\xEF\xBB\xBFx");
  EXPECT_TRUE(HasBOM(path_.c_str()));
  Put("x\xEF\xBB\xBF");
  EXPECT_FALSE(HasBOM(path_.c_str()));
  EXPECT_EQ(Converted("\xEF\xBB\xBFmodule", format_utf8), "module");
  EXPECT_EQ(Converted("\xFF\xFEm\0"s, format_ucs2le), "m");
  EXPECT_EQ(Converted("\xFE\xFF\0m"s, format_ucs2), "m");
  EXPECT_EQ(Converted("+/v8abc", format_ascii), "abc");
  EXPECT_EQ(Converted("m\0\xFF\xFE"s, format_ucs2le), "m\xEF\xBB\xBF");
}

TEST_F(Encodings, CodeUnitsBecomeUtf8) {
  EXPECT_EQ(Converted("\x80\x00\0\xE4"s, format_ucs2be), "\xE8\x80\x80\xC3\xA4");
  // the halves of a pair convert by themselves
  EXPECT_EQ(Converted("\xD8\x3D\xDE\x00"s, format_ucs2be), "\xED\xA0\xBD\xED\xB8\x80");
  // an odd byte at the end, and a pair 0A 0D, are dropped
  EXPECT_EQ(Converted("a\0\n\r\r\0b"s, format_ucs2le), "a\r");
  EXPECT_EQ(Converted("\0a\n\r\0\n\0"s, format_ucs2be), "a\n");
  std::string wide;
  for (int i = 0; i < 100000; ++i) wide += "x\0"s;
  EXPECT_EQ(Converted(wide, format_ucs2le), std::string(100000, 'x'));
}

TEST_F(Encodings, ByteOrderMustBeKnown) {
  EXPECT_EQ(Converted("m\0"s, format_ucs2),
            "Error       Could not determine UCS-2 endianess for " + path_ + "\n");
  EXPECT_EQ(Converted("\x80", format_ucs2), "Error       Could not determine file format of " + path_ +
                                                "\nError       Could not determine UCS-2 endianess for " +
                                                path_ + "\n");
  TemporaryFile none;
  EXPECT_THROW(ConvertToUTF_8(path_.c_str(), format_unknown, none), internal_exception);
}

TEST(Utf8, KindOfALiteral) {
  const std::pair<std::string, char_string_kind_t> cases[] = {
      {"a", kind_ascii_character},
      {"", kind_ascii_string},
      {"ab", kind_ascii_string},
      {"\xC3\xA4", kind_character},
      {"\xFD\xBF\xBF\xBF\xBF\xBF", kind_character},
      {"\xC3\xA4 a", kind_string},
      {"\x80", kind_malformed},
      {"\xC1\xBF", kind_malformed},
      {"\xC2", kind_malformed},
      {"\xC2\xC2", kind_malformed},
      {"\xFE\x80", kind_malformed},
      {"\xE0\x9F\xBF", kind_malformed},
      {"\xE0\xA0\x80", kind_character},
      {"\xF0\x8F\xBF\xBF", kind_malformed},
      {"\xF0\x90\x80\x80", kind_character},
      {"\xF8\x87\xBF\xBF\xBF", kind_malformed},
      {"\xF8\x88\x80\x80\x80", kind_character},
      {"\xFC\x83\xBF\xBF\xBF\xBF", kind_malformed},
      {"\xFC\x84\x80\x80\x80\x80", kind_character},
      {"\xE2\x82", kind_malformed},
  };
  for (const auto& [text, kind] : cases) {
    const tStringRef literal = gStringM.PutString("\"" + text + "\"");
    EXPECT_EQ(DetermineCharStringKind(literal), kind) << testing::PrintToString(text);
    EXPECT_EQ(UTF8StringLength(literal) == 0, kind == kind_malformed) << testing::PrintToString(text);
  }
  EXPECT_EQ(UTF8StringLength(gStringM.PutString("a\xE2\x82\xAC z")), 4);
}

}  // namespace
