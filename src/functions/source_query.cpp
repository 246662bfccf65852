#include "functions/source_query.hpp"

#include <array>

#include "engine/context.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex::fn {

ObjectRef hostConnection(Context& ctx) { return objectOf(getMember(ctx.parent(), u"Connect")); }

ObjectRef createObject(Context& ctx, std::u16string_view className) {
  // Which database the objects reach is the host's choice: without a
  // factory there is nothing to create them with.
  const std::shared_ptr<ObjectFactory>& own = ctx.objects();
  ObjectRef obj = own ? own->create(className) : nullptr;
  if (!obj) vb::raise(429);  // the platform's "cannot create object"
  return obj;
}

ObjectRef executeOnHost(Context& ctx, std::u16string_view sql) {
  const std::array<Value, 1> text{Value::string(sql)};
  return objectOf(callMember(hostConnection(ctx), u"Execute", text));
}

Value currentField(const ObjectRef& recordset, const Value& field, const Value& fallback) {
  if (vb::toBoolean(getMember(recordset, u"EOF"), Locale::zhCN())) return fallback;
  const std::array<Value, 1> key{field};
  const ObjectRef f =
      objectOf(getMember(getMember(recordset, u"Fields").objectValue(), u"Item", key));
  Value v = unwrap(f->getDefault({}));
  return v.isNull() ? fallback : v;
}

Value queryField(Context& ctx, std::u16string_view sql, std::u16string_view field,
                 const Value& fallback) {
  return currentField(executeOnHost(ctx, sql), Value::string(field), fallback);
}

Value queryFieldOrFallback(Context& ctx, std::u16string_view sql, std::u16string_view field,
                           const Value& fallback) {
  try {
    return queryField(ctx, sql, field, fallback);
  } catch (const vb::RuntimeError&) {  // reported as the fallback
    return fallback;
  }
}

}  // namespace korvex::fn
