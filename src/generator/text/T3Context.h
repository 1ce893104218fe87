// The module being generated: its files, its symbol table and its four life-cycle functions, which are
// filled piecemeal while the tree is walked. One instance, gT3Context.
#pragma once

#include <memory>
#include <set>

#include "FileAPI/CFile.h"
#include "support/Idents.h"

class T3Context {
 public:
  /// Starts a module; the context owns the file from now on.
  void begin(std::unique_ptr<CFile> file);
  /// Ends functions and symbol table and writes the files; a second call does nothing. False when the old
  /// files were kept.
  bool end();
  /// The files will not be written.
  void invalidateFile();

  // Each throws internal_exception when the context is ended; a function that is not stored, too.
  CFile& file();
  CArray& symbolTable();
  CFunction& initializeFunction();
  CFunction& registerFunction();
  CFunction& finalizeFunction();
  CFunction& moduleParamsInitializeFunction();
  void storeInitializeFunction(std::unique_ptr<CFunction> function);
  void storeRegisterFunction(std::unique_ptr<CFunction> function);
  void storeFinalizeFunction(std::unique_ptr<CFunction> function);
  void storeModuleParamsInitializeFunction(std::unique_ptr<CFunction> function);

  void storeCurrentModuleName(tIdent name) { currentModule_ = name; }
  tIdent currentModuleName() const { return currentModule_; }
  /// Notes that the code names what is declared in that module.
  void noteModule(tIdent name) {
    if (name != currentModule_) namedModules_.insert(name);
  }
  const std::set<tIdent>& namedModules() const { return namedModules_; }

 private:
  template <class T>
  T& get(const std::unique_ptr<T>& object, const char* operation);
  void checkOpen(const char* operation) const;

  std::unique_ptr<CFile> file_;
  std::unique_ptr<CArray> symbolTable_;
  std::unique_ptr<CFunction> initialize_;
  std::unique_ptr<CFunction> register_;
  std::unique_ptr<CFunction> finalize_;
  std::unique_ptr<CFunction> moduleParamsInitialize_;
  tIdent currentModule_ = NoIdent;
  std::set<tIdent> namedModules_;
  bool ended_ = true;
};

extern T3Context& gT3Context;
