// The writer of a batch: puts the rows' assignments back through a record
// set of the record query on the writing connection, so that a row goes
// back to its table exactly as a script's own Update would, all inside the
// transaction opened before the query ran (and ended by the given commit
// or rollback).
#pragma once

#include <functional>

#include "korvex/batch.hpp"

namespace korvex {

class RecordsetWriter final : public BatchWriter {
 public:
  RecordsetWriter(ObjectRef recordset, std::function<DatabaseResult<>()> commit,
                  std::function<void()> rollback)
      : recordset_(std::move(recordset)),
        commit_(std::move(commit)),
        rollback_(std::move(rollback)) {}
  ~RecordsetWriter() override { rollback(); }
  RecordsetWriter(const RecordsetWriter&) = delete;
  RecordsetWriter& operator=(const RecordsetWriter&) = delete;

  DispatchResult write(std::size_t row, std::span<const FieldWrite> writes,
                       std::size_t& changed) override;
  DispatchResult commit() override;
  void rollback() noexcept override;

 private:
  ObjectRef recordset_;
  std::function<DatabaseResult<>()> commit_;
  std::function<void()> rollback_;
  std::size_t position_ = 0;
  bool open_ = true;
};

}  // namespace korvex
