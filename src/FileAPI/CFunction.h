// A generated C function. Statements go to its body, declarations to its head, in whatever order they come.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "FileAPI/CBase.h"
#include "FileAPI/CTmpVariables.h"

/// How what is declared outside of a function is reached in it: by its name in C, or by looking it up by its
/// own name when the function runs.
struct CReach {
  /// What modules declare is looked up in the symbol table.
  bool rows = false;
  /// What is local where the function's template is declared is looked up among the variables that are there
  /// then.
  bool locals = false;
};

class CFunction : public CBase {
 public:
  CReach reach;

  CFunction(CFile* file, const std::string& returnType, const std::string& name,
            const std::vector<std::string>& parameters, const std::string& comment, bool exported);
  void end() override;

  const std::string& name() const { return name_; }
  /// What follows at this level runs once for certain, such as the statements behind a guard.
  void runsHere() { certain_ = indentation_; }
  /// True while statements are added that stand in an inner block, and may not run.
  bool isConditional() const { return indentation_ > certain_; }

  /// Declares a local variable and returns its name; an empty name stands for a new one.
  std::string declare(std::string_view type, std::string_view name, std::string_view init = "");
  /// Declares a local array under a new name, which is returned.
  std::string declareArray(std::string_view type, size_t size);
  /// The same with an initializer, which tells the size.
  std::string declareArray(std::string_view type, std::string_view init);
  /// Nothing where both are the same variable.
  void assign(std::string_view lhs, std::string_view rhs);
  void call(std::string_view name, const std::vector<std::string>& arguments);
  void call(std::string_view name, CWords arguments) { addCall(name, CMeasuredWords(arguments)); }
  void callAndAssign(std::string_view lhs, std::string_view name, const std::vector<std::string>& arguments);
  void callAndAssign(std::string_view lhs, std::string_view name, CWords arguments) {
    addCallAndAssign(lhs, name, CMeasuredWords(arguments));
  }
  void _return(std::string_view value);

  void beginSwitch(std::string_view expr);
  void addCase(std::string_view label);
  void addDefault();
  void addBreak();
  void endSwitch();
  void beginWhile(std::string_view expr);
  void endWhile() { endScope(body_); }
  void beginDoWhile();
  void endDoWhile(std::string_view expr);
  void beginIf(std::string_view expr);
  void beginIf(std::string_view name, const std::vector<std::string>& arguments);
  void beginIf(std::string_view name, CWords arguments);
  void beginElseIf(std::string_view expr);
  void beginElse();
  void endIf() { endScope(body_); }
  void beginFor(std::string_view var, std::string_view from, std::string_view condition,
                std::string_view step);
  void endFor() { endScope(body_); }
  /// A bare block.
  void beginBlock();
  void endBlock() { endScope(body_); }

  // Preprocessor lines stand at column 0.
  void beginIfDef(std::string_view name);
  void beginIfNDef(std::string_view name);
  void beginElsePP();
  void endIfPP();

  void addComment(std::string_view text) { addComment({text}); }
  void addComment(CWords parts) { addComment(CMeasuredWords(parts)); }
  /// The text as it is, without a new line before it.
  void addText(std::string_view text) { body_.add(text); }
  /// The text as a line of its own at the current indentation.
  void addLine(std::string_view text);
  void addLine(CWords parts) { addLine(CMeasuredWords(parts)); }
  std::string getNewLabel();
  void addGoto(std::string_view label);
  void addLabel(std::string_view label);
  /// An empty entry of a table.
  void dummyDecl();

  /// A variable of the type that nobody uses, declared where there is none.
  std::string getTmpVariable(std::string_view type);
  /// Gives a variable back; throws internal_exception when it was not taken.
  void releaseTmpVariable(std::string_view name);
  /// The same for what may be none of its temporary variables; false where it is none.
  bool releaseIfTmpVariable(std::string_view name);
  bool isTmpVariable(std::string_view name) const;

 protected:
  void beginScope(CSection& section) override;

 private:
  /// A line that opens a block.
  template <class... Pieces>
  [[gnu::always_inline]] void openBlock(const Pieces&... pieces) {
    body_.add(line(), pieces...);
    indentation_ += 2;
  }
  void addCall(std::string_view name, const CMeasuredWords& arguments);
  void addCallAndAssign(std::string_view lhs, std::string_view name, const CMeasuredWords& arguments);
  void addLine(const CMeasuredWords& parts);
  void addComment(const CMeasuredWords& parts);
  void preprocessor(std::string_view word, std::string_view name);

  bool exported_;
  unsigned certain_ = indentation_;
  std::string name_;
  std::string signature_;
  CSection declarations_;
  CSection body_;
  CTmpVariables tmps_;
};
