#include "build/MGHostType.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

namespace {

/// Sets the variables that name the host, and puts the old values back at its end.
class HostEnvironment {
 public:
  HostEnvironment(const char* ostype, const char* os) : ostype_("OSTYPE", ostype), os_("OS", os) {}

 private:
  class Variable {
   public:
    Variable(const char* name, const char* value) : name_(name) {
      if (const char* present = std::getenv(name)) old_ = present;
      Set(value);
    }
    ~Variable() { Set(old_ ? old_->c_str() : nullptr); }

   private:
    void Set(const char* value) { value == nullptr ? unsetenv(name_) : setenv(name_, value, 1); }
    const char* name_;
    std::optional<std::string> old_;
  };
  Variable ostype_;
  Variable os_;
};

std::string ChosenHost(const std::string& name) {
  HostType host;
  try {
    host.init(name);
  } catch (const std::string& text) {
    return text;
  }
  return host.name();
}

std::string UnknownHost(const std::string& name) {
  return "Error: could not determine the correct host type for '" + name +
         "': unknown host type.\n"
         "Please set the environment variable 'OSTYPE' to one of the following supported values:\n"
         "Windows_NT, solaris, linux, linux-gnu, hpux or cygwin";
}

HostType& Host(HostType& host, const char* name) {
  host.init(name);
  return host;
}

TEST(HostType, EnvironmentNamesTheHost) {
  struct {
    const char* ostype;
    const char* os;
    std::string host;
  } const cases[] = {
      {nullptr, nullptr, "Solaris"},
      {"linux", nullptr, "Linux"},
      {"linux-gnu", nullptr, "Linux"},
      {nullptr, "Windows_NT", "Windows"},
      {"hpux", "Windows_NT", "HPUX"},
      {"cygwin", nullptr, "CygWin"},
      {"solaris", nullptr, "Solaris"},
      {"", nullptr, "Solaris"},
      {"Linux", nullptr, UnknownHost("Linux")},
      {nullptr, "linux ", UnknownHost("linux ")},
  };
  for (const auto& c : cases) {
    HostEnvironment environment(c.ostype, c.os);
    EXPECT_EQ(c.host, ChosenHost(""));
  }
  HostEnvironment environment("linux", nullptr);
  EXPECT_EQ("HPUX", ChosenHost("hpux")) << "a name given goes before the environment";
}

TEST(HostType, WhatEachHostProvides) {
  struct {
    const char* accepted;
    const char* config;
    const char* exe;
    const char* obj;
    const char* lib;
    const char* slash;
    const char* quote;
    const char* rm;
  } const cases[] = {
      {"Windows_NT", "make_win.mcfg", ".exe", ".obj", ".lib", "\\", "\"", "-del x y 2>nul"},
      {"cygwin", "make_win.mcfg", ".exe", ".obj", ".lib", "/", "\"", "rm -f x y 2>nul"},
      {"solaris", "make_solaris.mcfg", "", ".o", ".a", "/", "", "rm -f x y"},
      {"hpux", "make_hpux.mcfg", "", ".o", ".a", "/", "", "rm -f x y"},
      {"linux", "make_linux.mcfg", "", ".o", ".a", "/", "", "rm -f x y"},
  };
  for (const auto& c : cases) {
    HostType host;
    host.init(c.accepted);
    EXPECT_EQ(c.config, host.config_name());
    EXPECT_EQ(c.exe, host.exe_ext());
    EXPECT_EQ(c.obj, host.obj_ext());
    EXPECT_EQ(c.lib, host.lib_ext());
    EXPECT_EQ(std::string("a") + c.exe, host.exe_ext("a"));
    EXPECT_EQ(std::string("a") + c.obj, host.obj_ext("a"));
    EXPECT_EQ(std::string("a") + c.lib, host.lib_ext("a"));
    EXPECT_EQ(c.slash, host.slash());
    EXPECT_EQ(c.quote, host.quoute());
    EXPECT_EQ(c.rm, host.rm_cmd("x y"));
  }
}

TEST(HostType, PathsAndLibraries) {
  HostType windows, cygwin, linux;
  Host(windows, "Windows_NT");
  Host(cygwin, "cygwin");
  Host(linux, "linux");
  struct {
    const char* path;
    const char* windows;
    const char* cygwin;
    const char* linux;
  } const paths[] = {
      {"a/b c", "\"a/b c\"", "a/b\\ c", "a/b\\ c"},
      {".\\my dir\\a.c", "\"my dir\\a.c\"", "my\\ dir/a.c", ".\\my\\ dir\\a.c"},
      {".\\a.c", "a.c", "a.c", ".\\a.c"},
      {"./a.c", "./a.c", "a.c", "./a.c"},
      {"D:\\my dir\\x", "\"D:\\my dir\\x\"", "/cygdrive/d/my\\ dir/x", "D:\\my\\ dir\\x"},
      {":", ":", ":", ":"},
      {"x:", "x:", "/cygdrive/x", "x:"},
      {"", "", "", ""},
  };
  for (const auto& c : paths) {
    EXPECT_EQ(c.windows, windows.fix_path(c.path));
    EXPECT_EQ(c.cygwin, cygwin.fix_path(c.path));
    EXPECT_EQ(c.linux, linux.fix_path(c.path));
  }
  EXPECT_EQ((std::vector<std::string>{"a\\ b", "c"}), linux.fix_path(std::vector<std::string>{"a b", "c"}));
  EXPECT_EQ(".\\x", linux.fix_head(".\\x"));
  EXPECT_EQ("/cygdrive/c\\x", cygwin.fix_head("C:\\x"));

  struct {
    const char* library;
    const char* windows;
    const char* unix_like;
  } const libraries[] = {
      {"libm.so", "libm.so", "m"},
      {"libxml.so.2", "libxml.so.2", "xml.so"},
      {"pthread", "pthread", "pthread"},
      {"mylib.a", "mylib.a", "mylib"},
      {"liblib", "liblib", "lib"},
      {"-(", "-(", "-("},
      {"lib", "lib", ""},
  };
  for (const auto& c : libraries) {
    EXPECT_EQ(c.windows, windows.fix_lib(c.library));
    EXPECT_EQ(c.unix_like, cygwin.fix_lib(c.library));
    EXPECT_EQ(c.unix_like, linux.fix_lib(c.library));
  }
}

}  // namespace
