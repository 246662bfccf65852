// A stack of values for one evaluation. Expressions are evaluated for every
// line a script runs and nearly all of them need only a few places, so the
// first sixteen live inside the object (on the C++ stack); only a longer
// expression takes heap storage.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "korvex/value.hpp"

namespace korvex::eval {

class ValueBuffer {
 public:
  ValueBuffer() noexcept = default;
  ValueBuffer(const ValueBuffer&) = delete;
  ValueBuffer& operator=(const ValueBuffer&) = delete;
  ~ValueBuffer() {
    clear();
    if (data_ != local()) std::allocator<Value>().deallocate(data_, capacity_);
  }

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  Value& operator[](std::size_t i) noexcept { return data_[i]; }
  Value& back() noexcept { return data_[size_ - 1]; }

  void push(Value v) {
    if (size_ == capacity_) grow();
    new (data_ + size_) Value(std::move(v));
    ++size_;
  }
  void pop() noexcept { data_[--size_].~Value(); }
  void clear() noexcept {
    while (size_ > 0) pop();
  }

 private:
  static constexpr std::size_t kLocal = 16;

  Value* local() noexcept { return reinterpret_cast<Value*>(local_); }
  void grow() {
    const std::size_t capacity = capacity_ * 2;
    Value* bigger = std::allocator<Value>().allocate(capacity);
    for (std::size_t i = 0; i < size_; ++i) {
      new (bigger + i) Value(std::move(data_[i]));
      data_[i].~Value();
    }
    if (data_ != local()) std::allocator<Value>().deallocate(data_, capacity_);
    data_ = bigger;
    capacity_ = capacity;
  }

  alignas(Value) unsigned char local_[kLocal * sizeof(Value)];
  Value* data_ = local();
  std::size_t size_ = 0;
  std::size_t capacity_ = kLocal;
};

}  // namespace korvex::eval
