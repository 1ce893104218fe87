// Types: references, instances of parameterized types, structures, selections.
#include <algorithm>
#include <unordered_set>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

TypeNode* Resolver::newType(const Context& context, int token, TypeNode* parent) {
  TypeNode& node = types_.emplace_back();
  node.parent = parent;
  node.module = current_;
  node.of_definition = current_definition_;
  node.level = parent ? parent->level + 1 : 0;
  node.source = context.module;
  node.token = token;
  node.context = context;
  return &node;
}

TypeNode* Resolver::plainType(MainType main) {
  TypeNode*& node = plain_types_[main];
  if (!node) {
    node = &types_.emplace_back();
    node->main = main;
  }
  return node;
}

/// Where the text of a definition stands that takes no parameters.
Context Resolver::contextOf(const Definition& definition) {
  return definition.text_module ? Context{definition.text_module, definition.env}
                                : Context{definition.module, nullptr};
}

TypeNode* Resolver::typeOf(Definition& definition) {
  if (definition.type_node) return definition.type_node;
  Module* outer_module = current_;
  TypeNode* outer_definition = current_definition_;
  const Context context = contextOf(definition);
  current_ = definition.module;
  current_definition_ = nullptr;
  TypeNode* node = newType(context, definition.token, nullptr);
  node->definition = true;
  node->name = definition.name;
  node->of_definition = current_definition_ = node;
  definition.type_node = node;
  const auto leave = [&] {
    current_ = outer_module;
    current_definition_ = outer_definition;
  };
  try {
    if (kindOf(definition) == DefKind::kClass) {
      makeClass(definition, *node);
    } else {
      node->entry = entries_.count(std::string(definition.name)) != 0;
      makeType(*definition.type, context, nullptr, node);
      if (definition.kind == DefKind::kValueSet) {
        later_.push_back([this, node, &definition, context] {
          current_ = node->module;
          current_definition_ = node;
          Parser parser = parserAt(context, definition.range.begin + 1);
          ConstraintAst* set = parser.parseElementSets();
          if (parser.pos != definition.range.end - 1) parser.fail("expected the end of the set");
          node->constraints.push_back(makeConstraint(*set, context, *node, node));
        });
      }
    }
  } catch (...) {
    leave();
    throw;
  }
  leave();
  return node;
}

TypeNode* Resolver::base(TypeNode* type) {
  std::vector<TypeNode*> way;
  while (type != nullptr && (type->main == TYP_SYNONYM || type->main == TYP_SELECTION)) {
    const auto known = bases_.find(type);
    if (known != bases_.end()) {
      type = known->second;
      break;
    }
    if (!type->ref || way.size() > types_.size()) return nullptr;
    way.push_back(type);
    if (type->main == TYP_SYNONYM) {
      type = typeOf(*type->ref);
    } else {
      TypeNode* choice = base(typeOf(*type->ref));
      if (!choice || choice->main != TYP_CHOICE) return nullptr;
      type = componentOf(*choice, type->ref_name);
    }
  }
  if (type == nullptr || (type->main == TYP_NONE && type->ref_name.empty())) return nullptr;
  // What is not made yet may still become a reference.
  if (type->main != TYP_NONE)
    for (const TypeNode* passed : way) bases_.emplace(passed, type);
  return type;
}

void Resolver::addTags(const TypeAst& ast, const Context& context, TypeNode& node, bool dummy) {
  if (ast.tags.empty()) return;
  std::vector<TagNode> tags;
  for (const TagAst& tag : ast.tags) {
    TagNode made;
    made.tag_class = tag.tag_class;
    made.is_explicit =
        tag.mode == TagMode::kExplicit ||
        (tag.mode == TagMode::kModuleDefault && context.module->tag_default == Module::kExplicitTags);
    made.ast = &tag;
    made.context = context;
    tags.push_back(made);
  }
  if (dummy) tags.back().is_explicit = true;
  node.tags.insert(node.tags.begin(), tags.begin(), tags.end());
}

void Resolver::addConstraints(const TypeAst& ast, const Context& context, TypeNode& node) {
  if (ast.constraints.empty()) return;
  TypeNode* owner = &node;
  const TypeAst* type = &ast;
  later_.push_back([this, owner, type, context] {
    current_ = owner->module;
    current_definition_ = owner->of_definition;
    for (const ConstraintAst* constraint : type->constraints) {
      ConstraintNode* made = makeConstraint(*constraint, context, *owner, owner);
      if (made) owner->constraints.push_back(made);
    }
  });
}

void Resolver::makePlain(const TypeAst& ast, const Context& context, TypeNode& node) {
  node.main = ast.main;
  node.ref_name = ast.word;
  if (ast.main == TYP_ANY && !ast.word.empty()) {
    later_.push_back([this, &node, context, token = ast.token] { checkClassifier(node, context, token); });
  }
  if (ast.main == TYP_ENUM) {
    node.marker = ast.marker;
    if (ast.marker < 0 && context.module->extensibility_implied)
      node.marker = static_cast<int>(ast.named.size());
  }
  if (ast.named.empty()) return;
  node.ast = &ast;
  node.context = context;
  node.named_done = false;
  later_.push_back([this, &node] { nameItems(node); });
}

/// Makes the node of a type; with `into`, that node becomes the type.
TypeNode* Resolver::makeType(const TypeAst& ast, const Context& context, TypeNode* parent, TypeNode* into) {
  Depth depth(depth_);
  if (!depth.ok()) {
    error(context, ast.token, "types are nested too deeply");
    throw Abandoned();
  }
  TypeNode* node = into ? into : newType(context, ast.token, parent);
  bool dummy = false;
  switch (ast.kind) {
    case TypeAst::kPlain:
      makePlain(ast, context, *node);
      break;
    case TypeAst::kStruct:
      makeStruct(ast, context, *node);
      break;
    case TypeAst::kList:
      // A list whose element fails remains no type at all.
      node->components.push_back(makeType(*ast.element, context, node));
      node->main = ast.main;
      break;
    case TypeAst::kRef:
      dummy = argument(ast.ref, context) != nullptr;
      makeReference(ast, context, *node);
      break;
    case TypeAst::kField:
      makeFieldType(ast, context, *node);
      break;
    case TypeAst::kSelection:
      makeSelection(ast, context, *node);
      break;
    case TypeAst::kInstance: {
      node->main = TYP_INSTANCE_OF;
      const ClassUse cls = classOf(ast.ref, context);
      if (cls && !cls.definition->module->builtin) node->ref = cls.definition;
      node->ref_name = ast.ref.name;
      break;
    }
  }
  addTags(ast, context, *node, dummy);
  addConstraints(ast, context, *node);
  return node;
}

void Resolver::makeReference(const TypeAst& ast, const Context& context, TypeNode& node) {
  node.instance = true;
  if (const Argument* arg = argument(ast.ref, context)) {
    if (arg->param->governor && arg->param->name[0] >= 'a') {
      error(context, ast.token, inQuotes(ast.ref.name) + " is a value, a type is needed");
      throw Abandoned();
    }
    if ((*arg->context.module->tokens)[arg->range.begin].text == "{" &&
        (*arg->context.module->tokens)[arg->range.begin].kind == Tok::kSymbol) {
      error(context, ast.token, "the parameter " + inQuotes(ast.ref.name) + " is a set, a type is needed");
      throw Abandoned();
    }
    makeType(*typeOfArgument(*arg), arg->context, node.parent, &node);
    return;
  }
  Definition* definition = find(ast.ref, context);
  if (!definition) throw Abandoned();
  const DefKind kind = kindOf(*definition);
  if (kind != DefKind::kType && kind != DefKind::kValueSet) {
    static constexpr const char* kNames[] = {"type", "class", "value", "value set", "object", "object set"};
    error(context, ast.token,
          inQuotes(ast.ref.name) + " is a" +
              (kind == DefKind::kObject || kind == DefKind::kObjectSet ? "n " : " ") +
              kNames[static_cast<int>(kind)] + ", a type is needed");
    throw Abandoned();
  }
  if (!definition->parameterized) {
    if (ast.ref.has_args) {
      error(context, ast.ref.token, inQuotes(ast.ref.name) + " takes no parameters");
      throw Abandoned();
    }
    node.main = TYP_SYNONYM;
    node.ref = definition;
    node.ref_name = ast.ref.name;
    node.instance = false;
    return;
  }
  const Env* env = bind(*definition, ast.ref, context);
  if (!env) throw Abandoned();
  const Context inside{definition->module, env};
  makeType(*definition->type, inside, node.parent, &node);
  if (kind == DefKind::kValueSet) {
    later_.push_back([this, owner = &node, definition, inside] {
      current_ = owner->module;
      current_definition_ = owner->of_definition;
      Parser parser = parserAt(inside, definition->range.begin + 1);
      owner->constraints.push_back(makeConstraint(*parser.parseElementSets(), inside, *owner, owner));
    });
  }
}

/// The type behind names and parameters as it is written, for whoever needs its inner form.
std::pair<const TypeAst*, Context> Resolver::lookThrough(const TypeAst& ast, const Context& context) {
  const TypeAst* type = &ast;
  Context where = context;
  for (int steps = 0; steps < 200 && type->kind == TypeAst::kRef; ++steps) {
    if (const Argument* arg = argument(type->ref, where)) {
      type = typeOfArgument(*arg);
      where = arg->context;
      continue;
    }
    Definition* definition = find(type->ref, where);
    if (!definition) throw Abandoned();
    if (kindOf(*definition) != DefKind::kType && definition->kind != DefKind::kValueSet) break;
    const Env* env = nullptr;
    if (definition->parameterized && !(env = bind(*definition, type->ref, where))) throw Abandoned();
    type = definition->type;
    where = env ? Context{definition->module, env} : contextOf(*definition);
  }
  return {type, where};
}

std::pair<const TypeAst*, Context> Resolver::structOf(const TypeAst& ast, const Context& context,
                                                      MainType main) {
  const auto found = lookThrough(ast, context);
  if (found.first->kind != TypeAst::kStruct || found.first->main != main) {
    error(context, ast.token, std::string("this is not a ") + asn1Name(main));
    throw Abandoned();
  }
  return found;
}

/// The components of a structure in their order, with those that COMPONENTS OF brings.
void Resolver::expand(const TypeAst& ast, const Context& context, std::vector<Expanded>& out, bool roots_only,
                      bool main_list) {
  if (std::count(expansions_.begin(), expansions_.end(), &ast)) {
    error(context, ast.token, "COMPONENTS OF includes the type itself");
    throw Abandoned();
  }
  if (++expansion_steps_ > 20000 || out.size() > 20000 || expansions_.size() > 100) {
    error(context, ast.token, "too many components");
    throw Abandoned();
  }
  expansions_.push_back(&ast);
  int markers = 0;
  try {
    for (const ComponentAst& component : ast.components) {
      if (component.kind == ComponentAst::kMarker) {
        ++markers;
        if (main_list) out.push_back(Expanded{&component, context, 0});
        continue;
      }
      if (roots_only && component.addition > 0) continue;
      if (component.kind == ComponentAst::kNormal) {
        out.push_back(Expanded{&component, context, main_list ? component.addition : 0});
        continue;
      }
      const auto [included, where] = structOf(*component.type, context, ast.main);
      const size_t before = out.size();
      expand(*included, where, out, true, false);
      if (main_list) {
        for (size_t i = before; i < out.size(); ++i) out[i].addition = component.addition;
      }
    }
  } catch (const Abandoned&) {
    expansions_.pop_back();
    throw;
  }
  expansions_.pop_back();
}

namespace {
/// Whether the components of a structure get tags by their places: none of the root has one in the source.
bool hasAutomaticTags(const TypeAst& ast, const Module& module) {
  return module.tag_default == Module::kAutomaticTags &&
         std::all_of(ast.components.begin(), ast.components.end(), [](const ComponentAst& component) {
           return component.kind != ComponentAst::kNormal || component.addition != 0 ||
                  component.type->tags.empty();
         });
}
}  // namespace

void Resolver::makeMarker(const Context& context, int token, int before, TypeNode& node) {
  TypeNode* marker = newType(context, token, &node);
  marker->main = TYP_EXTENSION_MARKER;
  marker->component_nbr = before;
  node.components.push_back(marker);
}

TypeNode* Resolver::makeComponent(const Expanded& part, int number, TypeNode& node) {
  TypeNode* component = makeType(*part.ast->type, part.context, &node);
  component->name = part.ast->name;
  component->token = part.ast->token;
  component->presence = part.ast->presence;
  component->addition = part.addition;
  component->component_nbr = number;
  node.components.push_back(component);
  if (node.automatic_tags) {
    TagNode tag;
    tag.automatic = true;
    const TypeAst& type = *part.ast->type;
    tag.dummy = type.tags.empty() && type.kind == TypeAst::kRef && argument(type.ref, part.context);
    component->tags.insert(component->tags.begin(), tag);
  }
  if (part.ast->default_value) {
    later_.push_back([this, component, value = part.ast->default_value, where = part.context] {
      current_ = component->module;
      current_definition_ = component->of_definition;
      component->default_value = makeValue(*value, where, component);
    });
  }
  return component;
}

void Resolver::makeStruct(const TypeAst& ast, const Context& context, TypeNode& node) {
  node.main = ast.main;
  std::vector<Expanded> list;
  if (expansions_.empty()) expansion_steps_ = 0;
  expand(ast, context, list, false, true);
  node.automatic_tags = hasAutomaticTags(ast, *context.module);
  std::unordered_set<std::string_view> names;
  std::vector<TypeNode*> order;  // roots, then additions, as automatic tags count them
  bool abandoned = false, extensible = false;
  for (const Expanded& part : list) {
    if (part.ast->kind == ComponentAst::kMarker) {
      makeMarker(part.context, part.ast->token, static_cast<int>(order.size()), node);
      extensible = true;
      continue;
    }
    if (!part.ast->name.empty() && !names.insert(part.ast->name).second) {
      error(part.context, part.ast->token, "the component " + inQuotes(part.ast->name) + " appears twice");
    }
    try {
      order.push_back(makeComponent(part, static_cast<int>(order.size()), node));
    } catch (const Abandoned&) {
      abandoned = true;
    }
  }
  if (!extensible && context.module->extensibility_implied)
    makeMarker(context, ast.token, static_cast<int>(order.size()), node);
  if (abandoned) throw Abandoned();
  if (!node.automatic_tags) return;
  std::stable_partition(order.begin(), order.end(), [](const TypeNode* part) { return part->addition == 0; });
  for (size_t i = 0; i < order.size(); ++i) order[i]->tags.front().number = static_cast<int64_t>(i);
}

/// What an ANY is DEFINED BY must be a component of a structure around it.
void Resolver::checkClassifier(const TypeNode& any, const Context& context, int token) {
  for (const TypeNode* around = any.parent; around; around = around->parent) {
    for (const TypeNode* part : around->components) {
      if (!part->isMarker() && part->name == any.ref_name) return;
    }
  }
  error(context, token, "there is no component " + inQuotes(any.ref_name));
}

void Resolver::makeSelection(const TypeAst& ast, const Context& context, TypeNode& node) {
  const auto [choice, where] = structOf(*ast.element, context, TYP_CHOICE);
  const std::vector<ComponentAst>& list = choice->components;
  const size_t found = places_.find(list, ast.word, [](const ComponentAst& part) { return part.name; });
  if (found == list.size()) {
    error(context, ast.token, "the CHOICE has no alternative " + inQuotes(ast.word));
    throw Abandoned();
  }
  const TypeAst& named = *ast.element;
  Definition* definition = nullptr;
  if (named.kind == TypeAst::kRef && !argument(named.ref, context)) definition = find(named.ref, context);
  if (definition && !definition->parameterized) {
    node.main = TYP_SELECTION;
    node.ref = definition;
    node.ref_name = ast.word;
    return;
  }
  // The alternative of a CHOICE without a name of its own.
  makeType(*list[found].type, where, node.parent, &node);
}

size_t Resolver::placeOfComponent(const TypeNode& type, std::string_view name) {
  return places_.find(type.components, name, [](const TypeNode* component) { return component->name; });
}

TypeNode* Resolver::componentOf(const TypeNode& type, std::string_view name) {
  const size_t place = placeOfComponent(type, name);
  return place == type.components.size() ? nullptr : type.components[place];
}

}  // namespace mesk
