// The flags of a C compiler and of a linker, and the text that they give with an argument.
//
// A flag is glued to its argument with nothing between them; one that needs a blank ends in it.
#pragma once

#include <string>

class Compiler {
 public:
  void set(const std::string& name) { name_ = name; }
  void set_out_flag(const std::string& flag) { out_flag_ = flag; }
  void set_include_flag(const std::string& flag) { include_flag_ = flag; }
  void set_compile_flag(const std::string& flag) { compile_flag_ = flag; }
  void set_define_flag(const std::string& flag) { define_flag_ = flag; }
  /// The extension with its point.
  void set_obj_ext(const std::string& extension) { obj_ext_ = extension; }

  const std::string& name() const { return name_; }
  const std::string& obj_ext() const { return obj_ext_; }

  std::string out(const std::string& file) const { return out_flag_ + file; }
  std::string include_path(const std::string& directory) const { return include_flag_ + directory; }
  std::string compile(const std::string& file) const { return compile_flag_ + file; }
  std::string define(const std::string& macro) const { return define_flag_ + macro; }
  std::string obj_ext(const std::string& base) const { return base + obj_ext_; }

 private:
  std::string name_;
  std::string out_flag_;
  std::string include_flag_;
  std::string compile_flag_;
  std::string define_flag_;
  std::string obj_ext_;
};

class Linker {
 public:
  void set(const std::string& name) { name_ = name; }
  void set_out_flag(const std::string& flag) { out_flag_ = flag; }
  void set_library_path_flag(const std::string& flag) { library_path_flag_ = flag; }
  void set_library_flag(const std::string& flag) { library_flag_ = flag; }
  /// The extension with its point.
  void set_exe_ext(const std::string& extension) { exe_ext_ = extension; }
  /// What opens and closes a group of libraries that the linker scans repeatedly.
  void set_repeated_import(const std::string& prefix, const std::string& suffix) {
    repeated_import_prefix_ = prefix;
    repeated_import_suffix_ = suffix;
  }

  std::string out(const std::string& file) const { return out_flag_ + file; }
  std::string library_path(const std::string& directory) const { return library_path_flag_ + directory; }
  std::string exe_ext(const std::string& base) const { return base + exe_ext_; }
  /// A word of a library list: the words "-(" and "-)" open and close a group.
  std::string library(const std::string& word) const {
    if (word == "-(") return repeated_import_prefix_;
    if (word == "-)") return repeated_import_suffix_;
    return library_flag_ + word;
  }

 private:
  std::string name_;
  std::string out_flag_;
  std::string library_path_flag_;
  std::string library_flag_;
  std::string exe_ext_;
  std::string repeated_import_prefix_;
  std::string repeated_import_suffix_;
};
