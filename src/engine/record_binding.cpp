// The current record: its fields act as script variables and the move
// statements step through its rows. Everything goes through the host
// object's late-bound members (Fields, Count, Item, Name, Edit, Update, the
// moves, BOF, EOF); a failing call surfaces as error 102 with the host's
// own description.
#include <algorithm>
#include <array>
#include <string>

#include "engine/context.hpp"
#include "engine/generation.hpp"
#include "engine/messages.hpp"
#include "host/late_bound.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"
#include "values/text_scan.hpp"

namespace korvex {

namespace {

constexpr std::int32_t kRecordError = 102;

ObjectRef fieldsOf(const ObjectRef& record) { return objectOf(getMember(record, u"Fields")); }

ObjectRef fieldOf(const ObjectRef& record, const Value& field) {
  const std::array<Value, 1> args{field};
  return objectOf(getMember(fieldsOf(record), u"Item", args));
}

// Calls `fn`; a fault reports error 102 with its description (plus a line
// break and `suffix`) and gives false.
template <typename Fn>
bool guarded(Context& ctx, Fn&& fn, std::u16string_view suffix = {}) {
  try {
    fn();
    return true;
  } catch (const vb::RuntimeError& e) {
    std::u16string text = e.description();
    if (!suffix.empty()) {
      text += u"\r\n";
      text += suffix;
    }
    ctx.report(kRecordError, text);
    return false;
  }
}

std::vector<std::u16string> fieldNamesOf(const ObjectRef& record, const Locale& loc) {
  const ObjectRef fields = fieldsOf(record);
  const std::int32_t count = vb::toLong(getMember(fields, u"Count"), loc);
  std::vector<std::u16string> names;
  names.reserve(static_cast<std::size_t>(std::max(count, 0)));
  for (std::int32_t i = 0; i < count; ++i) {
    const std::array<Value, 1> index{Value::lng(i)};
    const ObjectRef field = objectOf(getMember(fields, u"Item", index));
    names.push_back(upperName(vb::toString(getMember(field, u"Name"), loc)));
  }
  return names;
}

}  // namespace

void Context::setRecord(ObjectRef rs) {
  record_ = std::move(rs);
  fieldNamesGeneration_ = nextGeneration();
  fieldNames_.assign(1, std::u16string{});
  if (!record_) return;
  try {
    fieldNames_ = fieldNamesOf(record_, locale());
  } catch (const vb::RuntimeError& e) {
    report(e.number(), e.description());
  }
}

bool Context::isFieldName(std::u16string_view name) {
  if (!record_) return false;
  try {
    const std::vector<std::u16string> names = fieldNamesOf(record_, locale());
    return std::find(names.begin(), names.end(), upperName(name)) != names.end();
  } catch (const vb::RuntimeError&) {
    return false;  // a record that cannot answer has no such field
  }
}

bool Context::isCachedFieldName(std::u16string_view name) const {
  std::u16string wanted;
  upperNameInto(name, wanted);
  return std::find(fieldNames_.begin(), fieldNames_.end(), wanted) != fieldNames_.end();
}

Value Context::fieldValue(const Value& field) {
  Value result;
  guarded(*this, [&] {
    const ObjectRef f = fieldOf(record_, field);
    result = unwrap(f->getDefault({}));
  });
  return result;
}

bool Context::changeField(const Value& field, const Value& value) {
  return guarded(
      *this,
      [&] {
        const ObjectRef& record = present(record_);
        (void)record->callMethod(u"Edit", {});  // a record already editable may refuse
        const ObjectRef f = fieldOf(record, field);
        setMember(f, u"Value", value);
        callMember(record, u"Update");
      },
      msg::kChangeFieldSource);
}

bool Context::move(std::u16string_view member) {
  return guarded(*this, [&] { callMember(record_, member); });
}

bool Context::recordFlag(std::u16string_view member) {
  bool flag = false;
  guarded(*this, [&] { flag = vb::toBoolean(getMember(record_, member), locale()); });
  return flag;
}

}  // namespace korvex
