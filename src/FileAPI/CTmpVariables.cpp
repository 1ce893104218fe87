#include "FileAPI/CTmpVariables.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <utility>

// As many as functions are open at the same time.
std::vector<std::unique_ptr<CTmpVariables::Tables>>& CTmpVariables::spare() {
  static auto& tables = *new std::vector<std::unique_ptr<Tables>>;
  return tables;
}

CTmpVariables::CTmpVariables() = default;

CTmpVariables::~CTmpVariables() {
  if (tables_ == nullptr) return;
  tables_->variables.clear();
  tables_->type_count = 0;
  spare().push_back(std::move(tables_));
}

unsigned CTmpVariables::typePlace(std::string_view type) {
  auto& types = tables_->types;
  size_t& count = tables_->type_count;
  size_t place = 0;
  while (place < count && types[place].name != type) ++place;
  if (place < count) return static_cast<unsigned>(place);
  if (count == types.size()) types.emplace_back();
  types[count].name.assign(type);
  types[count].free.clear();
  return static_cast<unsigned>(count++);
}

unsigned CTmpVariables::take(std::string_view type, unsigned fresh) {
  if (tables_ == nullptr) {
    if (spare().empty()) spare().push_back(std::make_unique<Tables>());
    tables_ = std::move(spare().back());
    spare().pop_back();
  }
  const unsigned place = typePlace(type);
  auto& free = tables_->types[place].free;
  unsigned variable = fresh;
  if (free.empty()) {
    tables_->variables.resize(fresh + 1);
  } else {
    std::pop_heap(free.begin(), free.end(), std::greater<>());
    variable = free.back();
    free.pop_back();
  }
  tables_->variables[variable] = {place, true};
  return variable;
}

CTmpVariables::Release CTmpVariables::release(std::string_view name) {
  const unsigned number = find(name);
  if (number == kNone) return Release::unknown;
  Variable& variable = tables_->variables[number];
  if (!std::exchange(variable.in_use, false)) return Release::unused;
  auto& free = tables_->types[variable.type].free;
  free.push_back(number);
  std::push_heap(free.begin(), free.end(), std::greater<>());
  return Release::done;
}

// The number behind the "v", written without a zero before it.
unsigned CTmpVariables::find(std::string_view name) const {
  if (tables_ == nullptr || name.size() < 2 || name[0] != 'v' || (name[1] == '0' && name.size() > 2))
    return kNone;
  unsigned number = 0;
  const char* end = name.data() + name.size();
  const auto read = std::from_chars(name.data() + 1, end, number);
  const bool known = read.ptr == end && read.ec == std::errc() && number < tables_->variables.size() &&
                     tables_->variables[number].type != kNone;
  return known ? number : kNone;
}
