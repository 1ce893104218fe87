#include "FileAPI/CFunction.h"

#include <charconv>
#include <utility>

#include "FileAPI/CFile.h"
#include "driver/diagnostics/T3Exception.h"

CFunction::CFunction(CFile* file, const std::string& returnType, const std::string& name,
                     const std::vector<std::string>& parameters, const std::string& comment, bool exported)
    : CBase(file), exported_(exported), name_(name), signature_(getSignature(returnType, name, parameters)) {
  if (!comment.empty()) declarations_.add("/* ", comment, " */\n");
  const std::string_view storage = exported ? "" : "static ";
  declarations_.add(storage, signature_, "\n{");
}

void CFunction::end() {
  declarations_.add("\n");
  body_.add("\n}\n\n");
  declarations_.end();
  body_.end();
  if (file_ == nullptr) throw internal_exception("CFunction", __LINE__, "end", "No file");
  if (!file_->valid()) return;
  file_->define(name_);
  file_->add(exported_ ? CFile::HeaderFunctions : CFile::SourceFunctionDecls,
             {exported_ ? "extern " : "static ", signature_, ";\n"});
  file_->add(CFile::SourceFunctions, std::move(declarations_), std::move(body_));
  // what is added from now on would be lost
  declarations_.end();
  body_.end();
}

void CFunction::beginScope(CSection& section) {
  section.add(" {");
  indentation_ += 2;
}

namespace {
std::string LocalName(unsigned number) {
  char name[16] = "v";
  return {name, std::to_chars(name + 1, std::end(name), number).ptr};
}
}  // namespace

std::string CFunction::declare(std::string_view type, std::string_view name, std::string_view init) {
  std::string variable = name.empty() ? LocalName(nextLocal_++) : std::string(name);
  if (init.empty())
    declarations_.add("\n  ", type, " ", variable, ";");
  else
    declarations_.add("\n  ", type, " ", variable, " = ", init, ";");
  return variable;
}

std::string CFunction::declareArray(std::string_view type, size_t size) {
  std::string name = LocalName(nextLocal_++);
  declarations_.add("\n  ", type, " ", name, "[", std::to_string(size), "];");
  return name;
}

std::string CFunction::declareArray(std::string_view type, std::string_view init) {
  std::string name = LocalName(nextLocal_++);
  declarations_.add("\n  ", type, " ", name, "[] = ", init, ";");
  return name;
}

void CFunction::addLine(std::string_view text) {
  body_.add(line(), text);
}

void CFunction::addLine(const CMeasuredWords& parts) {
  body_.add(line(), CList(parts, ""));
}

void CFunction::assign(std::string_view lhs, std::string_view rhs) {
  if (lhs != rhs) body_.add(line(), lhs, " = ", rhs, ";");
}

void CFunction::_return(std::string_view value) {
  body_.add(line(), "return ", value, ";");
}

void CFunction::call(std::string_view name, const std::vector<std::string>& arguments) {
  body_.add(line(), name, "(", CList(arguments, ", "), ");");
}

void CFunction::addCall(std::string_view name, const CMeasuredWords& arguments) {
  body_.add(line(), name, "(", CList(arguments, ", "), ");");
}

void CFunction::callAndAssign(std::string_view lhs, std::string_view name,
                              const std::vector<std::string>& arguments) {
  body_.add(line(), lhs, " = ", name, "(", CList(arguments, ", "), ");");
}

void CFunction::addCallAndAssign(std::string_view lhs, std::string_view name,
                                 const CMeasuredWords& arguments) {
  body_.add(line(), lhs, " = ", name, "(", CList(arguments, ", "), ");");
}

// Cases stand between the head and their statements.
void CFunction::beginSwitch(std::string_view expr) {
  openBlock("switch (", expr, ") {");
  indentation_ += 2;
}

void CFunction::addCase(std::string_view label) {
  body_.add(line(2), "case ", label, ":");
}

void CFunction::addDefault() {
  body_.add(line(2), "default:");
}

void CFunction::addBreak() {
  addLine("break;");
}

void CFunction::endSwitch() {
  indentation_ -= 2;
  endScope(body_);
}

void CFunction::beginWhile(std::string_view expr) {
  openBlock("while (", expr, ") {");
}

void CFunction::beginDoWhile() {
  openBlock("do {");
}

void CFunction::endDoWhile(std::string_view expr) {
  endScope(body_);
  body_.add(" while (", expr, ");");
}

void CFunction::beginIf(std::string_view expr) {
  openBlock("if (", expr, ") {");
}

void CFunction::beginIf(std::string_view name, const std::vector<std::string>& arguments) {
  openBlock("if (", name, "(", CList(arguments, ", "), ")) {");
}

void CFunction::beginIf(std::string_view name, CWords arguments) {
  openBlock("if (", name, "(", CList(arguments, ", "), ")) {");
}

void CFunction::beginElseIf(std::string_view expr) {
  openBlock("else if (", expr, ") {");
}

void CFunction::beginElse() {
  openBlock("else {");
}

void CFunction::beginFor(std::string_view var, std::string_view from, std::string_view condition,
                         std::string_view step) {
  openBlock("for (", var, " = ", from, "; ", condition, "; ", step, ") {");
}

void CFunction::beginBlock() {
  CBase::beginScope(body_);
}

void CFunction::preprocessor(std::string_view word, std::string_view name) {
  body_.add("\n", word, name);
}

void CFunction::beginIfDef(std::string_view name) {
  preprocessor("#ifdef ", name);
}

void CFunction::beginIfNDef(std::string_view name) {
  preprocessor("#ifndef ", name);
}

void CFunction::beginElsePP() {
  preprocessor("#else", "");
}

void CFunction::endIfPP() {
  preprocessor("#endif", "");
}

void CFunction::addComment(const CMeasuredWords& parts) {
  body_.add(line(), "/* ", CList(parts, ""), " */");
}

std::string CFunction::getNewLabel() {
  return file_->uniqueLabel();
}

void CFunction::addGoto(std::string_view label) {
  body_.add(line(), "goto ", label, ";");
}

void CFunction::addLabel(std::string_view label) {
  body_.add("\n", label, ":");
}

void CFunction::dummyDecl() {
  beginScope(body_);
  addLine("NULL, NULL");
  endScope(body_);
}

std::string CFunction::getTmpVariable(std::string_view type) {
  if (type.empty()) throw internal_exception("CFunction", __LINE__, "getTmpVariable", "type missing");
  const unsigned variable = tmps_.take(type, nextLocal_);
  return variable == nextLocal_ ? declare(type, "") : LocalName(variable);
}

namespace {
[[noreturn]] void FailRelease(const char* reason) {
  throw internal_exception("CFunction", __LINE__, "releaseTmpVariable", reason);
}
}  // namespace

void CFunction::releaseTmpVariable(std::string_view name) {
  if (!releaseIfTmpVariable(name)) FailRelease("Variable to release could not be found");
}

bool CFunction::releaseIfTmpVariable(std::string_view name) {
  const CTmpVariables::Release release = tmps_.release(name);
  if (release == CTmpVariables::Release::unused) FailRelease("Can not release an unused variable");
  return release == CTmpVariables::Release::done;
}

bool CFunction::isTmpVariable(std::string_view name) const {
  return tmps_.has(name);
}

std::unique_ptr<CFunction> CFile::beginFunction(const std::string& returnType, const std::string& name,
                                                const std::vector<std::string>& parameters,
                                                const std::string& comment, bool exported) {
  return std::make_unique<CFunction>(this, returnType, name, parameters, comment, exported);
}
