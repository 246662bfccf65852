#include "host/object_members.hpp"

#include "host/collection.hpp"
#include "host/recordset_errors.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex {

DispatchResult host::collectionOrItem(const ObjectRef& collection, std::span<const Value> args) {
  if (args.empty()) return DispatchResult::success(Value::object(collection));
  return collection->getDefault(args);
}

DispatchResult NamedCollection::getDefault(std::span<const Value> args) {
  if (args.size() != 1) return host::itemNotFound();
  const Value& key = args[0];
  if (key.isString()) {
    for (std::size_t i = 0; i < count(); ++i) {
      if (host::equalsNoCase(nameAt(i), key.stringValue())) {
        return DispatchResult::success(Value::object(itemAt(i)));
      }
    }
    return host::itemNotFound();
  }
  std::int32_t index = 0;
  try {
    index = vb::toLong(key, Locale::zhCN());
  } catch (const vb::RuntimeError&) {
    return host::itemNotFound();
  }
  if (index < 0 || static_cast<std::size_t>(index) >= count()) return host::itemNotFound();
  return DispatchResult::success(Value::object(itemAt(static_cast<std::size_t>(index))));
}

}  // namespace korvex
