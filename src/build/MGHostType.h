// The conventions of the host that runs a build: file extensions, the separator of directories, how a
// path is written in a makefile, how files are removed.
//
// A HostType without arguments is an envelope; init() puts the host's letter into it, chosen by name or
// from the environment.
#pragma once

#include <string>
#include <vector>

#include "build/MGPlugIn.h"

class HostType : public LetterEnvelope<HostType>, public PlugIn<HostType> {
 public:
  HostType() = default;
  /// A letter: registers itself, whatever the argument.
  explicit HostType(bool);
  ~HostType() override;

  virtual std::string name() const;
  /// The file name of the host's MCFG file.
  virtual std::string config_name() const;
  virtual std::string exe_ext() const;
  virtual std::string obj_ext() const;
  virtual std::string lib_ext() const;
  virtual std::string slash() const;
  /// What encloses a path that holds blanks.
  virtual std::string quoute() const;
  /// The command that removes `files`.
  virtual std::string rm_cmd(const std::string& files) const;
  /// The path fit for a line of a makefile.
  virtual std::string fix_path(const std::string& path) const;
  /// The path with a beginning that is fit for the host.
  virtual std::string fix_head(const std::string& path) const;
  /// A library's file name fit for the linker's library flag.
  virtual std::string fix_lib(const std::string& library) const;

  /// Chooses the host. With an empty name the environment decides, and a silent one means Solaris.
  /// Throws a std::string for an unknown host.
  void init(const std::string& name);
  std::string exe_ext(const std::string& base) const { return base + exe_ext(); }
  std::string obj_ext(const std::string& base) const { return base + obj_ext(); }
  std::string lib_ext(const std::string& base) const { return base + lib_ext(); }
  std::vector<std::string> fix_path(const std::vector<std::string>& paths) const;
  /// The host's name in the environment: OSTYPE, else OS, else the empty text.
  static std::string os_name();
};

class Windows : public HostType {
 public:
  explicit Windows(bool letter) : HostType(letter) {}
  std::string name() const override;
  std::string config_name() const override;
  std::string exe_ext() const override;
  std::string obj_ext() const override;
  std::string lib_ext() const override;
  std::string slash() const override;
  std::string quoute() const override;
  std::string rm_cmd(const std::string& files) const override;
  std::string fix_path(const std::string& path) const override;
  std::string fix_head(const std::string& path) const override;
  std::string fix_lib(const std::string& library) const override;
  HostType* create_instance(const std::string& name) const override;
};

class CygWin : public HostType {
 public:
  explicit CygWin(bool letter) : HostType(letter) {}
  std::string name() const override;
  std::string config_name() const override;
  std::string exe_ext() const override;
  std::string obj_ext() const override;
  std::string lib_ext() const override;
  std::string slash() const override;
  std::string quoute() const override;
  std::string rm_cmd(const std::string& files) const override;
  std::string fix_path(const std::string& path) const override;
  std::string fix_head(const std::string& path) const override;
  std::string fix_lib(const std::string& library) const override;
  HostType* create_instance(const std::string& name) const override;
};

/// What the Unix hosts share.
class Unix : public HostType {
 public:
  std::string exe_ext() const override;
  std::string obj_ext() const override;
  std::string lib_ext() const override;
  std::string slash() const override;
  std::string quoute() const override;
  std::string rm_cmd(const std::string& files) const override;
  std::string fix_path(const std::string& path) const override;
  std::string fix_head(const std::string& path) const override;
  std::string fix_lib(const std::string& library) const override;

 protected:
  explicit Unix(bool letter) : HostType(letter) {}
};

class Solaris : public Unix {
 public:
  explicit Solaris(bool letter) : Unix(letter) {}
  std::string name() const override;
  std::string config_name() const override;
  HostType* create_instance(const std::string& name) const override;
};

class HPUX : public Unix {
 public:
  explicit HPUX(bool letter) : Unix(letter) {}
  std::string name() const override;
  std::string config_name() const override;
  HostType* create_instance(const std::string& name) const override;
};

class Linux : public Unix {
 public:
  explicit Linux(bool letter) : Unix(letter) {}
  std::string name() const override;
  std::string config_name() const override;
  HostType* create_instance(const std::string& name) const override;
};
