// A generated C function. Statements go to its body, declarations to its head, in whatever order they come.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "FileAPI/CBase.h"

class CFunction : public CBase {
 public:
  CFunction(CFile* file, const std::string& returnType, const std::string& name,
            const std::vector<std::string>& parameters, const std::string& comment, bool exported);
  void end() override;

  const std::string& name() const { return name_; }

  /// Declares a local variable and returns its name; an empty name stands for a new one.
  std::string declare(const std::string& type, const std::string& name, const std::string& init = "");
  /// Declares a local array under a new name, which is returned.
  std::string declareArray(const std::string& type, size_t size);
  void assign(const std::string& lhs, const std::string& rhs);
  void call(const std::string& name, const std::vector<std::string>& arguments);
  void callAndAssign(const std::string& lhs, const std::string& name,
                     const std::vector<std::string>& arguments);
  void _return(const std::string& value);

  void beginSwitch(const std::string& expr);
  void addCase(const std::string& label);
  void addDefault();
  void addBreak();
  void endSwitch();
  void beginWhile(const std::string& expr);
  void endWhile() { endScope(body_); }
  void beginDoWhile();
  void endDoWhile(const std::string& expr);
  void beginIf(const std::string& expr);
  void beginIf(const std::string& name, const std::vector<std::string>& arguments);
  void beginElseIf(const std::string& expr);
  void beginElse();
  void endIf() { endScope(body_); }
  void beginFor(const std::string& var, const std::string& from, const std::string& condition,
                const std::string& step);
  void endFor() { endScope(body_); }
  /// A bare block.
  void beginBlock();
  void endBlock() { endScope(body_); }

  // Preprocessor lines stand at column 0.
  void beginIfDef(const std::string& name);
  void beginIfNDef(const std::string& name);
  void beginElsePP();
  void endIfPP();

  void addComment(const std::string& text);
  /// The text as it is, without a new line before it.
  void addText(const std::string& text) { body_.add(text); }
  /// The text as a line of its own at the current indentation.
  void addLine(const std::string& text);
  std::string getNewLabel();
  void addGoto(const std::string& label);
  void addLabel(const std::string& label);
  /// An empty entry of a table.
  void dummyDecl();

  /// A variable of the type that nobody uses, declared where there is none.
  std::string getTmpVariable(const std::string& type);
  /// Gives a variable back; throws internal_exception when it was not taken.
  void releaseTmpVariable(const std::string& name);
  bool isTmpVariable(const std::string& name) const;

 protected:
  void beginScope(CSection& section) override;

 private:
  struct Tmp {
    bool in_use;
    std::string type;
    std::string name;
  };
  void preprocessor(const std::string& line);

  bool exported_;
  std::string name_;
  std::string signature_;
  CSection declarations_;
  CSection body_;
  std::vector<Tmp> tmps_;
};
