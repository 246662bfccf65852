// SymbolTable: the variables of a script, keyed by upper-cased name, kept in
// the order they were last written.
//
// A table belongs to a run context; its errors are reported on the host's
// frame, also while a single-line IF's tail runs in a frame of its own, as
// they always were. Lookups
// are hashed; the order is kept as a sequence stamp per entry, so writing a
// variable moves it to the end without touching the others.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "korvex/value.hpp"

namespace korvex {

class Context;

class SymbolTable {
 public:
  /// `owner` receives the reports; may be null (errors then only give Empty).
  explicit SymbolTable(Context* owner) noexcept;

  /// Appends a new variable. An existing name (any case) is not changed;
  /// the owner's user is shown "符号或变量已定义" instead.
  void Add(std::u16string_view name, const Value& value);
  bool IsSymbolDefined(std::u16string_view name) const;
  /// The variable's value; a missing name reports error 5 on the owner and
  /// gives Empty.
  Value value(std::u16string_view name);
  /// Assigns an existing variable (it moves to the end of the order); a
  /// missing name reports error 5 on the owner and stores nothing.
  void setValue(std::u16string_view name, const Value& value);
  /// The variable's value without any report; nullptr when missing.
  const Value* find(std::u16string_view name) const;
  std::int32_t Count() const noexcept { return static_cast<std::int32_t>(entries_.size()); }

  /// Forgets every variable; slots found before are stale.
  void clear();

  /// (upper-cased name, value) in table order.
  std::vector<std::pair<std::u16string, Value>> entries() const;

  struct Entry {
    Value value;
    std::uint64_t order = 0;
  };
  /// The variable's entry, for a name upper-cased already; nullptr when
  /// missing. The pointer stays valid while generation() is unchanged.
  Entry* slot(std::u16string_view upperName);
  /// Assigns through an entry, as setValue does.
  void store(Entry& entry, Value value) {
    entry.value = std::move(value);
    entry.order = nextOrder_++;
  }
  /// Unique among all tables: a slot found in another table is not valid here.
  std::uint64_t generation() const noexcept { return generation_; }

 private:
  const std::u16string& key(std::u16string_view name) const;
  void reportUndefined(const std::u16string& upperName) const;

  Context* owner_;
  std::unordered_map<std::u16string, Entry> entries_;
  std::uint64_t nextOrder_ = 0;
  std::uint64_t generation_;
  mutable std::u16string keyBuffer_;  // reused for lookups: no allocation per access
};

}  // namespace korvex
