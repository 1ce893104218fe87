// The option scanner: a getopt whose option string may change in the middle of the arguments, even
// inside a cluster of options. State is global; one scan at a time.
//
// An option string begins with '+' (a plain argument ends the scan; the default) or '-' (a plain argument
// is returned as code 1). Then each option: its character, '!' and a second character for an option of two
// characters, and ':' for a required or '::' for an optional argument.
#pragma once

/// Index of the next word to look at; 0 starts a new scan behind the program's name.
extern int rOptind;
/// The argument of the option just returned, or null.
extern const char* rOptarg;
/// The first character of the option just returned or found faulty.
extern int rOptopt;
/// What is wrong when '?' was returned for a fault, else null.
extern const char* rOptmsg;
/// Let a required or an optional argument be written as =value.
extern bool rGetoptArgumentWithEqual;
extern bool rGetoptOptionalWithEqual;

/// The largest number of options in one string.
inline constexpr int kMaxOptions = 512;

/// The code that rGetopt returns for an option of two characters.
constexpr int rGetoptCode(char first, char second) {
  return static_cast<unsigned char>(first) << 8 | static_cast<unsigned char>(second);
}

/// Forgets the options; the next call takes those of its string. The place in the arguments stays.
void rOptreset();

/// The next option's character or code; 1 for a plain argument in mode '-'; '?' for a fault, with rOptmsg
/// set; -1 at the end of the scan.
int rGetopt(int argc, const char* const* argv, const char* optstring);
