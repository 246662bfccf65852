// A field of a record set held in memory, as both record sets hand them
// out. The fields live inside the set's shared data, one per column, made
// once in a container that never moves them; each is handed out sharing the
// data's ownership, so a field a host keeps keeps the data alive without
// the data and its fields owning one another.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

#include "host/object_members.hpp"

namespace korvex::host {

/// `Data` answers for the field: getField(column, name) and
/// setField(column, name, value), and keeps the fields in `fields`.
template <class Data>
class RecordField final : public PropertyObject {
 public:
  RecordField(Data& data, std::size_t column) noexcept : data_(data), column_(column) {}

  DispatchResult getProperty(std::u16string_view name, std::span<const Value>) override {
    return data_.getField(column_, name);
  }
  DispatchResult setProperty(std::u16string_view name, std::span<const Value>,
                             const Value& value) override {
    return data_.setField(column_, name, value);
  }

 private:
  Data& data_;
  std::size_t column_;
};

/// The field object of `column`, the same one each time.
template <class Data>
ObjectRef fieldOf(const std::shared_ptr<Data>& data, std::size_t column) {
  return ObjectRef(data, &data->fields[column]);
}

}  // namespace korvex::host
