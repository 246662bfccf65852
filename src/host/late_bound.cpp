#include "host/late_bound.hpp"

#include "values/runtime_error.hpp"

namespace korvex {

Value unwrap(DispatchResult r) {
  if (!r.ok()) throw vb::RuntimeError(r.number, std::move(r.description));
  return std::move(r.value);
}

const ObjectRef& present(const ObjectRef& obj) {
  if (!obj) vb::raise(vb::kObjectNotSet);
  return obj;
}

ObjectRef objectOf(const Value& v) {
  if (!v.isObject()) vb::raise(vb::kObjectRequired);
  return present(v.objectValue());
}

Value getMember(const ObjectRef& obj, std::u16string_view name, std::span<const Value> args) {
  return unwrap(present(obj)->getProperty(name, args));
}

Value callMember(const ObjectRef& obj, std::u16string_view name, std::span<const Value> args) {
  return unwrap(present(obj)->callMethod(name, args));
}

void setMember(const ObjectRef& obj, std::u16string_view name, const Value& value) {
  unwrap(present(obj)->setProperty(name, {}, value));
}

}  // namespace korvex
