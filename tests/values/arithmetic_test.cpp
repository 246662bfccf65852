#include <limits>
#include <optional>

#include "support.hpp"
#include "values/calendar.hpp"
#include "values/currency_product.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

using testing::errorOf;
using testing::u8;
const Locale& zh = Locale::zhCN();

using BinaryOp = Value (*)(const Value&, const Value&, const Locale&);

Value I(std::int16_t v) { return Value::integer(v); }
Value L(std::int32_t v) { return Value::lng(v); }
Value D(double v) { return Value::dbl(v); }
Value S(std::u16string_view v) { return Value::string(v); }
Value B(bool v) { return Value::boolean(v); }
Value C(std::int64_t scaled) { return Value::currency(Currency{scaled}); }
Value Dt(int y, int m, int d) {
  return Value::date(static_cast<double>(vb::daysFromCivil(y, m, d)));
}

TEST(Arithmetic, PromotionTable) {
  using enum VarType;
  const BinaryOp add = vb::add, sub = vb::subtract, mul = vb::multiply, div = vb::divide,
                 pow = vb::power;
  // The operation, its operands, and the type and string form of the result.
  // clang-format off
  const std::tuple<BinaryOp, Value, Value, VarType, std::u16string_view> cases[] = {
      // Integer overflow widens to Long, Long overflow to Double
      {add, I(1), I(2), Integer, u"3"}, {add, I(32767), I(1), Long, u"32768"},
      {sub, I(-32768), I(1), Long, u"-32769"}, {add, L(2147483647), L(1), Double, u"2147483648"},
      {mul, I(300), I(300), Long, u"90000"}, {mul, L(100000), L(100000), Double, u"10000000000"},
      // the wider type wins; strings add as text or as numbers; True is -1, Empty 0 or ""
      {add, L(5), I(1), Long, u"6"}, {add, D(0.1), D(0.2), Double, u"0.3"},
      {mul, D(1.5), L(2), Double, u"3"}, {add, S(u"ab"), S(u"cd"), String, u"abcd"},
      {add, S(u"1"), I(2), Double, u"3"}, {add, L(2), S(u" 1.5 "), Double, u"3.5"},
      {sub, S(u"5"), S(u"2"), Double, u"3"}, {add, B(true), B(true), Integer, u"-2"},
      {add, B(true), I(5), Integer, u"4"}, {add, Value(), I(5), Integer, u"5"},
      {add, Value(), Value(), Integer, u"0"}, {add, Value(), S(u"x"), String, u"x"},
      {add, S(u"x"), Value(), String, u"x"}, {mul, Value(), D(2.5), Double, u"0"},
      // dates move by days; their difference and their products are Doubles
      {add, Dt(2005, 2, 28), I(1), Date, u"2005/3/1"},
      {add, D(0.5), Dt(2005, 3, 1), Date, u"2005/3/1 12:00:00"},
      {sub, Dt(2005, 3, 1), I(1), Date, u"2005/2/28"},
      {sub, Dt(2005, 3, 1), Dt(2005, 2, 1), Double, u"28"},
      {mul, Dt(1900, 1, 1), I(1), Double, u"2"},
      // Currency sums stay Currency; a product with a Double or a Date is a Double
      {add, C(15000), I(1), Currency, u"2.5"}, {add, C(15000), D(0.25), Currency, u"1.75"},
      {sub, C(-1), C(INT64_MIN), Currency, u"922337203685477.5807"},
      {mul, C(15000), C(15000), Currency, u"2.25"}, {mul, C(-5), L(3), Currency, u"-0.0015"},
      {mul, C(15000), D(0.00001), Double, u"0.000015"}, {mul, D(1.5), C(25000), Double, u"3.75"},
      {mul, C(10000), Dt(1900, 1, 1), Double, u"2"},
      // / and ^ give Doubles
      {div, I(1), I(4), Double, u"0.25"}, {div, L(6), I(3), Double, u"2"},
      {pow, I(2), I(10), Double, u"1024"}, {pow, I(-2), I(3), Double, u"-8"},
      {pow, D(4), D(0.5), Double, u"2"},
  };
  // clang-format on
  for (const auto& [op, l, r, type, text] : cases) {
    const Value v = op(l, r, zh);
    const std::string row = testing::describe(l) + " with " + testing::describe(r);
    EXPECT_EQ(v.type(), type) << row << " gave " << typeName(v.type());
    EXPECT_EQ(u8(vb::toString(v, zh)), u8(text)) << row;
  }
}

TEST(Arithmetic, NullPropagates) {
  for (BinaryOp op : {vb::add, vb::subtract, vb::multiply, vb::divide, vb::power}) {
    EXPECT_TRUE(op(Value::null(), I(5), zh).isNull());
    EXPECT_TRUE(op(I(5), Value::null(), zh).isNull());
  }
  EXPECT_TRUE(vb::negate(Value::null(), zh).isNull());
}

TEST(Arithmetic, Errors) {
  const std::tuple<const char*, BinaryOp, Value, Value, int> cases[] = {
      {"divide by zero", vb::divide, I(1), I(0), 11},
      {"divide by empty", vb::divide, D(2.5), Value(), 11},
      {"zero by zero", vb::divide, I(0), D(0), 6},
      {"double overflow", vb::multiply, D(1e308), D(10), 6},
      {"power overflow", vb::power, D(10), D(400), 6},
      {"negative base fraction", vb::power, D(-8), D(1.0 / 3), 5},
      {"zero to negative", vb::power, D(0), I(-1), 5},
      {"text not a number", vb::add, S(u"abc"), I(1), 13},
      {"text minus text", vb::subtract, S(u"a"), S(u"b"), 13},
      {"object operand", vb::add, Value::object(nullptr), I(1), 13},
      {"date past 9999", vb::add, Dt(9999, 12, 31), I(1), 6},
      {"currency overflow", vb::add, C(INT64_MAX), C(1), 6},
      {"currency difference overflow", vb::subtract, C(0), C(INT64_MIN), 6},
      {"currency product overflow", vb::multiply, C(INT64_MAX), I(2), 6},
  };
  for (const auto& [name, op, l, r, error] : cases) {
    EXPECT_EQ(errorOf([&] { op(l, r, zh); }), error) << name;
  }
}

TEST(Negate, KeepsTypeAndPromotesAtTheEdge) {
  // clang-format off
  const std::tuple<Value, VarType, std::u16string_view> cases[] = {
      {I(5), VarType::Integer, u"-5"}, {I(-32768), VarType::Long, u"32768"},
      {L(-2147483647 - 1), VarType::Double, u"2147483648"}, {D(2.5), VarType::Double, u"-2.5"},
      {C(15000), VarType::Currency, u"-1.5"}, {B(true), VarType::Integer, u"1"},
      {Value(), VarType::Integer, u"0"}, {S(u"3"), VarType::Double, u"-3"},
  };
  // clang-format on
  for (const auto& [in, type, text] : cases) {
    const Value v = vb::negate(in, zh);
    EXPECT_EQ(v.type(), type) << u8(text);
    EXPECT_EQ(u8(vb::toString(v, zh)), u8(text));
  }
  EXPECT_EQ(errorOf([] { vb::negate(C(INT64_MIN), zh); }), 6);
}

TEST(Concat, StringFormsAndNull) {
  EXPECT_EQ(vb::concat(S(u"a"), I(1), zh).stringValue(), u"a1");
  EXPECT_EQ(vb::concat(D(0.5), B(true), zh).stringValue(), u"0.5True");
  EXPECT_EQ(vb::concat(Value::null(), S(u"x"), zh).stringValue(), u"x");
  EXPECT_EQ(vb::concat(S(u"x"), Value::null(), zh).stringValue(), u"x");
  EXPECT_EQ(vb::concat(Value(), Value(), zh).stringValue(), u"");
  EXPECT_TRUE(vb::concat(Value::null(), Value::null(), zh).isNull());
  EXPECT_EQ(errorOf([] { vb::concat(Value::object(nullptr), S(u""), zh); }), 13);
}

TEST(CompareValues, OrderingTable) {
  const Value one = I(1), two = I(2), five = I(5);
  // clang-format off
  const std::tuple<Value, Value, int> cases[] = {
      // numbers of any type by value; True is -1, a Date its serial
      {one, two, -1}, {two, D(2.0), 0}, {L(3), D(2.5), 1}, {C(1), C(2), -1}, {C(20000), two, 0},
      {B(true), I(-1), 0}, {Dt(2005, 3, 1), L(38412), 0},
      // strings by code unit, a prefix first; any number below any string
      {S(u"ABC"), S(u"abc"), -1}, {S(u"工资"), S(u"工资"), 0}, {S(u"ab"), S(u"abc"), -1},
      {five, S(u"1"), -1}, {S(u""), D(1e300), 1},
      // Empty is 0 beside a number and "" beside a string
      {Value(), I(0), 0}, {Value(), D(0.5), -1}, {Value(), S(u""), 0}, {Value(), S(u"a"), -1},
      {S(u"a"), Value(), 1}, {Value(), Value(), 0},
  };
  // clang-format on
  for (const auto& [l, r, expected] : cases) {
    const std::string row = testing::describe(l) + " vs " + testing::describe(r);
    const auto order = vb::compareValues(l, r, zh);
    ASSERT_TRUE(order.has_value()) << row;
    EXPECT_EQ(*order, expected) << row;
  }
}

TEST(Compare, OperatorsGiveBooleansOrNull) {
  const Value one = I(1), two = D(2);
  const std::tuple<vb::CompareOp, bool, bool> cases[] = {
      {vb::CompareOp::Less, true, false},     {vb::CompareOp::LessEqual, true, true},
      {vb::CompareOp::Greater, false, false}, {vb::CompareOp::GreaterEqual, false, true},
      {vb::CompareOp::Equal, false, true},    {vb::CompareOp::NotEqual, true, false},
  };
  for (const auto& [op, lessCase, equalCase] : cases) {
    const Value lt = vb::compare(op, one, two, zh);
    ASSERT_EQ(lt.type(), VarType::Boolean);
    EXPECT_EQ(lt.booleanValue(), lessCase);
    EXPECT_EQ(vb::compare(op, one, one, zh).booleanValue(), equalCase);
    EXPECT_TRUE(vb::compare(op, Value::null(), one, zh).isNull());
    EXPECT_TRUE(vb::compare(op, one, Value::null(), zh).isNull());
  }
  // A string and a number are never equal.
  EXPECT_FALSE(vb::compare(vb::CompareOp::Equal, S(u"1"), one, zh).booleanValue());
}

TEST(Compare, ObjectsAndArraysMismatch) {
  EXPECT_EQ(errorOf([] { vb::compareValues(Value::object(nullptr), I(1), zh); }), 13);
  EXPECT_EQ(errorOf([] { vb::compareValues(S(u"a"), Value::array(Array()), zh); }), 13);
}

// The Currency product's two builds: the 64-bit halves that 32-bit targets
// use must round and overflow exactly as the 128-bit integer does.
TEST(CurrencyProduct, PortableMatchesNative) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  // Ties go to the even neighbour; the most negative amount fits, its negation does not.
  const std::tuple<std::int64_t, std::int64_t, std::optional<std::int64_t>> exact[] = {
      {15000, 15000, 22500}, {5000, 1, 0},      {15000, 1, 2},       {-15000, 1, -2},
      {-25000, -1, 2},       {5001, 1, 1},      {kMin, 10000, kMin}, {kMax, 10000, kMax},
      {kMin, -10000, {}},    {kMax, 10001, {}}, {kMax, kMax, {}},    {kMin, kMin, {}},
  };
  for (const auto& multiply : {vb::currencyProduct, vb::currencyProductPortable}) {
    for (const auto& [a, b, product] : exact) EXPECT_EQ(multiply(a, b), product) << a << " * " << b;
  }
#ifdef __SIZEOF_INT128__  // here currencyProduct is the native one
  const std::int64_t edges[] = {
      0,          1,           4999,         5000,         5001,         15000,
      0xFFFFFFFF, 0x100000000, 303700049997, 303700049998, kMax / 10000, kMax - 1,
      kMax,       kMin + 1,    kMin};
  for (std::int64_t a : edges) {
    for (std::int64_t b : edges) {
      for (std::int64_t sa : {1, -1}) {
        for (std::int64_t sb : {1, -1}) {
          const std::int64_t x = a == kMin ? a : a * sa;
          const std::int64_t y = b == kMin ? b : b * sb;
          EXPECT_EQ(vb::currencyProductPortable(x, y), vb::currencyProduct(x, y))
              << x << " * " << y;
        }
      }
    }
  }
#endif
}

}  // namespace
}  // namespace korvex
