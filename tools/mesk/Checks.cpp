// What can only be judged when all types are known: tags, endless types, recursion.
#include <algorithm>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

/// Whether a type has no tag of its own that an implicit tag could take the place of.
bool Resolver::needsExplicitTag(TypeNode* type) {
  for (int steps = 0; type && steps < 1000; ++steps) {
    if (steps > 0 && !type->tags.empty()) return false;
    if (type->main == TYP_SYNONYM) {
      type = type->ref ? typeOf(*type->ref) : nullptr;
    } else if (type->main == TYP_SELECTION) {
      type = base(type);
    } else {
      return type->main == TYP_CHOICE || type->main == TYP_ANY || type->main == TYP_OPEN ||
             type->main == TYP_FIELDLIST;
    }
  }
  return false;
}

/// Gives tags their numbers, and makes explicit those that have nothing to take the place of.
void Resolver::settleTags(TypeNode& node) {
  for (TagNode& tag : node.tags) {
    if (!tag.ast) continue;
    std::optional<int64_t> number;
    current_ = node.module;
    try {
      number = integerOf(*tag.ast->number, tag.context, "a tag");
    } catch (const Abandoned&) {
      continue;
    }
    if (number && (*number < 0 || *number > INT32_MAX))
      error(tag.context, tag.ast->token, "the tag's number is out of range");
    tag.number = number.value_or(0);
  }
  if (node.tags.empty()) return;
  TagNode& last = node.tags.back();
  if (!last.dummy && !needsExplicitTag(&node)) return;
  last.is_explicit = true;
  if (last.ast && last.ast->mode == TagMode::kImplicit)
    error(last.context, last.ast->token, "what has no tag of its own can not have an implicit one");
}

/// Least fixed point of: this type has a value that ends.
void Resolver::checkFinite() {
  std::vector<Definition*> open;
  for (auto& module : modules_) {
    for (Definition& definition : module->definitions) {
      if (definition.type_node) open.push_back(&definition);
    }
  }
  for (bool changed = true; changed && !open.empty();) {
    const size_t before = open.size();
    std::reverse(open.begin(), open.end());  // chains of references may run either way
    open.erase(std::remove_if(open.begin(), open.end(),
                              [&](Definition* definition) {
                                const bool finite = isFinite(*definition->type_node);
                                if (finite) finite_[definition->type_node] = true;
                                return finite;
                              }),
               open.end());
    changed = open.size() != before;
  }
  std::sort(open.begin(), open.end(), [](const Definition* one, const Definition* other) {
    return std::pair(one->module->name, one->token) < std::pair(other->module->name, other->token);
  });
  for (Definition* definition : open) {
    reporter_.error(placeOf(contextOf(*definition), definition->token),
                    inQuotes(definition->name) + " contains itself without an end");
  }
  for (TypeNode& node : types_) {
    if (node.main == TYP_SELECTION && node.ref && !base(&node))
      reporter_.error(node.source->place(node.token), "the selection leads to itself");
  }
}

bool Resolver::isFinite(TypeNode& node) {
  switch (node.main) {
    case TYP_SYNONYM:
    case TYP_SELECTION:
      return !node.ref || finite_.count(typeOf(*node.ref)) != 0;
    case TYP_SEQ:
    case TYP_SET:
      return std::all_of(node.components.begin(), node.components.end(), [&](TypeNode* part) {
        return part->isMarker() || part->presence != kMandatory || part->addition > 0 || isFinite(*part);
      });
    case TYP_CHOICE:
      return std::any_of(node.components.begin(), node.components.end(),
                         [&](TypeNode* part) { return !part->isMarker() && isFinite(*part); });
    default:
      return true;
  }
}

struct Resolver::TagSet {
  std::vector<std::pair<int, int64_t>> tags;
  bool any = false;
  bool too_deep = false;
  int steps = 0;
};

/// The tags that values of a type can begin with.
void Resolver::outermostTags(TypeNode& node, TagSet& set, int depth) {
  if (depth > 200 || ++set.steps > 20000) {
    set.too_deep = true;
    return;
  }
  if (!node.tags.empty()) {
    set.tags.emplace_back(node.tags.front().tag_class, node.tags.front().number);
    return;
  }
  switch (node.main) {
    case TYP_SYNONYM:
      if (node.ref) outermostTags(*typeOf(*node.ref), set, depth + 1);
      return;
    case TYP_SELECTION:
      if (TypeNode* type = base(&node)) outermostTags(*type, set, depth + 1);
      return;
    case TYP_CHOICE:
      for (TypeNode* part : node.components) {
        if (!part->isMarker()) outermostTags(*part, set, depth + 1);
      }
      return;
    default:
      break;
  }
  if (rowOf(node.main).tag > 0) {
    set.tags.emplace_back(kTagUniversal, rowOf(node.main).tag);
  } else {
    set.any = true;
  }
}

void Resolver::checkDistinctTags(TypeNode& node) {
  if (node.main != TYP_CHOICE && node.main != TYP_SET && node.main != TYP_SEQ) return;
  std::map<std::pair<int, int64_t>, TypeNode*> used;
  TypeNode* open = nullptr;  // a component that may have any tag
  const auto clash = [&](TypeNode* part, TypeNode* other) {
    reporter_.error(part->source->place(part->token), "the tags of " + inQuotes(part->name) + " and " +
                                                          inQuotes(other->name) + " are not distinct");
  };
  for (TypeNode* part : node.components) {
    if (part->isMarker()) continue;
    TagSet set;
    outermostTags(*part, set, 0);
    if (set.too_deep) return;
    // In a SEQUENCE only what may be absent can be mistaken for what follows.
    const bool optional = node.main != TYP_SEQ || part->presence != kMandatory;
    std::sort(set.tags.begin(), set.tags.end());
    set.tags.erase(std::unique(set.tags.begin(), set.tags.end()), set.tags.end());
    if (open && node.main != TYP_SEQ) {
      clash(part, open);
    } else if (set.any && node.main != TYP_SEQ && !used.empty()) {
      clash(part, used.begin()->second);
    }
    for (const auto& tag : set.tags) {
      const auto found = used.find(tag);
      if (found == used.end()) continue;
      clash(part, found->second);
      break;
    }
    if (!optional) {
      used.clear();
      continue;
    }
    for (const auto& tag : set.tags) used.emplace(tag, part);
    if (set.any) open = part;
  }
}

/// Marks the definitions that lie on a cycle of references: those in a strongly connected component of their
/// own.
void Resolver::markRecursive() {
  std::unordered_map<TypeNode*, std::vector<TypeNode*>> edges;
  for (TypeNode& node : types_) {
    if (node.ref && node.of_definition && node.ref->type_node)
      edges[node.of_definition].push_back(node.ref->type_node);
  }
  struct Visit {
    int index = 0, low = 0;
    bool on_stack = false;
  };
  std::unordered_map<TypeNode*, Visit> visits;
  std::vector<TypeNode*> stack;
  std::vector<std::pair<TypeNode*, size_t>> path;
  int counter = 0;
  const auto enter = [&](TypeNode* node) {
    visits[node] = Visit{++counter, counter, true};
    stack.push_back(node);
    path.emplace_back(node, 0);
  };
  for (TypeNode& root : types_) {
    if (!root.definition || visits.count(&root)) continue;
    enter(&root);
    while (!path.empty()) {
      TypeNode* node = path.back().first;
      const auto& next = edges[node];
      if (path.back().second < next.size()) {
        TypeNode* target = next[path.back().second++];
        const auto found = visits.find(target);
        if (target == node) node->recursive = true;
        if (found == visits.end()) {
          enter(target);
        } else if (found->second.on_stack) {
          visits[node].low = std::min(visits[node].low, found->second.index);
        }
        continue;
      }
      path.pop_back();
      const Visit visit = visits[node];
      if (!path.empty()) visits[path.back().first].low = std::min(visits[path.back().first].low, visit.low);
      if (visit.low != visit.index) continue;
      size_t size = 0;
      while (stack[stack.size() - 1 - size] != node) ++size;
      for (size_t i = 0; i <= size; ++i) {
        TypeNode* member = stack[stack.size() - 1 - i];
        visits[member].on_stack = false;
        if (size > 0) member->recursive = true;
      }
      stack.resize(stack.size() - size - 1);
    }
  }
}

}  // namespace mesk
