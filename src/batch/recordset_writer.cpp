#include "recordset_writer.hpp"

#include <array>

#include "korvex/convert.hpp"

namespace korvex {

namespace {

// A field that would not take its value: the failure says which field and
// what value.
DispatchResult failedField(const DispatchResult& item, const Value& value, DispatchResult failure) {
  std::u16string name = u"?";
  if (item.ok()) {
    const DispatchResult n = item.value.objectValue()->getProperty(u"Name", {});
    if (n.ok() && n.value.isString()) name = n.value.stringValue();
  }
  const Converted<std::u16string> text = toText(value);
  failure.description = u"字段 " + name + u" = " +
                        (text ? *text.value : std::u16string(u"(无法显示的值)")) + u": " +
                        failure.description;
  return failure;
}

}  // namespace

DispatchResult RecordsetWriter::write(std::size_t row, std::span<const FieldWrite> writes,
                                      std::size_t& changed) {
  for (; position_ < row; ++position_) {
    if (DispatchResult moved = recordset_->callMethod(u"MoveNext", {}); !moved.ok()) {
      return moved;
    }
  }
  const DispatchResult fields = recordset_->getProperty(u"Fields", {});
  if (!fields.ok()) return fields;
  changed = 0;
  for (const FieldWrite& w : writes) {
    const std::array<Value, 1> index{Value::lng(static_cast<std::int32_t>(w.column))};
    const DispatchResult item = fields.value.objectValue()->getProperty(u"Item", index);
    DispatchResult set = item;
    if (item.ok()) set = item.value.objectValue()->setProperty(u"Value", {}, w.value);
    if (!set.ok()) {
      (void)recordset_->callMethod(u"CancelUpdate", {});
      return failedField(item, w.value, std::move(set));
    }
    // Counted as the field keeps it: 25 put into a money field holding 25
    // changes nothing.
    const ObjectRef field = item.value.objectValue();
    const DispatchResult now = field->getProperty(u"Value", {});
    const DispatchResult before = field->getProperty(u"OriginalValue", {});
    if (!now.ok() || !before.ok() || !sameValue(now.value, before.value)) ++changed;
  }
  return recordset_->callMethod(u"Update", {});
}

DispatchResult RecordsetWriter::commit() {
  if (!open_) return DispatchResult::success();
  if (const DatabaseResult<> done = commit_(); !done.ok()) return done.error().dispatchResult();
  open_ = false;
  return DispatchResult::success();
}

void RecordsetWriter::rollback() noexcept {
  if (!open_) return;
  open_ = false;
  rollback_();
}

}  // namespace korvex
