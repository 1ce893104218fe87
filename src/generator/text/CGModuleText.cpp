#include "generator/text/CGModuleText.h"

#include <algorithm>
#include <array>

#include "FileAPI/CFile.h"
#include "FileAPI/CFunction.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "driver/options/T3CommandLine.h"
#include "driver/options/T3Version.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"
#include "support/FormatText.h"
#include "support/ModuleCaches.h"

namespace {
constexpr size_t kColumns = 7;

std::string MagicNumberName() {
  std::string name = std::string("RTS_MAGIC_NUMBER_") + kVersion;
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
}

// The name of a file must not end the comment.
std::string InComment(std::string text) {
  for (size_t at = text.find("*/"); at != std::string::npos; at = text.find("*/", at))
    text.insert(at + 1, " ");
  return text;
}

// What is asked at each statement of the module that is being generated.
struct CurrentModule {
  tIdent name = NoIdent;
  T3Module* module = nullptr;
  /// What the comments of its places begin with; empty before the first one.
  std::string comment;
};
CurrentModule& g_current = *new CurrentModule;
const ModuleCache current([] { g_current = {}; });

CurrentModule& Current() {
  const tIdent name = gT3Context.currentModuleName();
  if (g_current.module == nullptr || g_current.name != name)
    g_current = {name, gT3ModuleMap.at(name)->as<T3Module>(), {}};
  return g_current;
}
}  // namespace

std::string CGModuleName(T3Tree_Node* module) {
  if (!T3Is<T3Module>(module)) internal_error_ast("CGModule", __LINE__, "CGModuleName", module);
  return gIdents.GetCStr(module->as<T3Module>()->name);
}

T3Module* CGCurrentModule() {
  return Current().module;
}

void CGAddMagicNumber(CFile& file) {
  const std::string type = std::string(C_VOID) + " *";
  file.addExternalConstant(type, MagicNumberName());
  file.addConstant(type, "RTS_MAGIC_NUMBER_CHECK", "&(" + MagicNumberName() + ")", true);
}

void CGSymTabAddEntry(CWords columns) {
  std::array<std::string_view, kColumns> row;
  std::copy(columns.begin(), columns.end(), row.begin());
  std::fill(row.begin() + columns.size(), row.end(), C_NULL);
  gT3Context.symbolTable().addRow({row[0], row[1], row[2], row[3], row[4], row[5], row[6]});
}

std::string CGFunctionPointer(const std::string& name) {
  return joined({"((", C_VOID, " *) ", name, ")"});
}

namespace {
std::string AsText(const std::string& file) {
  std::string name;
  for (const char c : EscapeEscape(file)) {
    if (c == '"') name += '\\';
    const auto code = static_cast<unsigned char>(c);
    name += code >= ' ' ? std::string(1, c) : FormatText("\\%03o", code);
  }
  return name;
}
}  // namespace

static bool IsElsewhere(const tPosition& position, T3Tree_Node* module) {
  return !(position == NoPosition) && position.File != module->as<T3Module>()->position.File;
}

static std::string FileOf(const tPosition& position, T3Tree_Node* module) {
  return IsElsewhere(position, module) ? AsText(gIdents.GetCStr(position.File)) : CGSourceFileName(module);
}

bool CGIsElsewhere(const tPosition& position) {
  return IsElsewhere(position, CGCurrentModule());
}

std::string CGSourceFileName(const tPosition& position) {
  return FileOf(position, CGCurrentModule());
}

const std::string& CGSourceFileName(T3Tree_Node* module) {
  static T3Tree_Node* last = nullptr;
  static auto& name = *new std::string;
  if (module == last) return name;
  last = module;
  return name = AsText(GetSourceFile(module));
}

void CGPushSourceLocation(CFunction& function, T3Tree_Node* module, std::string_view name,
                          std::string_view argv, std::string_view scope, const tPosition& position) {
  function.addLine({LUMO_SOURCE_LOCATION_PUSH, "(", Quote(module->as<T3Module>()->name), ", \"", name, "\", ",
                    argv, ", ", scope, ", \"", FileOf(position, module), "\", ",
                    std::to_string(position.Line), ", ", VEXA_CONTEXT, ");"});
}

void CGPopSourceLocation(CFunction& function) {
  function.call(LUMO_SOURCE_LOCATION_POP, {VEXA_CONTEXT});
}

void CGSetSourceLine(CFunction& function, const tPosition& position) {
  function.call(LUMO_SOURCE_LOCATION_SET_LINE, {std::to_string(position.Line), VEXA_CONTEXT});
}

void CGCommentPlace(CFunction& function, const tPosition& position, std::string_view what) {
  CurrentModule& own = Current();
  if (own.comment.empty()) own.comment = InComment(CGSourceFileName(own.module)) + " - line ";
  const bool is_elsewhere = IsElsewhere(position, own.module);
  const std::string other = is_elsewhere ? InComment(CGSourceFileName(position)) + " - line " : std::string();
  function.addText("\n");
  function.addComment({is_elsewhere ? other : own.comment, std::to_string(position.Line), " : ", what});
}

void CGLogInformation(CFunction& function, const std::string& text) {
  function.call(LUMO_LOG_STRING_TO_ALL, {LUMO_LOG_MSG_INFO_C, Quote(text), VEXA_CONTEXT});
}
