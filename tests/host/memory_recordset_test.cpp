// What only the in-memory record set has: rows added to an empty set, short
// rows padded, writes kept in place and updates counted. The moves, lookups,
// writes and field lifetimes it shares with the database record set are
// tested on both in tests/sqlite/recordsets_test.cpp.
#include "korvex/memory_recordset.hpp"

#include <gtest/gtest.h>

#include <array>

namespace korvex {
namespace {

TEST(MemoryRecordset, RowsAddedPaddedAndWrittenInPlace) {
  auto rs = MemoryRecordset::create({u"Code", u"Amount"});
  const std::array<Value, 1> key{Value::string(u"amount")};
  const ObjectRef amount = rs->getProperty(u"Fields", key).value.objectValue();
  ASSERT_TRUE(amount);
  EXPECT_EQ(amount->getProperty(u"Value", {}).number, 3021);
  rs->addRow({Value::string(u"A"), Value::lng(1)});  // the cursor moves to the new row
  EXPECT_EQ(amount->getProperty(u"Value", {}).value.longValue(), 1);
  rs->addRow({Value::string(u"B")});
  EXPECT_TRUE(rs->cell(1, 1).isEmpty());  // a short row is padded with Empty

  ASSERT_TRUE(rs->callMethod(u"MoveNext", {}).ok());
  EXPECT_TRUE(amount->setProperty(u"Value", {}, Value::lng(20)).ok());
  EXPECT_TRUE(rs->callMethod(u"Update", {}).ok());
  EXPECT_EQ(rs->cell(1, 1).longValue(), 20);
  EXPECT_EQ(rs->cell(0, 1).longValue(), 1);
  EXPECT_EQ(rs->updateCount(), 1u);
}

}  // namespace
}  // namespace korvex
