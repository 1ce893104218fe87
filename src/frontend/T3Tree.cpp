#include "frontend/T3Tree.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>

#include "driver/diagnostics/Errors.h"
#include "driver/diagnostics/T3Exception.h"
#include "support/LargePages.h"

const char* const vexa_location_not_allocated = "__NO_LOCATION_ALLOCATED__";

constinit T3TreeOfRun gT3TreeOfRun;

namespace {
constexpr size_t kBlockSize = 20480;
constexpr size_t kAttributeBlockSize = 1 << 18;
// A tree of this size is the beginning of a large run.
constexpr size_t kLargeTree = 1 << 18;
// A small run is not to pay for a large page.
constexpr size_t kFirstSlab = 1 << 16;
constexpr size_t kSlab = 2 * kLargePage;

size_t Round(size_t size) {
  return (size + 7) / 8 * 8;
}
}  // namespace

/// Memory for a common block, or null where there is none left.
void* T3Tree::CutFromSlab(size_t size) {
  if (static_cast<size_t>(slab_end_ - slab_free_) < size) {
    const size_t room = blocks_.empty() && size <= kFirstSlab ? kFirstSlab : kSlab;
    void* slab = AllocateLarge(room);
    if (slab == nullptr) return nullptr;
    blocks_.emplace_back(static_cast<char*>(slab), LargeDeleter{room});
    slab_free_ = static_cast<char*>(slab);
    slab_end_ = slab_free_ + room;
  }
  void* block = slab_free_;
  slab_free_ += size;
  return block;
}

void* T3Tree::NewBlock(size_t size) {
  const bool common = size <= kAttributeBlockSize;
  void* block = common ? CutFromSlab(size) : AllocateLarge(size);
  if (block == nullptr) {
    gErrors.ErrorMessageI(kCodeTreeOutOfMemory, kFatal, NoPosition, kInfoText, "T3Tree");
    std::abort();  // a fatal message does not come back
  }
  if (!common) blocks_.emplace_back(static_cast<char*>(block), LargeDeleter{size});
  memory_ += size;
  if (memory_ > kLargeTree) UseLargePages();
  return block;
}

void* T3Tree::NodeFromNewBlock(size_t size, NodeBlock& block) {
  size = Round(size);
  const size_t room = size > kBlockSize ? size : kBlockSize;
  if (block.top != nullptr) full_.push_back(block);
  block.low = static_cast<char*>(NewBlock(room));
  block.top = block.low + room;
  block.free = block.top - size;
  return block.free;
}

bool T3Tree::MadeArrayTypes(uint32_t after, uint32_t last) const {
  const auto first = std::upper_bound(array_types_.begin(), array_types_.end(), after);
  return first != array_types_.end() && *first <= last;
}

void T3Tree::NewAttributeBlock(size_t size) {
  const size_t room = size > kAttributeBlockSize ? size : kAttributeBlockSize;
  attribute_free_ = static_cast<char*>(NewBlock(room));
  attribute_end_ = attribute_free_ + room;
}

const char* T3Tree::KeepText(const std::string& text) {
  auto* memory = static_cast<char*>(AllocAttributes(text.size() + 1));
  std::memcpy(memory, text.c_str(), text.size() + 1);
  return memory;
}

void T3Tree::ReleaseT3TreeModule() {
  blocks_.clear();
  slab_free_ = slab_end_ = nullptr;
  nodes_ = decls_ = {};
  full_.clear();
  array_types_.clear();
  attribute_free_ = attribute_end_ = nullptr;
  memory_ = 0;
  root = nullptr;
}

void T3Tree::ConfigureT3Tree(const std::string& name, const std::string& value) {
  static const std::map<std::string, bool T3TreeSettings::*> bools = {
      {"CheckReportNoTree", &T3TreeSettings::CheckReportNoTree},
      {"CheckReportNodes", &T3TreeSettings::CheckReportNodes},
      {"TreatTVAasChild", &T3TreeSettings::TreatTVAasChild}};
  static const std::map<std::string, int T3TreeSettings::*> integers = {
      {"DrawBoxHeight", &T3TreeSettings::DrawBoxHeight},
      {"DrawBoxWidth", &T3TreeSettings::DrawBoxWidth},
      {"DrawDepth", &T3TreeSettings::DrawDepth},
      {"DrawLength", &T3TreeSettings::DrawLength}};
  if (const auto b = bools.find(name); b != bools.end())
    settings_.*(b->second) = value == "T" || value == "true" || value == "1";
  else if (const auto i = integers.find(name); i != integers.end())
    settings_.*(i->second) = std::atoi(value.c_str());
  else if (name == "DrawFileName")
    settings_.DrawFileName[value.copy(settings_.DrawFileName, sizeof settings_.DrawFileName - 1)] = 0;
  else
    gErrors.ErrorMessageI(kCodeUnknownParameter, kError, NoPosition, kInfoText, name.c_str());
}
