// A read-only collection of host objects (a record set's Fields, a
// workbook's Worksheets): Count, and Item as the default member. Only the
// count and the item lookup differ from one collection to the next.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/recordset_errors.hpp"
#include "korvex/host_object.hpp"

namespace korvex {

class HostCollection : public HostObject {
 public:
  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override {
    if (host::sameName(name, u"Count")) {
      return DispatchResult::success(Value::lng(static_cast<std::int32_t>(count())));
    }
    if (host::sameName(name, u"Item")) return getDefault(args);
    return memberNotFound(name);
  }
  DispatchResult setProperty(std::u16string_view name, std::span<const Value>,
                             const Value&) override {
    return memberNotFound(name);
  }
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override {
    return getProperty(name, args);
  }

 protected:
  virtual std::size_t count() const = 0;
};

}  // namespace korvex
