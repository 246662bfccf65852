#include "support.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

using testing::errorOf;
const Locale& zh = Locale::zhCN();

TEST(CompareValues, OrderingTable) {
  const Value one = Value::integer(1), two = Value::integer(2), five = Value::integer(5);
  const struct {
    Value l, r;
    int expected;
    // clang-format off
  } cases[] = {
      // numbers of any type by value; True is -1, a Date its serial
      {one, two, -1}, {two, Value::dbl(2.0), 0}, {Value::lng(3), Value::dbl(2.5), 1},
      {Value::currency({1}), Value::currency({2}), -1}, {Value::currency({20000}), two, 0},
      {Value::boolean(true), Value::integer(-1), 0}, {Value::date(38412), Value::lng(38412), 0},
      // strings by code unit, a prefix first; any number below any string
      {Value::string(u"ABC"), Value::string(u"abc"), -1},
      {Value::string(u"工资"), Value::string(u"工资"), 0},
      {Value::string(u"ab"), Value::string(u"abc"), -1}, {five, Value::string(u"1"), -1},
      {Value::string(u""), Value::dbl(1e300), 1},
      // Empty is 0 beside a number and "" beside a string
      {Value(), Value::integer(0), 0}, {Value(), Value::dbl(0.5), -1},
      {Value(), Value::string(u""), 0}, {Value(), Value::string(u"a"), -1},
      {Value::string(u"a"), Value(), 1}, {Value(), Value(), 0},
  };
  // clang-format on
  for (const auto& c : cases) {
    const std::string row = testing::describe(c.l) + " vs " + testing::describe(c.r);
    const auto r = vb::compareValues(c.l, c.r, zh);
    ASSERT_TRUE(r.has_value()) << row;
    EXPECT_EQ(*r, c.expected) << row;
  }
}

TEST(Compare, OperatorsGiveBooleansOrNull) {
  const Value one = Value::integer(1);
  const Value two = Value::dbl(2);
  const struct {
    vb::CompareOp op;
    bool lessCase, equalCase;  // op(1, 2), op(1, 1)
  } cases[] = {
      {vb::CompareOp::Less, true, false},     {vb::CompareOp::LessEqual, true, true},
      {vb::CompareOp::Greater, false, false}, {vb::CompareOp::GreaterEqual, false, true},
      {vb::CompareOp::Equal, false, true},    {vb::CompareOp::NotEqual, true, false},
  };
  for (const auto& c : cases) {
    const Value lt = vb::compare(c.op, one, two, zh);
    ASSERT_EQ(lt.type(), VarType::Boolean);
    EXPECT_EQ(lt.booleanValue(), c.lessCase);
    EXPECT_EQ(vb::compare(c.op, one, one, zh).booleanValue(), c.equalCase);
    EXPECT_TRUE(vb::compare(c.op, Value::null(), one, zh).isNull());
    EXPECT_TRUE(vb::compare(c.op, one, Value::null(), zh).isNull());
  }
  // A string and a number are never equal.
  EXPECT_FALSE(vb::compare(vb::CompareOp::Equal, Value::string(u"1"), one, zh).booleanValue());
}

TEST(Compare, ObjectsAndArraysMismatch) {
  EXPECT_EQ(errorOf([] { vb::compareValues(Value::object(nullptr), Value::integer(1), zh); }), 13);
  EXPECT_EQ(errorOf([] { vb::compareValues(Value::string(u"a"), Value::array(Array()), zh); }), 13);
}

}  // namespace
}  // namespace korvex
