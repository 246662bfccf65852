// The in-memory record set as a late-bound host object.
#include "korvex/memory_recordset.hpp"

#include <gtest/gtest.h>

#include <array>

namespace korvex {
namespace {

constexpr std::int32_t kNoCurrent = 3021;
constexpr std::int32_t kNotFound = 3265;

std::shared_ptr<MemoryRecordset> sample() {
  return MemoryRecordset::create({u"Code", u"Amount"}, {{Value::string(u"A"), Value::lng(1)},
                                                        {Value::string(u"B"), Value::lng(2)},
                                                        {Value::string(u"C")}});
}

ObjectRef objectOf(const DispatchResult& r) {
  EXPECT_TRUE(r.ok()) << r.number;
  EXPECT_TRUE(r.value.isObject());
  return r.value.isObject() ? r.value.objectValue() : nullptr;
}

ObjectRef field(HostObject& rs, Value key) {
  const std::array<Value, 1> args{std::move(key)};
  const ObjectRef fields = objectOf(rs.getProperty(u"Fields", {}));
  return fields ? objectOf(fields->getProperty(u"Item", args)) : nullptr;
}

TEST(MemoryRecordset, FieldsCountNamesItemsAndDefaultsCaseInsensitively) {
  auto rs = sample();
  const ObjectRef fields = objectOf(rs->getProperty(u"FIELDS", {}));
  ASSERT_TRUE(fields);
  EXPECT_EQ(fields->getProperty(u"count", {}).value.longValue(), 2);
  const ObjectRef byIndex = field(*rs, Value::integer(1));
  const ObjectRef byName = field(*rs, Value::string(u"amount"));
  ASSERT_TRUE(byIndex && byName);
  EXPECT_EQ(byIndex->getProperty(u"Name", {}).value.stringValue(), u"Amount");
  EXPECT_EQ(byName->getProperty(u"VALUE", {}).value.longValue(), 1);
  EXPECT_EQ(byName->getDefault({}).value.longValue(), 1);
  EXPECT_EQ(rs->getProperty(u"RecordCount", {}).value.longValue(), 3);
  // A short row is padded with Empty.
  EXPECT_TRUE(rs->cell(2, 1).isEmpty());
  // The record's default member is Fields, with Item as its own default.
  const std::array<Value, 1> key{Value::string(u"code")};
  const ObjectRef viaRecord = objectOf(rs->getDefault(key));
  ASSERT_TRUE(viaRecord);
  EXPECT_EQ(viaRecord->getDefault({}).value.stringValue(), u"A");
  const ObjectRef defaultFields = objectOf(rs->getDefault({}));
  ASSERT_TRUE(defaultFields);
  const ObjectRef viaFields = objectOf(defaultFields->getDefault(key));
  ASSERT_TRUE(viaFields);
  EXPECT_EQ(viaFields->getProperty(u"Name", {}).value.stringValue(), u"Code");
}

TEST(MemoryRecordset, UnknownItemsAndMembersFail) {
  auto rs = sample();
  const ObjectRef fields = objectOf(rs->getProperty(u"Fields", {}));
  ASSERT_TRUE(fields);
  const Value keys[] = {Value::string(u"nope"), Value::lng(2), Value::lng(-1), Value::string(u"")};
  for (const Value& key : keys) {
    const std::array<Value, 1> args{key};
    EXPECT_EQ(fields->getProperty(u"Item", args).number, kNotFound);
  }
  EXPECT_EQ(fields->getProperty(u"Item", {}).number, kNotFound);

  const DispatchResult r = rs->callMethod(u"Delete", {});
  EXPECT_EQ(r.number, 438);
  EXPECT_EQ(r.description, u"对象不支持该属性或方法");
  EXPECT_EQ(rs->setProperty(u"EOF", {}, Value::boolean(true)).number, 438);
}

TEST(MemoryRecordset, MovesFollowACursor) {
  // Each step: the move, whether it succeeds, and BOF / EOF / position after.
  struct Step {
    const char16_t* move;
    bool ok;
    bool bof, eof;
    std::ptrdiff_t position;
  };
  const Step steps[] = {
      {u"MoveNext", true, false, false, 1},     {u"MoveNext", true, false, false, 2},
      {u"MoveNext", true, false, true, 3},      {u"MoveNext", false, false, true, 3},
      {u"MoveLast", true, false, false, 2},     {u"movefirst", true, false, false, 0},
      {u"MovePrevious", true, true, false, -1}, {u"MovePrevious", false, true, false, -1},
      {u"MOVENEXT", true, false, false, 0},
  };
  auto rs = sample();
  EXPECT_FALSE(rs->bof());
  EXPECT_FALSE(rs->eof());
  for (const Step& s : steps) {
    const DispatchResult r = rs->callMethod(s.move, {});
    EXPECT_EQ(r.ok(), s.ok) << toUtf8(s.move) << " to " << s.position;
    if (!r.ok()) {
      EXPECT_EQ(r.number, kNoCurrent);
    }
    EXPECT_EQ(rs->getProperty(u"BOF", {}).value.booleanValue(), s.bof);
    EXPECT_EQ(rs->callMethod(u"EOF", {}).value.booleanValue(), s.eof);
    EXPECT_EQ(rs->position(), s.position);
  }
}

TEST(MemoryRecordset, EmptySetIsBothBofAndEof) {
  auto rs = MemoryRecordset::create({u"X"});
  EXPECT_TRUE(rs->bof());
  EXPECT_TRUE(rs->eof());
  for (const char16_t* move : {u"MoveFirst", u"MoveLast", u"MoveNext", u"MovePrevious"}) {
    EXPECT_EQ(rs->callMethod(move, {}).number, kNoCurrent) << toUtf8(move);
  }
  const ObjectRef x = field(*rs, Value::string(u"x"));
  ASSERT_TRUE(x);
  EXPECT_EQ(x->getProperty(u"Value", {}).number, kNoCurrent);

  rs->addRow({Value::lng(5)});
  EXPECT_FALSE(rs->eof());
  EXPECT_EQ(x->getProperty(u"Value", {}).value.longValue(), 5);
}

TEST(MemoryRecordset, WritesGoToTheCurrentRow) {
  auto rs = sample();
  ASSERT_TRUE(rs->callMethod(u"MoveNext", {}).ok());
  const ObjectRef amount = field(*rs, Value::string(u"Amount"));
  ASSERT_TRUE(amount);
  EXPECT_TRUE(rs->callMethod(u"Edit", {}).ok());
  EXPECT_TRUE(amount->setProperty(u"value", {}, Value::lng(20)).ok());
  EXPECT_TRUE(rs->callMethod(u"Update", {}).ok());
  EXPECT_EQ(rs->cell(1, 1).longValue(), 20);
  EXPECT_EQ(rs->cell(0, 1).longValue(), 1);
  EXPECT_EQ(rs->updateCount(), 1u);
  EXPECT_EQ(amount->setProperty(u"Name", {}, Value::string(u"x")).number, 438);

  ASSERT_TRUE(rs->callMethod(u"MoveLast", {}).ok());
  ASSERT_TRUE(rs->callMethod(u"MoveNext", {}).ok());
  EXPECT_EQ(amount->setProperty(u"Value", {}, Value::lng(1)).number, kNoCurrent);
  EXPECT_EQ(rs->callMethod(u"Edit", {}).number, kNoCurrent);
}

TEST(MemoryRecordset, ObjectsHandedOutOutliveTheRecordset) {
  ObjectRef fields, code;
  {
    auto rs = sample();
    fields = objectOf(rs->getProperty(u"Fields", {}));
    code = field(*rs, Value::lng(0));
  }
  ASSERT_TRUE(fields && code);
  EXPECT_EQ(code->getProperty(u"Value", {}).value.stringValue(), u"A");
  const std::array<Value, 1> key{Value::lng(1)};
  const ObjectRef amount = objectOf(fields->getProperty(u"Item", key));
  ASSERT_TRUE(amount);
  EXPECT_EQ(amount->getProperty(u"Value", {}).value.longValue(), 1);
}

// The same column is always the same field object, and whatever a host
// keeps keeps the data alive, only as long as it is kept.
TEST(MemoryRecordset, FieldsAreOneObjectEachAndHoldTheDataNoLongerThanKept) {
  const auto marker = MemoryRecordset::create({u"X"});  // any object a row can hold
  std::weak_ptr<HostObject> set, fields, code;
  ObjectRef kept;
  {
    auto rs =
        MemoryRecordset::create({u"Code", u"Tag"}, {{Value::string(u"A"), Value::object(marker)}});
    kept = field(*rs, Value::lng(0));
    EXPECT_EQ(field(*rs, Value::string(u"CODE")), kept);
    EXPECT_NE(field(*rs, Value::lng(1)), kept);
    set = rs;
    fields = objectOf(rs->getProperty(u"Fields", {}));
    code = kept;
  }
  ASSERT_TRUE(kept);
  EXPECT_TRUE(set.expired());
  EXPECT_EQ(kept->getProperty(u"Value", {}).value.stringValue(), u"A");
  EXPECT_TRUE(kept->setProperty(u"Value", {}, Value::string(u"B")).ok());
  EXPECT_EQ(kept->getDefault({}).value.stringValue(), u"B");
  EXPECT_EQ(marker.use_count(), 2);  // the row still holds it

  kept.reset();
  EXPECT_TRUE(fields.expired());
  EXPECT_TRUE(code.expired());
  EXPECT_EQ(marker.use_count(), 1);  // the rows are gone
}

}  // namespace
}  // namespace korvex
