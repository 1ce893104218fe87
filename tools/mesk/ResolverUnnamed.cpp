// Names for types that stand without one within objects: open types are chosen by names.
#include <algorithm>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

namespace {
std::string textOf(const Module& module, Range range) {
  std::string text;
  for (int i = range.begin; i < range.end; ++i) text += " " + std::string((*module.tokens)[i].text);
  return text;
}

bool hasName(const TypeAst& type) {
  return type.kind == TypeAst::kRef && !type.ref.has_args && type.tags.empty() && type.constraints.empty();
}
}  // namespace

/// Whether a type without a name is of those that the compiler knows, so that a name helps.
bool Resolver::isTranslated(const TypeAst& type, const Context& context) {
  switch (type.kind) {
    case TypeAst::kPlain:
      return inTtcn(type.main) < InTtcn::kOpen;
    case TypeAst::kList:
      return isTranslated(*type.element, context);
    case TypeAst::kStruct:
      return std::all_of(type.components.begin(), type.components.end(), [&](const ComponentAst& part) {
        return !part.type || isTranslated(*part.type, context);
      });
    case TypeAst::kRef: {
      const Argument* arg = typeArgument(type.ref, context);
      return !arg || isTranslated(*typeOfArgument(*arg), arg->context);
    }
    default:
      return type.kind != TypeAst::kInstance;
  }
}

/// The actual parameter for a type; none where it is something else.
const Argument* Resolver::typeArgument(const RefAst& ref, const Context& context) {
  const Argument* arg = argument(ref, context);
  return arg && !arg->param->governor && !parserAt(arg->context, arg->range.begin).isSymbol("{") ? arg
                                                                                                 : nullptr;
}

/// What stands for the parameter that a type is.
Resolver::Written Resolver::actualType(Written written) {
  while (hasName(*written.type)) {
    const Argument* arg = typeArgument(written.type->ref, written.context);
    if (!arg) break;
    written = {typeOfArgument(*arg), arg->range, arg->context, true};
  }
  return written;
}

/// A number for an instance's actual parameters: the same where they read the same.
int Resolver::instanceNumber(const Env* env) {
  if (!env) return 0;
  int& number = instance_numbers_[env];
  if (number != 0) return number;
  std::string text = env->definition->module->name + "." + std::string(env->definition->name);
  for (const ParamAst& param : env->definition->params) {
    const Argument& arg = env->args.at(param.name);
    text += "{" + arg.context.module->name + " " + std::to_string(instanceNumber(arg.context.env)) +
            textOf(*arg.context.module, arg.range);
  }
  return number = instances_.emplace(text, static_cast<int>(instances_.size()) + 1).first->second;
}

/// Whether a piece of text means something else for other actual parameters.
bool Resolver::hasParameter(const Written& written) {
  const Context& context = written.context;
  for (int i = written.range.begin; context.env && i < written.range.end; ++i)
    if (context.env->args.count((*context.module->tokens)[i].text)) return true;
  return false;
}

/// A definition of a type in the present module. Its name is that of the definition around the text and of
/// the field, with two hyphens between, which no other name has.
Definition& Resolver::declare(const Written& written, const std::string& base) {
  Module& module = *current_;
  int& count = same_names_[{&module, base}];
  std::string name;
  do name = ++count == 1 ? base : base + "-" + std::to_string(count);
  while (module.by_name.count(name));
  Definition& definition = module.definitions.emplace_back();
  definition.module = &module;
  definition.name = made_names_.emplace_back(name);
  definition.token = written.type->token;
  definition.kind_state = State::kDone;
  definition.text_module = written.context.module;
  definition.env = written.context.env;
  definition.type = const_cast<TypeAst*>(written.type);
  definition.number = definition.unique = ++module.types;
  module.by_name.emplace(definition.name, &definition);
  return definition;
}

/// A type as it is written within an object, or a reference to a definition that is made of it. Instances
/// share one where the same is written, as their sets are made anew for each use.
const TypeAst* Resolver::declared(const Written& written, const FieldAst& field) {
  Written actual = actualType(written);
  if (hasName(*actual.type) || !isTranslated(*actual.type, actual.context)) return written.type;
  if (!hasParameter(actual)) actual.context.env = nullptr;
  const Module& module = *actual.context.module;
  const auto behind = std::partition_point(
      module.definitions.begin(), module.definitions.end(),
      [&](const Definition& one) { return !one.text_module && one.token <= actual.type->token; });
  const std::string base = std::string(std::prev(behind)->name) + "--" + std::string(field.name.substr(1));
  const std::string text =
      actual.is_argument ? textOf(module, actual.range) : std::to_string(actual.type->token);
  const std::string number = std::to_string(instanceNumber(actual.context.env));
  const TypeAst*& made = declared_[{current_, module.name + " " + base + " " + number + " " + text}];
  if (made) return made;
  Definition& definition = declare(actual, base);
  TypeAst& reference = arena_.types.emplace_back();
  reference.kind = TypeAst::kRef;
  reference.token = reference.ref.token = actual.type->token;
  reference.ref.module = current_->name;
  reference.ref.name = definition.name;
  made = &reference;
  typeOf(definition);
  return made;
}

}  // namespace mesk
