#include "korvex/memory_recordset.hpp"

#include <deque>
#include <stdexcept>

#include "host/collection.hpp"
#include "host/record_field.hpp"
#include "host/recordset_errors.hpp"
#include "host/row_cursor.hpp"

namespace korvex {

using host::equalsNoCase;
using host::noCurrentRecord;

struct MemoryRecordset::Data : host::RowCursor {
  std::vector<std::u16string> names;
  std::vector<std::vector<bool>> assigned;  // per row, per field
  std::size_t updates = 0;
  std::deque<host::RecordField<Data>> fields;  // one per name

  DispatchResult getField(std::size_t column, std::u16string_view name) {
    if (equalsNoCase(name, u"Name")) return DispatchResult::success(Value::string(names[column]));
    if (equalsNoCase(name, u"Value")) {
      if (!hasCurrent()) return noCurrentRecord();
      return DispatchResult::success(current()[column]);
    }
    return memberNotFound(name);
  }
  DispatchResult setField(std::size_t column, std::u16string_view name, const Value& value) {
    if (!equalsNoCase(name, u"Value")) return memberNotFound(name);
    if (!hasCurrent()) return noCurrentRecord();
    const auto row = static_cast<std::size_t>(position);
    rows[row][column] = value;
    assigned[row][column] = true;
    return DispatchResult::success();
  }
};

namespace {

using Data = MemoryRecordset::Data;

class FieldsObject : public NamedCollection {
 public:
  explicit FieldsObject(std::shared_ptr<Data> data) : data_(std::move(data)) {}

 protected:
  std::size_t count() const override { return data_->names.size(); }
  std::u16string_view nameAt(std::size_t i) const override { return data_->names[i]; }
  ObjectRef itemAt(std::size_t i) override { return host::fieldOf(data_, i); }

 private:
  std::shared_ptr<Data> data_;
};

}  // namespace

MemoryRecordset::MemoryRecordset(std::vector<std::u16string> fieldNames,
                                 std::vector<std::vector<Value>> rows)
    : data_(std::make_shared<Data>()) {
  data_->names = std::move(fieldNames);
  for (std::size_t i = 0; i < data_->names.size(); ++i) data_->fields.emplace_back(*data_, i);
  fields_ = std::make_shared<FieldsObject>(data_);
  for (auto& row : rows) addRow(std::move(row));
  data_->position = 0;
}

void MemoryRecordset::addRow(std::vector<Value> row) {
  row.resize(data_->names.size());
  const bool wasEmpty = data_->rows.empty();
  data_->rows.push_back(std::move(row));
  data_->assigned.emplace_back(data_->names.size(), false);
  if (wasEmpty) data_->position = 0;
}

std::size_t MemoryRecordset::fieldCount() const noexcept { return data_->names.size(); }
std::size_t MemoryRecordset::rowCount() const noexcept { return data_->rows.size(); }
std::ptrdiff_t MemoryRecordset::position() const noexcept { return data_->position; }
bool MemoryRecordset::bof() const noexcept { return data_->bof(); }
bool MemoryRecordset::eof() const noexcept { return data_->eof(); }
std::size_t MemoryRecordset::updateCount() const noexcept { return data_->updates; }

bool MemoryRecordset::assigned(std::size_t row, std::size_t column) const noexcept {
  return row < data_->assigned.size() && column < data_->assigned[row].size() &&
         data_->assigned[row][column];
}

const Value& MemoryRecordset::cell(std::size_t row, std::size_t column) const {
  return data_->rows.at(row).at(column);
}

DispatchResult MemoryRecordset::getProperty(std::u16string_view name, std::span<const Value> args) {
  if (equalsNoCase(name, u"Fields")) return host::collectionOrItem(fields_, args);
  if (equalsNoCase(name, u"BOF")) return DispatchResult::success(Value::boolean(data_->bof()));
  if (equalsNoCase(name, u"EOF")) return DispatchResult::success(Value::boolean(data_->eof()));
  if (equalsNoCase(name, u"RecordCount")) {
    return DispatchResult::success(Value::lng(static_cast<std::int32_t>(data_->rows.size())));
  }
  return memberNotFound(name);
}

DispatchResult MemoryRecordset::setProperty(std::u16string_view name, std::span<const Value>,
                                            const Value&) {
  return memberNotFound(name);
}

DispatchResult MemoryRecordset::callMethod(std::u16string_view name, std::span<const Value> args) {
  Data& d = *data_;
  if (host::RowCursor::isMove(name)) return d.move(name);
  if (equalsNoCase(name, u"Edit")) {
    // Values are written straight into the row; Edit only needs one.
    return d.hasCurrent() ? DispatchResult::success() : noCurrentRecord();
  }
  if (equalsNoCase(name, u"Update")) {
    if (!d.hasCurrent()) return noCurrentRecord();
    ++d.updates;
    return DispatchResult::success();
  }
  // Properties may be read with a call as well, as late binding allows.
  return getProperty(name, args);
}

DispatchResult MemoryRecordset::getDefault(std::span<const Value> args) {
  return getProperty(u"Fields", args);
}

}  // namespace korvex
