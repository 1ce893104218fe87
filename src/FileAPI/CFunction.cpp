#include "FileAPI/CFunction.h"

#include <charconv>
#include <cstdint>
#include <utility>

#include "FileAPI/CFile.h"
#include "driver/diagnostics/T3Exception.h"

CFunction::CFunction(CFile* file, const std::string& returnType, const std::string& name,
                     const std::vector<std::string>& parameters, const std::string& comment, bool exported)
    : CBase(file), exported_(exported), name_(name), signature_(getSignature(returnType, name, parameters)) {
  if (!comment.empty()) declarations_.add({"/* ", comment, " */\n"});
  declarations_.add({exported ? "" : "static ", signature_, "\n{"});
}

void CFunction::end() {
  declarations_.add("\n");
  body_.add("\n}\n\n");
  declarations_.end();
  body_.end();
  if (file_ == nullptr) throw internal_exception("CFunction", __LINE__, "end", "No file");
  if (!file_->valid()) return;
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

std::string CFunction::declare(std::string_view type, std::string_view name, std::string_view init) {
  std::string variable = name.empty() ? "v" + std::to_string(nextLocal_++) : std::string(name);
  declarations_.add({"\n  ", type, " ", variable, init.empty() ? "" : " = ", init, ";"});
  return variable;
}

std::string CFunction::declareArray(std::string_view type, size_t size) {
  std::string name = "v" + std::to_string(nextLocal_++);
  declarations_.add({"\n  ", type, " ", name, "[", std::to_string(size), "];"});
  return name;
}

std::string CFunction::declareArray(std::string_view type, std::string_view init) {
  std::string name = "v" + std::to_string(nextLocal_++);
  declarations_.add({"\n  ", type, " ", name, "[] = ", init, ";"});
  return name;
}

template <class Words>
void CFunction::addCall(std::string_view before, std::string_view equals, std::string_view name,
                        const Words& arguments, std::string_view behind) {
  body_.add(CList({line(), before, equals, name, "("}, arguments, ", ", behind));
}

void CFunction::call(std::string_view name, const std::vector<std::string>& arguments) {
  addCall("", "", name, arguments, ");");
}

void CFunction::call(std::string_view name, CWords arguments) {
  addCall("", "", name, arguments, ");");
}

void CFunction::callAndAssign(std::string_view lhs, std::string_view name,
                              const std::vector<std::string>& arguments) {
  addCall(lhs, " = ", name, arguments, ");");
}

void CFunction::callAndAssign(std::string_view lhs, std::string_view name, CWords arguments) {
  addCall(lhs, " = ", name, arguments, ");");
}

// Cases stand between the head and their statements.
void CFunction::beginSwitch(std::string_view expr) {
  addLine({"switch (", expr, ")"});
  beginScope(body_);
  indentation_ += 2;
}

void CFunction::addCase(std::string_view label) {
  body_.add("\n");
  indent(body_, static_cast<int>(indentation_) - 2);
  body_.add({"case ", label, ":"});
}

void CFunction::addDefault() {
  body_.add("\n");
  indent(body_, static_cast<int>(indentation_) - 2);
  body_.add("default:");
}

void CFunction::addBreak() {
  addLine("break;");
}

void CFunction::endSwitch() {
  indentation_ -= 2;
  endScope(body_);
}

void CFunction::beginWhile(std::string_view expr) {
  addLine({"while (", expr, ")"});
  beginScope(body_);
}

void CFunction::beginDoWhile() {
  addLine("do");
  beginScope(body_);
}

void CFunction::endDoWhile(std::string_view expr) {
  endScope(body_);
  body_.add({" while (", expr, ");"});
}

void CFunction::beginIf(std::string_view expr) {
  addLine({"if (", expr, ")"});
  beginScope(body_);
}

void CFunction::beginIf(std::string_view name, const std::vector<std::string>& arguments) {
  addCall("if (", "", name, arguments, "))");
  beginScope(body_);
}

void CFunction::beginIf(std::string_view name, CWords arguments) {
  addCall("if (", "", name, arguments, "))");
  beginScope(body_);
}

void CFunction::beginElseIf(std::string_view expr) {
  addLine({"else if (", expr, ")"});
  beginScope(body_);
}

void CFunction::beginElse() {
  addLine("else");
  beginScope(body_);
}

void CFunction::beginFor(std::string_view var, std::string_view from, std::string_view condition,
                         std::string_view step) {
  addLine({"for (", var, " = ", from, "; ", condition, "; ", step, ")"});
  beginScope(body_);
}

void CFunction::beginBlock() {
  CBase::beginScope(body_);
}

void CFunction::preprocessor(std::string_view word, std::string_view name) {
  body_.add({"\n", word, name});
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

void CFunction::addComment(CWords parts) {
  addLine("/* ");
  body_.add(parts);
  body_.add(" */");
}

std::string CFunction::getNewLabel() {
  return file_->uniqueLabel();
}

void CFunction::addGoto(std::string_view label) {
  addLine({"goto ", label, ";"});
}

void CFunction::addLabel(std::string_view label) {
  body_.add({"\n", label, ":"});
}

void CFunction::dummyDecl() {
  beginScope(body_);
  addLine("NULL, NULL");
  endScope(body_);
}

size_t CFunction::typePlace(std::string_view type) {
  size_t place = 0;
  while (place < types_.size() && types_[place].name != type) ++place;
  if (place == types_.size()) types_.push_back({std::string(type), {}});
  return place;
}

std::string CFunction::getTmpVariable(std::string_view type) {
  if (type.empty()) throw internal_exception("CFunction", __LINE__, "getTmpVariable", "type missing");
  const size_t place = typePlace(type);
  auto& free = types_[place].free;
  if (free.empty()) {
    tmpPlaces_.resize(nextLocal_ + 1, SIZE_MAX);
    tmpPlaces_.back() = tmps_.size();
    tmps_.push_back({true, place, declare(type, "")});
    return tmps_.back().name;
  }
  Tmp& first = tmps_[free.top()];
  free.pop();
  first.in_use = true;
  return first.name;
}

void CFunction::releaseTmpVariable(const std::string& name) {
  const Tmp* found = findTmp(name);
  if (found == nullptr)
    throw internal_exception("CFunction", __LINE__, "releaseTmpVariable",
                             "Variable to release could not be found");
  Tmp& tmp = tmps_[static_cast<size_t>(found - tmps_.data())];
  if (!tmp.in_use)
    throw internal_exception("CFunction", __LINE__, "releaseTmpVariable",
                             "Can not release an unused variable");
  tmp.in_use = false;
  types_[tmp.type].free.push(static_cast<size_t>(found - tmps_.data()));
}

const CFunction::Tmp* CFunction::findTmp(std::string_view name) const {
  size_t number = 0;
  const char* end = name.data() + name.size();
  if (!name.starts_with('v') || std::from_chars(name.data() + 1, end, number).ptr != end) return nullptr;
  if (number >= tmpPlaces_.size() || tmpPlaces_[number] == SIZE_MAX) return nullptr;
  const Tmp& tmp = tmps_[tmpPlaces_[number]];
  return tmp.name == name ? &tmp : nullptr;
}

bool CFunction::isTmpVariable(const std::string& name) const {
  return findTmp(name) != nullptr;
}

std::unique_ptr<CFunction> CFile::beginFunction(const std::string& returnType, const std::string& name,
                                                const std::vector<std::string>& parameters,
                                                const std::string& comment, bool exported) {
  return std::make_unique<CFunction>(this, returnType, name, parameters, comment, exported);
}
