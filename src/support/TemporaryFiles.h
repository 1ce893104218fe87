// Files that must not outlive the process: names that are removed on every road out, a signal included,
// and files that are written beside their place and take it only when they are complete.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

/// A new, empty file with a name that begins with `prefix`, in `directory` or, where that cannot be
/// written, in the system's place for temporary files. Empty when no file could be made. The file is not
/// remembered.
std::string MakeTemporaryFile(const std::string& directory, const std::string& prefix);

/// From now on the file is removed when the process ends, by whatever way, until it is forgotten.
void RememberTemporaryFile(const std::string& path);
void ForgetTemporaryFile(const std::string& path);

/// Removes the remembered files when a signal ends the process, and turns the signal of a file-size limit
/// into a failed write. Call once, from the main program.
void CatchSignals();

/// A remembered temporary file, removed at the end of its life.
class TemporaryFile {
 public:
  TemporaryFile() = default;
  TemporaryFile(const std::string& directory, const std::string& prefix);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { Remove(); }

  /// Takes over a file that exists already.
  void Adopt(const std::string& path);
  /// Takes over the other's file; the other has none then.
  void Take(TemporaryFile& other) noexcept;
  /// Empty when there is none.
  const std::string& path() const { return path_; }
  void Remove();

 private:
  std::string path_;
};

/// A file that is written beside its place. Until Commit the old file stays; without it the new one is
/// dropped. A path that exists and is no regular file, such as a device, is written in place.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() { Discard(); }

  /// False when it cannot be made; errno tells why.
  bool Open(const std::string& path);
  /// Open files only.
  FILE* stream() const { return stream_; }
  const std::string& path() const { return path_; }
  /// True when everything could be written and the file has taken its place. Ends the writing.
  bool Commit();
  /// Removes the old file; none stands there until Commit. Not for a path that is written in place.
  void RemoveOld();
  /// Whether what has been written is what the old file holds, each behind its first comment, or the same by
  /// `is_same`.
  bool IsLikeOld(bool (*is_same)(std::string_view, std::string_view) = nullptr);
  /// Drops what has been written. Ends the writing.
  void Discard();

 private:
  std::string path_;
  std::string place_;
  TemporaryFile beside_;
  FILE* stream_ = nullptr;
};
