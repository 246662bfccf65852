// Late-bound calls on host objects, failing the way a script's own call
// fails: a member the object refuses raises a run-time fault carrying the
// object's number and description; Nothing where an object is needed is
// error 91, a value that holds no object 424.
#pragma once

#include <span>
#include <string_view>

#include "korvex/host_object.hpp"
#include "korvex/value.hpp"

namespace korvex {

/// The call's value, or the object's failure raised.
Value unwrap(DispatchResult r);
/// The object itself; Nothing raises 91.
const ObjectRef& present(const ObjectRef& obj);
/// The object a value holds: 424 when it holds none, 91 for Nothing.
ObjectRef objectOf(const Value& v);

Value getMember(const ObjectRef& obj, std::u16string_view name, std::span<const Value> args = {});
Value callMember(const ObjectRef& obj, std::u16string_view name, std::span<const Value> args = {});
void setMember(const ObjectRef& obj, std::u16string_view name, const Value& value);

}  // namespace korvex
