#include "generator/text/T3Context.h"

#include <utility>

#include "driver/diagnostics/T3Exception.h"
#include "generator/text/T3CodeDefs.h"

T3Context& gT3Context = *new T3Context;

namespace {
template <class T>
void EndAndDestroy(std::unique_ptr<T>& builder) {
  if (builder != nullptr) builder->end();
  builder.reset();
}
}  // namespace

void T3Context::begin(std::unique_ptr<CFile> file) {
  // what an interrupted module has left goes first: it refers to the file before
  symbolTable_.reset();
  initialize_.reset();
  register_.reset();
  finalize_.reset();
  moduleParamsInitialize_.reset();
  file_ = std::move(file);
  ended_ = false;
  currentModule_ = NoIdent;
  namedModules_.clear();
  symbolTable_ = file_->beginArray(LUMO_SYMBOL_ENTRY_STRUCT_T, VEXA_SYMBOL_TABLE, true);
}

bool T3Context::end() {
  if (ended_) return true;
  ended_ = true;
  EndAndDestroy(initialize_);
  EndAndDestroy(register_);
  EndAndDestroy(finalize_);
  EndAndDestroy(moduleParamsInitialize_);
  EndAndDestroy(symbolTable_);
  const bool written = file_ == nullptr || file_->end();
  file_.reset();
  return written;
}

void T3Context::invalidateFile() {
  if (file_ != nullptr) file_->invalidate();
}

void T3Context::checkOpen(const char* operation) const {
  if (ended_) throw internal_exception("T3Context", __LINE__, operation, "T3Context was ended previously");
}

template <class T>
T& T3Context::get(const std::unique_ptr<T>& object, const char* operation) {
  checkOpen(operation);
  if (object == nullptr) throw internal_exception("T3Context", __LINE__, operation, "No such object");
  return *object;
}

CFile& T3Context::file() {
  return get(file_, __func__);
}

CArray& T3Context::symbolTable() {
  return get(symbolTable_, __func__);
}

CFunction& T3Context::initializeFunction() {
  return get(initialize_, __func__);
}

CFunction& T3Context::registerFunction() {
  return get(register_, __func__);
}

CFunction& T3Context::finalizeFunction() {
  return get(finalize_, __func__);
}

CFunction& T3Context::moduleParamsInitializeFunction() {
  return get(moduleParamsInitialize_, __func__);
}

void T3Context::storeInitializeFunction(std::unique_ptr<CFunction> function) {
  checkOpen(__func__);
  initialize_ = std::move(function);
}

void T3Context::storeRegisterFunction(std::unique_ptr<CFunction> function) {
  checkOpen(__func__);
  register_ = std::move(function);
}

void T3Context::storeFinalizeFunction(std::unique_ptr<CFunction> function) {
  checkOpen(__func__);
  finalize_ = std::move(function);
}

void T3Context::storeModuleParamsInitializeFunction(std::unique_ptr<CFunction> function) {
  checkOpen(__func__);
  moduleParamsInitialize_ = std::move(function);
}
