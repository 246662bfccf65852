#include "support.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

using testing::errorOf;
const Locale& zh = Locale::zhCN();

TEST(CompareValues, OrderingTable) {
  const struct {
    const char* name;
    Value l, r;
    int expected;
  } cases[] = {
      {"ints", Value::integer(1), Value::integer(2), -1},
      {"int vs double", Value::integer(2), Value::dbl(2.0), 0},
      {"long vs double", Value::lng(3), Value::dbl(2.5), 1},
      {"currency vs currency", Value::currency({1}), Value::currency({2}), -1},
      {"currency vs int", Value::currency({20000}), Value::integer(2), 0},
      {"bool is -1", Value::boolean(true), Value::integer(-1), 0},
      {"date vs number", Value::date(38412), Value::lng(38412), 0},
      {"strings binary", Value::string(u"ABC"), Value::string(u"abc"), -1},
      {"strings equal", Value::string(u"工资"), Value::string(u"工资"), 0},
      {"prefix shorter", Value::string(u"ab"), Value::string(u"abc"), -1},
      {"number below string", Value::integer(5), Value::string(u"1"), -1},
      {"string above number", Value::string(u""), Value::dbl(1e300), 1},
      {"empty as zero", Value(), Value::integer(0), 0},
      {"empty below positive", Value(), Value::dbl(0.5), -1},
      {"empty as empty string", Value(), Value::string(u""), 0},
      {"empty below text", Value(), Value::string(u"a"), -1},
      {"text above empty", Value::string(u"a"), Value(), 1},
      {"empty vs empty", Value(), Value(), 0},
  };
  for (const auto& c : cases) {
    const auto r = vb::compareValues(c.l, c.r, zh);
    ASSERT_TRUE(r.has_value()) << c.name;
    EXPECT_EQ(*r, c.expected) << c.name;
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
