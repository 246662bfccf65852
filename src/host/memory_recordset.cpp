#include "korvex/memory_recordset.hpp"

#include <stdexcept>

#include "host/collection.hpp"
#include "host/recordset_errors.hpp"
#include "values/ops.hpp"

namespace korvex {

using host::itemNotFound;
using host::noCurrentRecord;
using host::sameName;

struct MemoryRecordset::Data {
  std::vector<std::u16string> names;
  std::vector<std::vector<Value>> rows;
  std::vector<std::vector<bool>> assigned;  // per row, per field
  std::ptrdiff_t position = 0;
  std::size_t updates = 0;
  std::vector<ObjectRef> fieldObjects;

  bool hasCurrent() const noexcept {
    return position >= 0 && static_cast<std::size_t>(position) < rows.size();
  }
  bool bof() const noexcept { return rows.empty() || position < 0; }
  bool eof() const noexcept {
    return rows.empty() || position >= static_cast<std::ptrdiff_t>(rows.size());
  }
};

namespace {

using Data = MemoryRecordset::Data;

class FieldObject : public HostObject {
 public:
  FieldObject(std::shared_ptr<Data> data, std::size_t column)
      : data_(std::move(data)), column_(column) {}

  DispatchResult getProperty(std::u16string_view name, std::span<const Value>) override {
    if (sameName(name, u"Name"))
      return DispatchResult::success(Value::string(data_->names[column_]));
    if (sameName(name, u"Value")) {
      if (!data_->hasCurrent()) return noCurrentRecord();
      return DispatchResult::success(
          data_->rows[static_cast<std::size_t>(data_->position)][column_]);
    }
    return memberNotFound(name);
  }
  DispatchResult setProperty(std::u16string_view name, std::span<const Value>,
                             const Value& value) override {
    if (!sameName(name, u"Value")) return memberNotFound(name);
    if (!data_->hasCurrent()) return noCurrentRecord();
    const auto row = static_cast<std::size_t>(data_->position);
    data_->rows[row][column_] = value;
    data_->assigned[row][column_] = true;
    return DispatchResult::success();
  }
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override {
    return getProperty(name, args);
  }

 private:
  std::shared_ptr<Data> data_;
  std::size_t column_;
};

class FieldsObject : public HostCollection {
 public:
  explicit FieldsObject(std::shared_ptr<Data> data) : data_(std::move(data)) {}

  DispatchResult getDefault(std::span<const Value> args) override { return item(args); }

 protected:
  std::size_t count() const override { return data_->names.size(); }

 private:
  DispatchResult item(std::span<const Value> args) {
    if (args.size() != 1) return itemNotFound();
    const Value& key = args[0];
    if (key.isString()) {
      for (std::size_t i = 0; i < data_->names.size(); ++i) {
        if (sameName(data_->names[i], key.stringValue())) {
          return DispatchResult::success(Value::object(fieldObject(i)));
        }
      }
      return itemNotFound();
    }
    std::int32_t index = 0;
    try {
      index = vb::toLong(key, Locale::zhCN());
    } catch (const vb::RuntimeError&) {
      return itemNotFound();
    }
    if (index < 0 || static_cast<std::size_t>(index) >= data_->names.size()) return itemNotFound();
    return DispatchResult::success(Value::object(fieldObject(static_cast<std::size_t>(index))));
  }

  // The cached field object; a fresh one once the record set itself is gone
  // (its cache is cleared then) while this collection lives on.
  ObjectRef fieldObject(std::size_t i) {
    if (i < data_->fieldObjects.size()) return data_->fieldObjects[i];
    return std::make_shared<FieldObject>(data_, i);
  }

  std::shared_ptr<Data> data_;
};

}  // namespace

MemoryRecordset::MemoryRecordset(std::vector<std::u16string> fieldNames,
                                 std::vector<std::vector<Value>> rows)
    : data_(std::make_shared<Data>()) {
  data_->names = std::move(fieldNames);
  for (std::size_t i = 0; i < data_->names.size(); ++i) {
    data_->fieldObjects.push_back(std::make_shared<FieldObject>(data_, i));
  }
  fields_ = std::make_shared<FieldsObject>(data_);
  for (auto& row : rows) addRow(std::move(row));
  data_->position = 0;
}

MemoryRecordset::~MemoryRecordset() {
  // The field objects point back at the shared data; break the cycle.
  data_->fieldObjects.clear();
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
  if (sameName(name, u"Fields")) {
    if (args.empty()) return DispatchResult::success(Value::object(fields_));
    return fields_->getDefault(args);
  }
  if (sameName(name, u"BOF")) return DispatchResult::success(Value::boolean(data_->bof()));
  if (sameName(name, u"EOF")) return DispatchResult::success(Value::boolean(data_->eof()));
  if (sameName(name, u"RecordCount")) {
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
  const auto rows = static_cast<std::ptrdiff_t>(d.rows.size());
  if (sameName(name, u"MoveFirst") || sameName(name, u"MoveLast")) {
    if (d.rows.empty()) return noCurrentRecord();
    d.position = sameName(name, u"MoveFirst") ? 0 : rows - 1;
    return DispatchResult::success();
  }
  if (sameName(name, u"MoveNext")) {
    if (d.eof()) return noCurrentRecord();
    ++d.position;
    return DispatchResult::success();
  }
  if (sameName(name, u"MovePrevious")) {
    if (d.bof()) return noCurrentRecord();
    --d.position;
    return DispatchResult::success();
  }
  if (sameName(name, u"Edit")) {
    // Values are written straight into the row; Edit only needs one.
    return d.hasCurrent() ? DispatchResult::success() : noCurrentRecord();
  }
  if (sameName(name, u"Update")) {
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
