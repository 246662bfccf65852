// A counted reference to a COM interface: AddRef on copy, Release on
// destruction, so that no path out of a function leaks or double-releases.
#pragma once

#include <utility>

template <class T>
class ComPtr {
 public:
  ComPtr() noexcept = default;
  /// Takes a reference the caller already owns (an out-parameter's).
  static ComPtr adopt(T* p) noexcept {
    ComPtr r;
    r.p_ = p;
    return r;
  }
  /// Shares a reference: adds one of its own.
  static ComPtr share(T* p) noexcept {
    if (p) p->AddRef();
    return adopt(p);
  }
  ComPtr(const ComPtr& o) noexcept : p_(o.p_) {
    if (p_) p_->AddRef();
  }
  ComPtr(ComPtr&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  ComPtr& operator=(ComPtr o) noexcept {
    std::swap(p_, o.p_);
    return *this;
  }
  ~ComPtr() {
    if (p_) p_->Release();
  }

  T* get() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }
  /// For out-parameters: releases what is held and gives its slot.
  T** put() noexcept {
    if (p_) p_->Release();
    p_ = nullptr;
    return &p_;
  }
  /// Hands the reference to the caller (an out-parameter).
  T* detach() noexcept { return std::exchange(p_, nullptr); }

 private:
  T* p_ = nullptr;
};
