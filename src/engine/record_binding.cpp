// The current record: its fields act as script variables and the move
// statements step through its rows. Everything goes through the host
// object's late-bound members (Fields, Count, Item, Name, Edit, Update, the
// moves, BOF, EOF); a failing call surfaces as error 102 with the host's
// own description.
#include <algorithm>
#include <array>
#include <string>

#include "engine/engine_services.hpp"
#include "engine/engine_state.hpp"
#include "engine/faults.hpp"
#include "engine/generation.hpp"
#include "engine/messages.hpp"
#include "engine/names.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex {

namespace {

constexpr std::int32_t kRecordError = 102;

// A failed call becomes a platform fault carrying the host's number and text.
Value unwrap(DispatchResult r) {
  if (!r.ok()) throw vb::RuntimeError(r.number, std::move(r.description));
  return std::move(r.value);
}

const ObjectRef& requireObject(const ObjectRef& obj) {
  if (!obj) vb::raise(vb::kObjectNotSet);
  return obj;
}

ObjectRef asObject(const Value& v) {
  if (!v.isObject()) vb::raise(vb::kObjectRequired);
  return requireObject(v.objectValue());
}

Value get(const ObjectRef& obj, std::u16string_view member, std::span<const Value> args = {}) {
  return unwrap(requireObject(obj)->getProperty(member, args));
}

ObjectRef fieldsOf(const ObjectRef& record) { return asObject(get(record, u"Fields")); }

ObjectRef fieldOf(const ObjectRef& record, const Value& field) {
  const std::array<Value, 1> args{field};
  return asObject(get(fieldsOf(record), u"Item", args));
}

// Calls `fn`; a fault sets the engine's error 102 with its description
// (plus a line break and `suffix`) and gives false.
template <typename Fn>
bool guarded(BasicEngine& engine, Fn&& fn, std::u16string_view suffix = {}) {
  try {
    fn();
    return true;
  } catch (...) {
    Fault f = currentFault();
    if (!suffix.empty()) {
      f.description += u"\r\n";
      f.description += suffix;
    }
    services::Report(engine, kRecordError, f.description);
    return false;
  }
}

}  // namespace

void BasicEngine::SetRecordSet(ObjectRef rs) noexcept {
  State& s = *s_;
  s.record = std::move(rs);
  s.fieldNamesGeneration = nextGeneration();
  try {
    s.fieldNames = noRecordFieldNames();
    if (!s.record) return;
    const ObjectRef fields = fieldsOf(s.record);
    const std::int32_t count = vb::toLong(get(fields, u"Count"), Locale());
    std::vector<std::u16string> names;
    names.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (std::int32_t i = 0; i < count; ++i) {
      const std::array<Value, 1> index{Value::lng(i)};
      const ObjectRef field = asObject(get(fields, u"Item", index));
      names.push_back(upperName(vb::toString(get(field, u"Name"), Locale())));
    }
    s.fieldNames = std::make_shared<const std::vector<std::u16string>>(std::move(names));
  } catch (...) {
    // Nothing may escape towards the host: the failure is left in ErrNum.
    Fault f = currentFault();
    s.errMsg = std::move(f.description);
    s.errNum = f.number;
  }
}

bool BasicEngine::isFieldName(std::u16string_view name) noexcept {
  State& s = *s_;
  if (!s.record) return false;
  try {
    const std::u16string wanted = upperName(name);
    const ObjectRef fields = fieldsOf(s.record);
    const std::int32_t count = vb::toLong(get(fields, u"Count"), Locale());
    for (std::int32_t i = 0; i < count; ++i) {
      const std::array<Value, 1> index{Value::lng(i)};
      const ObjectRef field = asObject(get(fields, u"Item", index));
      if (upperName(vb::toString(get(field, u"Name"), Locale())) == wanted) return true;
    }
  } catch (...) {
    (void)currentFault();  // a record that cannot answer has no such field
  }
  return false;
}

bool BasicEngine::isFieldNameByArr(std::u16string_view name) const noexcept {
  try {
    std::u16string wanted;
    upperNameInto(name, wanted);
    const auto& names = *s_->fieldNames;
    return std::find(names.begin(), names.end(), wanted) != names.end();
  } catch (...) {
    (void)currentFault();  // out of memory for the upper-cased name: no answer
  }
  return false;
}

Value BasicEngine::GetFieldValue(const Value& field) noexcept {
  Value result;
  guarded(*this, [&] {
    const ObjectRef f = fieldOf(s_->record, field);
    result = unwrap(f->getDefault({}));
  });
  return result;
}

bool BasicEngine::ChangeField(const Value& field, const Value& value) noexcept {
  return guarded(
      *this,
      [&] {
        const ObjectRef& record = requireObject(s_->record);
        (void)record->callMethod(u"Edit", {});  // a record already editable may refuse
        const ObjectRef f = fieldOf(record, field);
        unwrap(f->setProperty(u"Value", {}, value));
        unwrap(record->callMethod(u"Update", {}));
      },
      msg::kChangeFieldSource);
}

namespace {
bool callMove(BasicEngine& engine, const ObjectRef& record, std::u16string_view member) {
  return guarded(engine, [&] { unwrap(requireObject(record)->callMethod(member, {})); });
}

bool readFlag(BasicEngine& engine, const ObjectRef& record, std::u16string_view member) {
  bool flag = false;
  guarded(engine, [&] { flag = vb::toBoolean(get(record, member), engine.Locale()); });
  return flag;
}
}  // namespace

bool BasicEngine::MoveFirst() noexcept { return callMove(*this, s_->record, u"MoveFirst"); }
bool BasicEngine::MoveNext() noexcept { return callMove(*this, s_->record, u"MoveNext"); }
bool BasicEngine::MovePrevious() noexcept { return callMove(*this, s_->record, u"MovePrevious"); }
bool BasicEngine::MoveLast() noexcept { return callMove(*this, s_->record, u"MoveLast"); }
bool BasicEngine::BOF() noexcept { return readFlag(*this, s_->record, u"BOF"); }
bool BasicEngine::Eof() noexcept { return readFlag(*this, s_->record, u"EOF"); }

}  // namespace korvex
