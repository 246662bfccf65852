// What the late-bound host objects here share: member names matched
// case-insensitively, the answers of an object whose members are
// properties, and collection properties that give an item when indexed.
#pragma once

#include <span>
#include <string_view>

#include "korvex/host_object.hpp"
#include "values/text_scan.hpp"

namespace korvex::host {

/// Member, field and class names match case-insensitively (ASCII letters),
/// as automation does.
using vb::equalsNoCase;

/// An object whose members are properties. Writing fails with 438 unless the
/// object says otherwise, and a call reads the property of that name, as
/// late binding allows.
class PropertyObject : public HostObject {
 public:
  DispatchResult setProperty(std::u16string_view name, std::span<const Value>,
                             const Value&) override {
    return memberNotFound(name);
  }
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override {
    return getProperty(name, args);
  }
};

/// A collection property (Fields, Parameters, Worksheets): the collection
/// itself, or with an index its item, so that Fields(0) is Fields.Item(0).
DispatchResult collectionOrItem(const ObjectRef& collection, std::span<const Value> args);

}  // namespace korvex::host
