#include "asn2c/Browser.h"

#include <cstdio>

#include "asn1/front/AsnFault.h"
#include "asn1/model/AsnModel.h"
#include "asn2c/CFile.h"

namespace asn2c {
using namespace asn1;  // NOLINT(google-build-using-namespace)

namespace {
template <class... Values>
std::string Line(const char* format, Values... values) {
  char line[1000];
  std::snprintf(line, sizeof line, format, values...);
  return line;
}

class Browser {
 public:
  Browser(CFile& tree, CFile& summary) : tree_(tree), summary_(summary) {}

  void Write(ModRec& module) {
    for (CFile* file : {&tree_, &summary_}) *file << Line("[%s]\n", module.name.c_str());
    forEachType(module, [&](const AsnType& type, int) {
      InTree(type, 0);
      InSummary(module, "type", getTypeRef(type), getTypeDefinitionLine(type), getTypeMainType(type));
    });
    forEachValue(module, [&](const AsnValue& value, int) {
      InSummary(module, "value", getValueRef(value), value.node().line, getValueMainType(skipValues(value)));
    });
  }

 private:
  static constexpr int kDeepest = 1000;

  void InTree(const AsnType& type, int depth) {
    if (depth > kDeepest) return;
    const std::string indent(static_cast<size_t>(depth) * 2, ' ');
    tree_ << Line("%s%s:%d: %s : %s", indent.c_str(), type.module->source.c_str(), type.node().line,
                  type.node().name == 0 ? "" : getTypeRef(type).c_str(),
                  getTypeMainTypeStri(getTypeMainType(type)))
          << "\n";
    if (isListType(type)) InTree(forTypeElem(type), depth + 1);
    for (const AsnType& component : TypeComps(type)) InTree(component, depth + 1);
  }

  void InSummary(const ModRec& module, const char* kind, const std::string& name, int line, MainType type) {
    summary_ << Line("%u:%s:'%s%s':%d:%s:%s:%s\n", ++number_, kind, (getModuleRef(module) + ".").c_str(),
                     name.c_str(), line, getTypeMainTypeStri(type), module.source.c_str(),
                     getModulePrefix(module).c_str());
  }

  CFile& tree_;
  CFile& summary_;
  unsigned number_ = 0;
};

void WriteDependencies(ModRec& module, const std::string& summary, const std::string& path) {
  CFile file(path);
  file << Line("%s :", summary.c_str());
  const auto source = [&](ModRec& one) { file << " " << one.source; };
  forEachExportingModule(module, source);
  source(module);
  file << "\n";
  file.Close();
}
}  // namespace

void WriteBrowserFiles(ModRec& module) {
  const std::string prefix = module.options.Text("ADE-PREFIX");
  const std::string directory = DirectoryOption(module, "ADE-DIRECTORY");
  if (prefix.empty() && directory.empty()) return;
  if (prefix.empty()) fatalError(kCannotWrite, "No ADE-PREFIX");
  const std::string base = directory + prefix + getModulePrefix(module);
  CFile tree(base + ".tre"), summary(base + ".acs");
  Browser browser(tree, summary);
  browser.Write(module);
  tree.Close();
  summary.Close();
  WriteDependencies(module, base + ".acs", base + ".mak");
  CopyFaultsTo(base + ".acs");
}
}  // namespace asn2c
