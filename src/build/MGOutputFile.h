// A file that is written beside its place and takes it only when it is complete, so that an interrupted
// or failed run leaves the old file or the new one.
#pragma once

#include <fstream>
#include <string>

class OutputFile {
 public:
  /// Opens the file beside `path`; is_open() tells whether that went well.
  explicit OutputFile(const std::string& path);
  /// Removes what was not put into place.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool is_open() const { return stream_.is_open(); }
  std::ostream& stream() { return stream_; }
  /// Closes the file. False when something of it could not be written.
  bool complete();
  /// Puts the completed file into its place, over an old one. False when that is not possible.
  bool put_into_place();

 private:
  std::string path_;
  std::string beside_;
  std::ofstream stream_;
};
