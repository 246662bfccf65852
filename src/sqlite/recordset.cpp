// The database record set: the rows of one result held in memory (a
// client-side, static cursor), with writes of the current row going back
// to the row's table on Update.
#include <algorithm>
#include <deque>
#include <string>

#include "host/collection.hpp"
#include "host/record_field.hpp"
#include "host/recordset_errors.hpp"
#include "host/row_cursor.hpp"
#include "sqlite/field_types.hpp"
#include "sqlite/objects.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"
#include "values/text_scan.hpp"

namespace korvex::ds {

using host::equalsNoCase;
using host::noCurrentRecord;

struct RecordsetData : host::RowCursor {
  bool open = false;
  std::vector<Column> columns;
  std::shared_ptr<Backend> backend;
  // The columns that tell the rows of their table apart and each row's
  // values of them as stored (empty: the rows cannot be written back).
  std::vector<std::u16string> identity;
  std::vector<std::vector<SqlCell>> rowIdentities;
  // The current row as it was before its first change; empty while the row
  // has no pending change.
  std::vector<Value> original;
  std::vector<bool> changed;
  std::int32_t cursorLocation = 2;
  std::int32_t cursorType = 0;
  std::int32_t lockType = 1;
  std::deque<host::RecordField<RecordsetData>> fields;  // one per column

  void revert() {
    if (!original.empty() && hasCurrent()) current() = original;
    original.clear();
    changed.assign(columns.size(), false);
  }
  DispatchResult update();
  DispatchResult getField(std::size_t column, std::u16string_view name);
  DispatchResult setField(std::size_t column, std::u16string_view name, const Value& value);
};

namespace {

DispatchResult faultResult(const vb::RuntimeError& e) {
  std::u16string text = e.description();
  if (text.empty()) text = std::u16string(vb::runtimeErrorText(e.number()));
  return DispatchResult::failure(e.number(), std::move(text));
}

std::u16string quoted(std::u16string_view name) { return doubleQuoted(name); }

DispatchResult untraceable() {
  return providerError(u"无法更新: 记录集的行不能追溯到同一个表的行 (联接或汇总的结果)。");
}

}  // namespace

// The changed fields of the current row go back to the one row of the one
// table it was read from, found by that row's identity as stored. Rows the
// database cannot tell apart (a join, a sum, a view) are never written: a
// guess could land a payroll value on another employee's row.
DispatchResult RecordsetData::update() {
  if (original.empty()) return DispatchResult::success();
  const std::u16string table = columns.empty() ? u"" : columns[0].table;
  const bool traced =
      backend && !table.empty() && !identity.empty() && rowIdentities.size() == rows.size() &&
      std::all_of(columns.begin(), columns.end(),
                  [&](const Column& c) { return c.table == table && !c.origin.empty(); });
  if (!traced) {
    revert();
    return untraceable();
  }
  const Locale& loc = Locale::zhCN();
  try {
    std::vector<SqlParameter> params;
    std::u16string sql = u"UPDATE " + quoted(table) + u" SET ";
    for (std::size_t i = 0; i < columns.size(); ++i) {
      // A value put back as it was is not written: writing it could only
      // change how it is stored.
      if (!changed[i] || sameValue(current()[i], original[i])) continue;
      const Value stored = storedValue(columns[i].type, current()[i], loc);
      if (!exactIn(columns[i].type, original[i]) || !exactIn(columns[i].type, stored)) {
        // A number computed from a neighbour of the stored one, or one that
        // would store a neighbour of itself.
        revert();
        return providerError(u"无法更新: 字段 " + columns[i].name +
                             u" 的值超出脚本数值能精确表示的范围 (±2^53)。");
      }
      if (!params.empty()) sql += u", ";
      sql += quoted(columns[i].origin) + u" = " + backend->placeholder(params.size());
      params.push_back(writtenParameter(columns[i].type, stored));
    }
    if (!params.empty()) {
      std::vector<SqlCell>& id = rowIdentities[static_cast<std::size_t>(position)];
      std::u16string returning;
      for (std::size_t i = 0; i < identity.size(); ++i) {
        sql += (i == 0 ? u" WHERE " : u" AND ") + quoted(identity[i]) + u" = " +
               backend->placeholder(params.size());
        params.push_back(id[i]);
        returning += (i == 0 ? u" RETURNING " : u", ") + quoted(identity[i]);
      }
      // A changed key moves the row: the next write finds it where it is now.
      ResultSet done = backend->runExact(sql + returning, params, identity.size());
      if (done.rowIdentities.empty()) {
        revert();
        return providerError(u"无法更新: 找不到要更新的行, 它可能已被删除或修改。");
      }
      id = std::move(done.rowIdentities.front());
    }
  } catch (const DbError& e) {
    revert();
    return providerError(e.message());
  } catch (const vb::RuntimeError& e) {
    revert();
    return faultResult(e);
  }
  original.clear();
  changed.assign(columns.size(), false);
  return DispatchResult::success();
}

DispatchResult RecordsetData::getField(std::size_t column, std::u16string_view name) {
  const Column& c = columns[column];
  if (equalsNoCase(name, u"Name")) return DispatchResult::success(Value::string(c.name));
  if (equalsNoCase(name, u"Type")) return DispatchResult::success(Value::lng(c.type));
  if (equalsNoCase(name, u"Value") || equalsNoCase(name, u"OriginalValue")) {
    if (!open) return objectClosed();
    if (!hasCurrent()) return noCurrentRecord();
    if (equalsNoCase(name, u"OriginalValue") && !original.empty()) {
      return DispatchResult::success(original[column]);
    }
    return DispatchResult::success(current()[column]);
  }
  return memberNotFound(name);
}

// The value is converted as it would be stored, so a field holds what its
// column can keep (a Date field turns text into a Date or refuses).
DispatchResult RecordsetData::setField(std::size_t column, std::u16string_view name,
                                       const Value& value) {
  if (!equalsNoCase(name, u"Value")) return memberNotFound(name);
  if (!open) return objectClosed();
  if (!hasCurrent()) return noCurrentRecord();
  const Column& c = columns[column];
  Value typed;
  try {
    typed = fieldValue(c.type, storedValue(c.type, value, Locale::zhCN()));
  } catch (const vb::RuntimeError& e) {
    return faultResult(e);
  }
  if (original.empty()) {
    original = current();
    changed.assign(columns.size(), false);
  }
  current()[column] = std::move(typed);
  changed[column] = true;
  return DispatchResult::success();
}

namespace {

class FieldsObject final : public NamedCollection {
 public:
  explicit FieldsObject(std::shared_ptr<RecordsetData> data) : data_(std::move(data)) {}

 protected:
  std::size_t count() const override { return data_->columns.size(); }
  std::u16string_view nameAt(std::size_t i) const override { return data_->columns[i].name; }
  ObjectRef itemAt(std::size_t i) override { return host::fieldOf(data_, i); }

 private:
  std::shared_ptr<RecordsetData> data_;
};

std::optional<std::int32_t> optionalLong(std::span<const Value> args, std::size_t i) {
  if (i >= args.size() || args[i].isEmpty()) return std::nullopt;
  try {
    const std::int32_t n = vb::toLong(args[i], Locale::zhCN());
    if (n == -1) return std::nullopt;  // "unspecified"
    return n;
  } catch (const vb::RuntimeError&) {
    return std::nullopt;
  }
}

}  // namespace

Recordset::Recordset() : data_(std::make_shared<RecordsetData>()) {
  fields_ = std::make_shared<FieldsObject>(data_);
}

Recordset::Recordset(ResultSet result, std::shared_ptr<Backend> backend) : Recordset() {
  RecordsetData& d = *data_;
  d.open = result.hasRows;
  d.columns = std::move(result.columns);
  d.rows = std::move(result.rows);
  d.backend = std::move(backend);
  d.identity = std::move(result.identity);
  d.rowIdentities = std::move(result.rowIdentities);
  d.changed.assign(d.columns.size(), false);
  for (std::size_t i = 0; i < d.columns.size(); ++i) d.fields.emplace_back(d, i);
}

void Recordset::adopt(Recordset& other) {
  const std::int32_t location = data_->cursorLocation;
  const std::int32_t cursor = data_->cursorType;
  const std::int32_t lock = data_->lockType;
  data_ = other.data_;
  fields_ = other.fields_;
  data_->cursorLocation = location;
  data_->cursorType = cursor;
  data_->lockType = lock;
}

DispatchResult Recordset::open(std::span<const Value> args) {
  if (data_->open) return alreadyOpen();
  if (args.size() < 2 || !args[1].isObject() || !args[1].objectValue()) {
    return connectionUnusable();
  }
  // The statement runs on the given connection, as its Execute would run it.
  DispatchResult r = args[1].objectValue()->callMethod(u"Execute", args.subspan(0, 1));
  if (!r.ok()) return r;
  auto* rs = r.value.isObject() ? dynamic_cast<Recordset*>(r.value.objectValue().get()) : nullptr;
  if (rs == nullptr) return providerError(u"连接没有返回记录集。");
  adopt(*rs);
  if (const auto cursor = optionalLong(args, 2)) data_->cursorType = *cursor;
  if (const auto lock = optionalLong(args, 3)) data_->lockType = *lock;
  return DispatchResult::success();
}

DispatchResult Recordset::move(std::u16string_view name) {
  RecordsetData& d = *data_;
  if (!d.open) return objectClosed();
  // Leaving a changed row writes it first.
  if (DispatchResult written = d.update(); !written.ok()) return written;
  return d.move(name);
}

DispatchResult Recordset::getProperty(std::u16string_view name, std::span<const Value> args) {
  RecordsetData& d = *data_;
  if (equalsNoCase(name, u"State")) return DispatchResult::success(Value::lng(d.open ? 1 : 0));
  if (equalsNoCase(name, u"CursorLocation"))
    return DispatchResult::success(Value::lng(d.cursorLocation));
  if (equalsNoCase(name, u"CursorType")) return DispatchResult::success(Value::lng(d.cursorType));
  if (equalsNoCase(name, u"LockType")) return DispatchResult::success(Value::lng(d.lockType));
  if (equalsNoCase(name, u"Fields")) return host::collectionOrItem(fields_, args);
  const bool eof = equalsNoCase(name, u"EOF");
  if (eof || equalsNoCase(name, u"BOF") || equalsNoCase(name, u"RecordCount") ||
      equalsNoCase(name, u"AbsolutePosition")) {
    if (!d.open) return objectClosed();
    if (eof) return DispatchResult::success(Value::boolean(d.eof()));
    if (equalsNoCase(name, u"BOF")) return DispatchResult::success(Value::boolean(d.bof()));
    if (equalsNoCase(name, u"RecordCount")) {
      return DispatchResult::success(Value::lng(static_cast<std::int32_t>(d.rows.size())));
    }
    return DispatchResult::success(
        Value::lng(d.hasCurrent() ? static_cast<std::int32_t>(d.position + 1) : -1));
  }
  return memberNotFound(name);
}

DispatchResult Recordset::setProperty(std::u16string_view name, std::span<const Value>,
                                      const Value& value) {
  std::int32_t* target = equalsNoCase(name, u"CursorLocation") ? &data_->cursorLocation
                         : equalsNoCase(name, u"CursorType")   ? &data_->cursorType
                         : equalsNoCase(name, u"LockType")     ? &data_->lockType
                                                               : nullptr;
  if (target == nullptr) return memberNotFound(name);
  try {
    *target = vb::toLong(value, Locale::zhCN());
  } catch (const vb::RuntimeError& e) {
    return faultResult(e);
  }
  return DispatchResult::success();
}

DispatchResult Recordset::callMethod(std::u16string_view name, std::span<const Value> args) {
  RecordsetData& d = *data_;
  if (host::RowCursor::isMove(name)) return move(name);
  if (equalsNoCase(name, u"Open")) return open(args);
  if (equalsNoCase(name, u"Close")) {
    if (!d.open) return objectClosed();
    d.revert();
    d.open = false;
    d.rows.clear();
    return DispatchResult::success();
  }
  const bool edit = equalsNoCase(name, u"Edit");
  if (edit || equalsNoCase(name, u"Update") || equalsNoCase(name, u"CancelUpdate")) {
    if (!d.open) return objectClosed();
    if (!d.hasCurrent()) return noCurrentRecord();
    if (edit) return DispatchResult::success();  // fields are written straight into the row
    if (equalsNoCase(name, u"Update")) return d.update();
    d.revert();
    return DispatchResult::success();
  }
  return getProperty(name, args);
}

DispatchResult Recordset::getDefault(std::span<const Value> args) {
  return getProperty(u"Fields", args);
}

}  // namespace korvex::ds
