// A read-only collection of host objects (a record set's Fields, a
// workbook's Worksheets): Count, and Item as the default member. Only the
// count and the item lookup differ from one collection to the next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/object_members.hpp"

namespace korvex {

class HostCollection : public host::PropertyObject {
 public:
  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override {
    if (host::equalsNoCase(name, u"Count")) {
      return DispatchResult::success(Value::lng(static_cast<std::int32_t>(count())));
    }
    if (host::equalsNoCase(name, u"Item")) return getDefault(args);
    return memberNotFound(name);
  }

 protected:
  virtual std::size_t count() const = 0;
};

/// A collection whose items are found by their position from 0 or by their
/// name, as a record set's fields are; anything else is no item (3265).
class NamedCollection : public HostCollection {
 public:
  DispatchResult getDefault(std::span<const Value> args) override;

 protected:
  virtual std::u16string_view nameAt(std::size_t i) const = 0;
  virtual ObjectRef itemAt(std::size_t i) = 0;
};

}  // namespace korvex
