// An array for the time of a computation during which generated code may run and fault: it
// belongs to the memory scope of the task, so nothing is lost if the computation is left.
#pragma once

#include <cstring>
#include <string>

#include "value/task.h"
#include "value/value.h"

namespace lumos {

template <class T>
class Scratch {
 public:
  explicit Scratch(size_t count) {
    holder_ = make_root(lumo_undefined_type, lumo_temp_alloc_c);
    reserve_text(holder_, count * sizeof(T));
    data_ = reinterpret_cast<T*>(holder_->text.data);
    std::memset(static_cast<void*>(data_), 0, count * sizeof(T));
  }
  Scratch(const Scratch&) = delete;
  T& operator[](size_t i) { return data_[i]; }
  T* data() { return data_; }

 private:
  Value holder_;
  T* data_;
};

}  // namespace lumos
