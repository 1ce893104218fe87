// Modules and names: who imports what, the kinds of definitions, actual parameters.
#include <algorithm>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

namespace {

constexpr const char* kBuiltins =
    "BUILTIN-CLASSES DEFINITIONS ::= BEGIN\n"
    "TYPE-IDENTIFIER ::= CLASS { &id OBJECT IDENTIFIER UNIQUE, &Type } WITH SYNTAX { &Type IDENTIFIED BY &id "
    "}\n"
    "ABSTRACT-SYNTAX ::= CLASS { &id OBJECT IDENTIFIER, &Type,\n"
    "  &property BIT STRING { handles-invalid-encodings(0) } DEFAULT {} }\n"
    "  WITH SYNTAX { &Type IDENTIFIED BY &id [HAS PROPERTY &property] }\n"
    "END\n";

// The module of what is defined without a source; its names are known everywhere.
constexpr std::string_view kPredefined = "ISO8824";
constexpr size_t kMostNodes = 400000;

}  // namespace

std::string inQuotes(std::string_view name) {
  return "\"" + std::string(name.substr(0, 200)) + "\"";
}

const char* asn1Name(MainType main) {
  return rowOf(main).asn1_name;
}

Resolver::Resolver(std::vector<std::unique_ptr<Module>>& modules, Arena& arena, Reporter& reporter)
    : modules_(modules), arena_(arena), reporter_(reporter) {}

void Resolver::declareBuiltins() {
  builtin_file_.path = "built-in";
  builtin_file_.text = kBuiltins;
  builtin_tokens_ = tokenize(builtin_file_, reporter_);
  // Its names are reserved words, which only this module may define.
  auto module = std::make_unique<Module>();
  module->file = &builtin_file_;
  module->tokens = &builtin_tokens_;
  module->builtin = true;
  Parser parser(builtin_file_, builtin_tokens_, arena_, reporter_);
  parser.parseBuiltins(*module);
  builtin_modules_.push_back(std::move(module));
}

Module* Resolver::findModule(std::string_view name) const {
  const auto found = module_names_.find(name);
  return found == module_names_.end() ? nullptr : found->second;
}

void Resolver::importPredefined(const Module& module, const ImportAst& import) {
  for (const auto& [symbol, token] : import.symbols)
    if (!isReservedWord(symbol))
      reporter_.error(module.place(token),
                      inQuotes(symbol) + " is not defined in module " + inQuotes(import.module));
}

void Resolver::linkImports(Module& module) {
  for (const ImportAst& import : module.imports) {
    Module* from = findModule(import.module);
    if (!from && import.module == kPredefined) {
      importPredefined(module, import);
      continue;
    }
    if (!from) {
      reporter_.error(module.place(import.token),
                      "the imported module " + inQuotes(import.module) + " was not found");
    } else if (from != &module) {
      importRecord(module, *from);
    }
    for (const auto& [symbol, token] : import.symbols) {
      if (module.by_name.count(symbol)) {
        reporter_.error(module.place(token), inQuotes(symbol) + " is imported and defined");
        continue;
      }
      const auto [place, fresh] = module.imported.emplace(symbol, import.module);
      if (!fresh && place->second != import.module)
        place->second = std::string_view();  // only Module.name will do
    }
  }
  for (const ImportAst& import : module.imports) {
    const Module* from = findModule(import.module);
    if (!from) continue;
    for (const auto& [symbol, token] : import.symbols)
      if (!isReservedWord(symbol)) checkImported(module, import, *from, symbol, token);
  }
}

void Resolver::checkImported(const Module& module, const ImportAst& import, const Module& from,
                             std::string_view symbol, int token) {
  const auto names = [&](const auto& list) {
    return places_.find(list, symbol, [](const auto& pair) { return pair.first; }) < list.size();
  };
  const bool defined = from.by_name.count(symbol) ||
                       std::any_of(from.imports.begin(), from.imports.end(), [&](const ImportAst& other) {
                         return names(other.symbols);
                       });
  const bool exported = from.exports_all || names(from.exports);
  if (!defined) {
    reporter_.error(module.place(token),
                    inQuotes(symbol) + " is not defined in module " + inQuotes(import.module));
  } else if (!exported) {
    reporter_.error(module.place(token),
                    "module " + inQuotes(import.module) + " does not export " + inQuotes(symbol));
  }
}

void Resolver::checkExports(const Module& module) {
  for (const auto& [symbol, token] : module.exports) {
    if (module.by_name.count(symbol) || module.imported.count(symbol)) continue;
    reporter_.error(module.place(token), inQuotes(symbol) + " is exported, but not defined");
  }
}

int Resolver::importRecord(Module& module, Module& other) {
  if (&module == &other) return 1;
  auto& records = module.import_records;
  auto found = std::find(records.begin(), records.end(), &other);
  if (found == records.end()) found = records.insert(records.end(), &other);
  return static_cast<int>(found - records.begin()) + 2;
}

Definition* Resolver::findIn(Module& module, std::string_view name) {
  Module* current = &module;
  for (int steps = 0; steps < 64; ++steps) {
    const auto found = current->by_name.find(name);
    if (found != current->by_name.end()) return found->second;
    const auto imported = current->imported.find(name);
    if (imported == current->imported.end()) return nullptr;
    current = findModule(imported->second);
    if (!current) return nullptr;
  }
  return nullptr;
}

Definition* Resolver::find(const RefAst& ref, const Context& context, bool report) {
  Module* module = context.module;
  if (!ref.module.empty()) {
    Module* named = findModule(ref.module);
    if (!named) {
      if (report) error(context, ref.token, "module " + inQuotes(ref.module) + " is not known");
      return nullptr;
    }
    const auto found = named->by_name.find(ref.name);
    if (found != named->by_name.end()) return found->second;
    if (report)
      error(context, ref.token, inQuotes(ref.name) + " is not defined in module " + inQuotes(ref.module));
    return nullptr;
  }
  if (isReservedWord(ref.name)) {
    const auto& names = builtin_modules_.front()->by_name;
    const auto found = names.find(ref.name);
    if (found != names.end()) return found->second;
  }
  const auto imported = module->imported.find(ref.name);
  if (imported != module->imported.end() && imported->second.empty()) {
    if (report) error(context, ref.token, inQuotes(ref.name) + " is imported from several modules; name one");
    return nullptr;
  }
  Definition* definition = findIn(*module, ref.name);
  // A symbol that the imported module lacks has been reported where it is imported.
  if (!definition && report && imported == module->imported.end()) {
    error(context, ref.token, inQuotes(ref.name) + " is not defined");
  }
  return definition;
}

/// Types and sets of classes look like types and values of types until their governors are known.
DefKind Resolver::kindOf(Definition& definition) {
  if (definition.kind_state == State::kDone) return definition.kind;
  if (definition.kind_state == State::kBusy) return definition.kind;
  Depth depth(depth_);
  definition.kind_state = State::kBusy;
  if (depth.ok() && definition.type && namesClass(*definition.type, Context{definition.module, nullptr})) {
    if (definition.kind == DefKind::kType) definition.kind = DefKind::kClass;
    if (definition.kind == DefKind::kValue) definition.kind = DefKind::kObject;
    if (definition.kind == DefKind::kValueSet) definition.kind = DefKind::kObjectSet;
  }
  definition.kind_state = State::kDone;
  return definition.kind;
}

bool Resolver::namesClass(const TypeAst& type, const Context& context) {
  if (type.kind != TypeAst::kRef || !type.tags.empty() || !type.constraints.empty()) return false;
  if (const Argument* arg = argument(type.ref, context)) {
    if (arg->param->governor) return false;
    TypeAst* actual = typeOfArgument(*arg);
    Depth depth(depth_);
    return depth.ok() && namesClass(*actual, arg->context);
  }
  Definition* definition = find(type.ref, context, false);
  return definition && kindOf(*definition) == DefKind::kClass;
}

void Resolver::numberDefinitions(Module& module) {
  int values = 0, unique[3] = {0, 0, 0};
  for (Definition& definition : module.definitions) {
    const DefKind kind = kindOf(definition);
    if (definition.parameterized) continue;
    switch (kind) {
      case DefKind::kType:
      case DefKind::kClass:
      case DefKind::kValueSet:
        definition.number = definition.unique = ++module.types;
        break;
      default:
        definition.number = ++values;
        definition.unique = ++unique[kind == DefKind::kValue ? 0 : kind == DefKind::kObject ? 1 : 2];
    }
  }
}

const Argument* Resolver::argument(const RefAst& ref, const Context& context) const {
  if (!context.env || !ref.module.empty()) return nullptr;
  const auto found = context.env->args.find(ref.name);
  return found == context.env->args.end() ? nullptr : &found->second;
}

/// The surroundings of one use of a parameterized definition; none after an error.
const Env* Resolver::bind(const Definition& definition, const RefAst& ref, const Context& context) {
  for (const Env* env = context.env; env; env = env->caller) {
    if (env->definition != &definition) continue;
    error(context, ref.token, "the parameterized definition " + inQuotes(definition.name) + " is recursive");
    return nullptr;
  }
  if (types_.size() + values_.size() + envs_.size() > kMostNodes) {
    error(context, ref.token, "the parameterized definitions grow too large");
    throw TooManyErrors();
  }
  if (!ref.has_args || ref.args.size() != definition.params.size()) {
    error(context, ref.token,
          inQuotes(ref.name) + " takes " + std::to_string(definition.params.size()) + " parameters, not " +
              std::to_string(ref.args.size()));
    return nullptr;
  }
  Env& env = envs_.emplace_back();
  env.definition = &definition;
  env.caller = context.env;
  for (size_t i = 0; i < ref.args.size(); ++i) {
    env.args[definition.params[i].name] =
        Argument{ref.args[i], context, &definition.params[i], nullptr, nullptr};
  }
  return &env;
}

Parser Resolver::parserAt(const Context& context, int token) {
  Parser parser(*context.module->file, *context.module->tokens, arena_, reporter_);
  parser.pos = token;
  return parser;
}

TypeAst* Resolver::typeOfArgument(const Argument& arg) {
  if (arg.type) return arg.type;
  Parser parser = parserAt(arg.context, arg.range.begin);
  TypeAst* type = parser.parseType();
  if (parser.pos != arg.range.end) parser.fail("expected the end of the parameter");
  const_cast<Argument&>(arg).type = type;
  return type;
}

ValueAst* Resolver::valueOfArgument(const Argument& arg) {
  if (arg.value) return arg.value;
  Parser parser = parserAt(arg.context, arg.range.begin);
  ValueAst* value = parser.parseValue();
  if (parser.pos != arg.range.end) parser.fail("expected the end of the parameter");
  const_cast<Argument&>(arg).value = value;
  return value;
}

void Resolver::guarded(const std::function<void()>& action) {
  try {
    action();
  } catch (const Abandoned&) {
    abandoned_ = true;
  }
}

void Resolver::finishLater() {
  for (; !later_.empty(); later_.pop_front()) guarded(later_.front());
}

void Resolver::declareModules() {
  declareBuiltins();
  for (auto& module : modules_) {
    if (!module_names_.emplace(module->name, module.get()).second) {
      reporter_.error(module->place(module->token), "module " + inQuotes(module->name) + " is defined twice");
    }
  }
  for (auto& module : modules_) linkImports(*module);
  for (auto& module : modules_) checkExports(*module);
  for (auto& module : builtin_modules_) numberDefinitions(*module);
  for (auto& module : modules_) numberDefinitions(*module);
}

/// All modules, imported ones first: the names that a module's objects need, and so its syntax file, must not
/// depend on who imports it.
std::vector<Module*> Resolver::importedFirst() const {
  std::vector<Module*> order;
  std::set<Module*> seen;
  std::vector<std::pair<Module*, size_t>> open;  // with the next of their imports
  for (const auto& module : modules_) {
    if (seen.insert(module.get()).second) open.emplace_back(module.get(), 0);
    while (!open.empty()) {
      Module* current = open.back().first;
      const size_t next = open.back().second++;
      if (next == current->imports.size()) {
        order.push_back(current);
        open.pop_back();
        continue;
      }
      Module* from = findModule(current->imports[next].module);
      if (from && seen.insert(from).second) open.emplace_back(from, 0);
    }
  }
  return order;
}

/// The nodes of all definitions: of each module first the types, then what is written by their forms.
void Resolver::makeDefinitions() {
  for (Module* module : importedFirst()) {
    // Objects may add definitions behind the others.
    const auto for_each = [module](const auto& call) {
      for (size_t i = 0; i < module->definitions.size(); ++i)
        if (!module->definitions[i].parameterized) call(module->definitions[i]);
    };
    const auto is_type = [](const Definition& definition) {
      return definition.kind == DefKind::kType || definition.kind == DefKind::kClass ||
             definition.kind == DefKind::kValueSet;
    };
    for_each([&](Definition& definition) {
      if (is_type(definition)) guarded([&] { typeOf(definition); });
    });
    for_each([&](Definition& definition) {
      if (!is_type(definition)) guarded([&] { valueOf(definition); });
    });
  }
}

void Resolver::run(const std::set<std::string>& entries) {
  entries_ = entries;
  declareModules();
  makeDefinitions();
  finishLater();
  if (reporter_.errors() > 0) return;
  // New types may still arise: a tag's number is a value, too.
  for (size_t i = 0; i < types_.size(); ++i) settleTags(types_[i]);
  finishLater();
  checkFinite();
  if (abandoned_ && reporter_.errors() == 0) reporter_.error("references are nested too deeply");
  if (reporter_.errors() > 0) return;
  for (size_t i = 0; i < types_.size(); ++i) checkDistinctTags(types_[i]);
  markRecursive();
}

}  // namespace mesk
