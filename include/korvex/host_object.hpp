// Host objects: the late-bound object interface through which the engine
// reaches everything the host owns (its parent object and database
// connection, the current record set, the workbook and sheet).
//
// It is the portable equivalent of automation dispatch: properties and
// methods are addressed by member name (matched case-insensitively by the
// implementation), arguments are positional Values, the result is a Value.
// Failures are returned, never thrown: a DispatchResult carries an error
// number and a description, which the engine reports like any run-time error.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "korvex/value.hpp"

namespace korvex {

struct DispatchResult {
  Value value;
  std::int32_t number = 0;  // 0 = success
  std::u16string description;

  bool ok() const noexcept { return number == 0; }
  static DispatchResult success(Value v = {}) { return {std::move(v), 0, {}}; }
  static DispatchResult failure(std::int32_t number, std::u16string description) {
    return {Value{}, number, std::move(description)};
  }
};

/// Error 438 with its standard text, for members an object does not have.
DispatchResult memberNotFound(std::u16string_view member);

class HostObject {
 public:
  virtual ~HostObject() = default;

  /// Reads a property; args are the property's indexes, if any
  /// (e.g. Fields.Item(3) is getProperty("Item", {3})).
  virtual DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) = 0;
  /// Writes a property (args as for getProperty).
  virtual DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                                     const Value& value) = 0;
  /// Calls a method.
  virtual DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) = 0;
  /// The object's default member (a Field's Value, a collection's Item);
  /// the default implementation reads the property "Value".
  virtual DispatchResult getDefault(std::span<const Value> args) {
    return getProperty(u"Value", args);
  }
};

/// Creates host objects by class name, the way a script host creates
/// automation objects; nullptr for a class it does not know.
class ObjectFactory {
 public:
  virtual ~ObjectFactory() = default;
  virtual ObjectRef create(std::u16string_view className) = 0;
};

}  // namespace korvex
