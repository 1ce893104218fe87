// A makefile as a structure: named values, include lines, targets with their dependencies and commands.
//
// A Makefile without arguments is an envelope; init() puts the letter of a dialect into it, which holds
// all that is added and knows how it is written. Values and targets are handled by identifiers.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "build/MGPlugIn.h"

class Makefile : public LetterEnvelope<Makefile>, public PlugIn<Makefile> {
 public:
  Makefile() = default;
  /// A letter: registers itself, whatever the argument.
  explicit Makefile(bool);
  ~Makefile() override;

  virtual std::string name() const;
  /// How the dialect refers to a value.
  virtual std::string value_reference(const std::string& name) const;
  /// Writes the makefile. With `all` false, values without words are left out.
  virtual void generate(std::ostream& out, bool all) const;

  /// Chooses the dialect and hands the version texts to it. Throws a std::string for an unknown one.
  void init(const std::string& name);
  /// The version and the tool that the head of the makefile names, and a text that is only kept.
  void set_version(const std::string& version, const std::string& tool, const std::string& text);

  /// Appends words to a value, which is registered at its first use. Returns its identifier.
  unsigned int add_value(const std::string& name, const std::string& word);
  unsigned int add_value(const std::string& name, const std::vector<std::string>& words);
  unsigned int add_value(unsigned int id, const std::string& word);
  /// The identifier of a registered value; std::out_of_range for any other name.
  unsigned int get_value_ref(const std::string& name) const;
  /// The name behind an identifier; std::out_of_range for one that was never given out.
  const std::string& value_name(unsigned int id) const;
  const std::string& target_name(unsigned int id) const;
  /// The words of a value in the order in which they were added.
  std::vector<std::string> values(unsigned int id) const;
  bool has_values(unsigned int id) const;
  std::string value_reference(unsigned int id) const { return value_reference(value_name(id)); }

  /// Registers a target, once. Returns its identifier.
  unsigned int add_target(const std::string& name);
  void add_dependency(unsigned int target, const std::string& text);
  /// A command of the target's rule. The flags have no effect.
  void add_build_line(unsigned int target, const std::string& text, bool = false, bool = false);
  void add_include(const std::string& file);
  void add_include(const std::vector<std::string>& files);

 protected:
  /// Names in order of first use; the index of a name is its identifier.
  class NameList {
   public:
    unsigned int add(const std::string& name);
    unsigned int find(const std::string& name) const { return index_.at(name); }
    const std::string& name(unsigned int id) const { return names_.at(id); }
    const std::vector<std::string>& names() const { return names_; }

   private:
    std::vector<std::string> names_;
    std::map<std::string, unsigned int> index_;
  };
  using TextMap = std::multimap<std::string, std::string>;

  TextMap values_;
  NameList value_names_;
  TextMap dependencies_;
  TextMap build_lines_;
  NameList target_names_;
  std::vector<std::string> includes_;
  std::string version_;
  std::string tool_;
  std::string text_;
};

class GnuMake : public Makefile {
 public:
  explicit GnuMake(bool letter) : Makefile(letter) {}
  using Makefile::value_reference;
  std::string name() const override;
  std::string value_reference(const std::string& name) const override;
  void generate(std::ostream& out, bool all) const override;
  Makefile* create_instance(const std::string& name) const override;

 private:
  void generate_values(std::ostream& out, bool all) const;
  void generate_targets(std::ostream& out) const;
};
