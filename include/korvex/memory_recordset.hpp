// MemoryRecordset: a record set held in memory, for tests and for hosts
// without a database. It answers the late-bound members the engine uses on
// a record set, with the behaviour of a database cursor:
//
//   record set:  Fields, RecordCount, BOF, EOF (properties);
//                MoveFirst, MoveNext, MovePrevious, MoveLast, Edit, Update
//                (methods); its default member is Fields.Item(...)
//   Fields:      Count, Item(index from 0 | name) (default member)
//   Field:       Name, Value (read and write; default member)
//
// Member names and field names are matched case-insensitively. Moving past
// either end, or reading or writing a field with no current row, fails with
// 3021; an unknown field index or name fails with 3265.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "korvex/host_object.hpp"
#include "korvex/value.hpp"

namespace korvex {

class MemoryRecordset : public HostObject {
 public:
  /// Rows shorter than the field list are padded with Empty, longer ones
  /// cut. The cursor starts on the first row (BOF and EOF when empty).
  explicit MemoryRecordset(std::vector<std::u16string> fieldNames,
                           std::vector<std::vector<Value>> rows = {});

  static std::shared_ptr<MemoryRecordset> create(std::vector<std::u16string> fieldNames,
                                                 std::vector<std::vector<Value>> rows = {}) {
    return std::make_shared<MemoryRecordset>(std::move(fieldNames), std::move(rows));
  }

  /// Appends a row; the cursor stays where it is (a cursor at EOF stays at
  /// EOF, an empty set's cursor moves to the new first row).
  void addRow(std::vector<Value> row);

  std::size_t fieldCount() const noexcept;
  std::size_t rowCount() const noexcept;
  /// Zero-based row of the cursor; -1 before the first row (BOF), rowCount()
  /// after the last (EOF).
  std::ptrdiff_t position() const noexcept;
  bool bof() const noexcept;
  bool eof() const noexcept;
  /// Cell (row, column), both from 0; throws std::out_of_range outside.
  const Value& cell(std::size_t row, std::size_t column) const;
  /// How many times Update was called (a host can tell whether a field
  /// assignment was committed).
  std::size_t updateCount() const noexcept;
  /// Whether the field (row, column) was assigned since its row was added,
  /// so that a host writes back only what a script set; false outside.
  bool assigned(std::size_t row, std::size_t column) const noexcept;

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override;
  DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                             const Value& value) override;
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override;
  DispatchResult getDefault(std::span<const Value> args) override;

  struct Data;  // shared with the Fields and Field objects handed out

 private:
  std::shared_ptr<Data> data_;
  ObjectRef fields_;
};

}  // namespace korvex
