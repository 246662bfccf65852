// Expressions end to end through the evaluator: values, precedence, the
// evaluator's own Null rules, the error numbers and messages of malformed
// expressions and the warning boxes.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "engine/paras.hpp"
#include "engine/script_reader.hpp"
#include "eval/eval.hpp"
#include "facade/context_of.hpp"
#include "korvex/memory_recordset.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

// An expression and describe() of its value.
using ValueCase = std::pair<const char*, const char*>;

class EvaluatesTo : public ::testing::TestWithParam<ValueCase> {};

TEST_P(EvaluatesTo, Value) {
  const auto& [expression, expected] = GetParam();
  Harness f;
  f.engine.SetSysVar(u"A", Value::dbl(5));
  f.engine.SetSysVar(u"S", Value::string(u"abc"));
  f.engine.SetSysVar(u"N", Value::null());
  f.engine.SetSysVar(u"PLUS", Value::string(u"+"));
  const Value v = Evaluate(contextOf(f.engine), fromUtf8(expression));
  EXPECT_EQ(f.engine.ErrNum(), 0) << expression << ": " << toUtf8(f.engine.ErrMsg());
  EXPECT_EQ(describe(v), expected) << expression;
  EXPECT_TRUE(f.ui->messages().empty()) << expression;
}

// clang-format off
const ValueCase kValues[] = {
    // arithmetic
    {"1+2*3", "Double:7"}, {"(1+2)*3", "Double:9"}, {"2^3^2", "Double:64"},  // left-associative
    {"-3^2", "Double:-9"},  // the sign applies after the power
    {"2*-3", "Double:-6"}, {"2^-1", "Double:0.5"}, {"+5", "Double:5"}, {"- (2 + 3)", "Double:-5"},
    {"10-4-3", "Double:3"}, {"12/4/3", "Double:1"},
    {"1+2 & 3", "String:33"},  // & binds looser than +
    {"1 & 2 + 3", "String:15"}, {"7/2", "Double:3.5"}, {".5 + 1.", "Double:1.5"}, {"  ", "Empty:"},
    {"", "Empty:"}, {"a * 2", "Double:10"}, {"A+a", "Double:10"},
    {"2 ^ 3 ^ 2 - -3 ^ 2", "Double:73"}, {"-2 * -2 ^ 2", "Double:8"}, {"1 < 2 < 3", "Boolean:True"},
    {"3 > 2 > 1", "Boolean:False"}, {R"("a" & 1 = "a1")", "Boolean:True"},
    {R"("ab" + "cd" = "abcd")", "Boolean:True"}, {"1. + .5 + 007", "Double:8.5"},
    {"1 = 1 = 1", "Boolean:False"},
    // strings and comparison
    {R"("ab" + "cd")", "String:abcd"}, {R"("ab" & "cd")", "String:abcd"},
    {R"("1" + 2)", "Double:3"}, {R"("+")", "String:+"},  // a literal operator text stays a string
    {R"("and")", "String:and"}, {R"("Mod" & "xor")", "String:Modxor"},
    {R"("a" = 1)", "Boolean:False"}, {R"("a" <> 1)", "Boolean:True"},
    {R"("ABC" = "abc")", "Boolean:False"},  // case-sensitive
    {R"("abc" = s)", "Boolean:True"}, {"1 < 2", "Boolean:True"}, {"2 <= 2", "Boolean:True"},
    {"3 >= 4", "Boolean:False"}, {"3 > 2", "Boolean:True"}, {"3 != 2", "Boolean:True"},
    {"1 + 1 = 2", "Boolean:True"}, {"1 < 2 AND 2 < 3", "Boolean:True"},
    {"1 > 2 OR 2 > 3", "Boolean:False"}, {"NOT 1 = 2", "Boolean:True"},  // NOT binds looser than =
    {"NOT 0", "Boolean:True"}, {"not 1", "Boolean:False"},
    {"2 AND 4", "Boolean:True"},  // logical, not bitwise
    {"6 and 3", "Boolean:True"}, {"0 OR 0", "Boolean:False"}, {"TRUE AND FALSE", "Boolean:False"},
    {"TRUE OR FALSE AND FALSE", "Boolean:True"}, {"1 = 1 AND 2 > 3", "Boolean:False"},
    {"CRLF", "String:\r\n"}, {"vbcrlf & 1", "String:\r\n1"}, {"#2005-03-01#", "Date:2005/3/1"},
    {"#2005-03-01# + 1", "Date:2005/3/2"},
    // the evaluator's own Null rules
    {"NULL + 5", "Double:5"}, {"5 + NULL", "Double:5"}, {"N + N", "Null:"},
    {"NULL - 5", "Double:-5"}, {"5 - N", "Double:5"}, {"NULL * 5", "Integer:0"},
    {"5 * N", "Integer:0"}, {"NULL / 5", "Double:0"}, {"NULL & \"x\"", "String:x"},
    {"NULL = 1", "Null:"}, {"EMPTY", "Empty:"}, {"EMPTY + 1", "Double:1"}, {"-NULL", "Null:"},
    {"NULL ^ 2", "Null:"}, {"NULL & NULL", "Null:"}, {"NULL < 1", "Null:"},
    {"\"a\" * NULL", "Integer:0"}, {"NOT EMPTY", "Boolean:True"},
    {"NULL + 5 & \"|\" & NULL * 5", "String:5|0"},
    // The inline functions evaluate their one argument themselves; function
    // objects get the text with its parentheses and hand back a value that the
    // expression goes on with.
    {"int(-2.5)", "Double:-2"}, {"INT(2.5)", "Double:2"}, {"Int(-0.5) + 0", "Double:0"},
    {"INT(\"3.7\")", "Double:3"}, {"INT(TRUE)", "Integer:-1"}, {"Len(12.5)", "Long:4"},
    {"LEN(\"abc\")", "Long:3"}, {"len(\"中文\")", "Long:2"}, {"LEN(NULL)", "Null:"},
    {"LEN(EMPTY)", "Long:0"}, {"ABS(-3)", "Double:3"}, {"ABS(NULL)", "Null:"},
    {"abs(TRUE)", "Integer:1"}, {"SQR(16)", "Double:4"}, {"YEAR(#2005-03-01#)", "Integer:2005"},
    {"YEAR(\"2005-03-01\")", "Integer:2005"}, {"TRIM(\"  a b \")", "String:a b"},
    {"TRIM(12)", "String:12"}, {"ABS (-3) * 2", "Double:6"},  // blanks before the "(" are allowed
    {"ABS(-(2+3))", "Double:5"}, {"LEN(S) + Len(s & s)", "Long:9"},
    {"MID(\"abcd\", 2, 2) & \"!\"", "String:bc!"},
    {"LEFT(\"abc\", 2) + RIGHT(\"xyz\", 1)", "String:abz"}, {"LEFT(\"a)b\", 2)", "String:a)"},
    {"ucase(LEFT(\"abc\", ABS(-2)))", "String:AB"},
    // Functions run in the order of the text: GetVar sees what SetVar stored.
    {"SetVar(\"V\", 2) & GetVar(\"V\")", "String:True2"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(All, EvaluatesTo, ::testing::ValuesIn(kValues));

struct ErrorCase {
  const char* expression;
  std::int32_t errNum;
  const char* errMsg;
  const char* box = nullptr;  // the warning box shown, if any
};

class FailsWith : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(FailsWith, NumberMessageAndBox) {
  const ErrorCase& c = GetParam();
  Harness f;
  f.engine.SetSysVar(u"A", Value::dbl(5));
  f.engine.SetCurrentLineNum(7);
  const Value v = Evaluate(contextOf(f.engine), fromUtf8(c.expression));
  EXPECT_EQ(f.engine.ErrNum(), c.errNum) << c.expression;
  EXPECT_EQ(toUtf8(f.engine.ErrMsg()), c.errMsg) << c.expression;
  EXPECT_TRUE(v.isEmpty()) << c.expression;
  if (c.box == nullptr) {
    EXPECT_TRUE(f.ui->messages().empty()) << c.expression;
  } else {
    ASSERT_EQ(f.ui->messages().size(), 1u) << c.expression;
    EXPECT_EQ(toUtf8(f.ui->messages()[0]), c.box) << c.expression;
  }
}

constexpr const char* kMismatchBox = "表达式错误类型不匹配 Line:7";

// clang-format off
const ErrorCase kErrors[] = {
    // scanning
    {"1 2", 50, "缺操作符"}, {"a \"x\"", 50, "缺操作符"}, {"1+", 51, "缺操作数"},
    {"--5", 51, "缺操作数"}, {"-+5", 51, "缺操作数"}, {"* 2", 51, "缺操作数"},
    {"1 + * 2", 51, "缺操作数"}, {"NOT", 51, "缺操作数"}, {"(1+)", 51, "缺操作数"},
    {"1+2)", 52, "闭括号没有与之相匹配的开括号"}, {")", 52, "闭括号没有与之相匹配的开括号"},
    {"1.2.3", 53, "操作数含多个小数点"}, {".", 54, "操作数非法"}, {"1 + .", 54, "操作数非法"},
    {"#2005-03-01", 55, "表达式错误"}, {"nosuchname", 56, "遇到不可识别的符号或变量名"},
    {"1 @ 2", 56, "遇到不可识别的符号或变量名"}, {"1 ! 2", 56, "遇到不可识别的符号或变量名"},
    {"a OR(a)", 56, "遇到不可识别的符号或变量名"},  // OR needs a blank after it
    {"5 MOD 2", 56, "遇到不可识别的符号或变量名"},  // MOD is no operator here
    {"部门工资合计(1)", 56, "遇到不可识别的符号或变量名"}, {"(1+2", 57, "括号不匹配:缺\")\""},
    {"((1)", 57, "括号不匹配:缺\")\""}, {"Then", 23, "非法使用关键字,期待语句:'Then'"},
    {"1 + loop", 23, "非法使用关键字,期待语句:'loop'"}, {"#not a date#", 4, "类型不匹配"},
    {"\"abc", 2, "错误的表达式,期待引号。\r\n\"abc"},
    {"1 + \"x", 2, "错误的表达式,期待引号。\r\n1 + \"x"},
    // evaluation
    {"\"a\" < 1", 4, "类型不匹配", kMismatchBox}, {"1 >= \"a\"", 4, "类型不匹配", kMismatchBox},
    {"NOT \"x\"", 4, "类型不匹配", kMismatchBox}, {"NOT NULL", 4, "类型不匹配", kMismatchBox},
    {"\"x\" AND 1", 4, "类型不匹配", kMismatchBox}, {"1 OR \"x\"", 4, "类型不匹配", kMismatchBox},
    {"1/0", 4, "类型不匹配", kMismatchBox},  // a platform fault takes the same path
    {"\"x\" - 1", 4, "类型不匹配", kMismatchBox}, {"2 / NULL", 4, "类型不匹配", kMismatchBox},
    {"NULL < \"a\"", 4, "类型不匹配", kMismatchBox}, {"\"5\" > 3", 4, "类型不匹配", kMismatchBox},
    {"1 XOR 2", 2, "错误的表达式", "栈中含多个结果, 请检查表达式是否正确"},
    // "(" may follow an operand; the two groups leave two results.
    {"(1)(2)", 2, "错误的表达式", "栈中含多个结果, 请检查表达式是否正确"},
    // Names that are functions fail as functions, whether or not their class is
    // built, never as unknown names.
    {"_部门工资合计(1)", 6, "错误的参数表达式或参数个数{函数:_部门工资合计(1)}"},
    {"计件工资额(1)", 6, "错误的参数表达式或参数个数{函数:_计件工资额(1)}"},
    {"getcell(1)", 6, "错误的参数表达式或参数个数{函数:GetCell(1)}"},
    {"LEFT(\"abc\", (1)", 25, "括号不匹配"},
    // the inline argument is one expression
    {"ABS(1,2)", 56, "遇到不可识别的符号或变量名"}, {"LEN(1 2)", 50, "缺操作符"},
    {"ABS 5", 26, "缺少'( ' ,函数名后必须跟'( '"},
    {"_员工属性 + 1", 26, "缺少'( ' ,函数名后必须跟'( '"},
    {"left(1, 2, 3, 4)", 6, "错误的参数表达式或参数个数{函数:Left(1, 2, 3, 4)}"},
    // A failing argument stops the whole expression.
    {"1 + ABS(nosuch) + MID(\"a\", 1, 1)", 56, "遇到不可识别的符号或变量名"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(All, FailsWith, ::testing::ValuesIn(kErrors));

TEST(Evaluate, OnlyTheEvaluatorsOperatorTextsAreApplied) {
  // Only literals are protected: a variable holding an operator's text acts
  // as the operator, so popping operands from an empty stack is reported
  // (18), or the operation on the Empty it gives fails ("/": division by
  // zero, 4).
  for (const char16_t* text : {u"+", u"&", u"-", u"*", u"/", u"^", u"(-)", u">=", u">", u"<", u"<=",
                               u"<>", u"!=", u"=", u"NOT", u"AND", u"OR"}) {
    Harness f;
    f.engine.SetSysVar(u"P", Value::string(text));
    Evaluate(contextOf(f.engine), u"P");
    const bool divide = text == std::u16string_view(u"/");
    EXPECT_EQ(f.engine.ErrNum(), divide ? 4 : 18) << toUtf8(text);
    if (!divide) {
      EXPECT_EQ(f.engine.ErrMsg(), u"表达式或语句结构错:\r\n对空堆栈执行'Pop'方法") << toUtf8(text);
    }
  }
  // The same holds for a function's result.
  Harness g;
  Evaluate(contextOf(g.engine), u"1 & LEFT(\"-x\", 1)");
  EXPECT_EQ(g.engine.ErrNum(), 18);
  // Not applied: an ordinary string.
  for (const char16_t* text : {u"MOD", u"XOR", u"and", u"Or", u"(+)", u"=>", u"ab", u""}) {
    Harness f;
    f.engine.SetSysVar(u"P", Value::string(text));
    const Value v = Evaluate(contextOf(f.engine), u"P");
    EXPECT_EQ(f.engine.ErrNum(), 0) << toUtf8(text);
    EXPECT_EQ(describe(v), "String:" + toUtf8(text));
  }
  // Literals are protected case-insensitively, except "&".
  Harness f;
  EXPECT_EQ(describe(Evaluate(contextOf(f.engine), u"\"Or\" & \"<=\"")), "String:Or<=");
  EXPECT_EQ(f.engine.ErrNum(), 0);
  Evaluate(contextOf(f.engine), u"\"&\"");
  EXPECT_EQ(f.engine.ErrNum(), 18);
}

TEST(Evaluate, RecordFieldsResolveAndNeverHideFunctions) {
  Harness f;
  // Without a record EOF stops with the record error.
  EXPECT_TRUE(Evaluate(contextOf(f.engine), u"EOF").isEmpty());
  EXPECT_EQ(f.engine.ErrNum(), 102);
  f.engine.SetErrNum(0);
  auto rs =
      MemoryRecordset::create({u"Salary", u"编号"}, {{Value::dbl(1200), Value::string(u"E7")}});
  f.engine.SetRecordSet(rs);
  EXPECT_EQ(describe(Evaluate(contextOf(f.engine), u"salary + 1")), "Double:1201");
  EXPECT_EQ(describe(Evaluate(contextOf(f.engine), u"编号 & \"!\"")), "String:E7!");
  EXPECT_EQ(describe(Evaluate(contextOf(f.engine), u"EOF")), "Boolean:False");
  EXPECT_EQ(describe(Evaluate(contextOf(f.engine), u"bof() OR EOF ( )")), "Boolean:False");
  f.engine.SetSysVar(u"LEN", Value::dbl(99));
  EXPECT_EQ(describe(Evaluate(contextOf(f.engine), u"LEN(\"ab\")")), "Long:2");
  EXPECT_EQ(f.engine.ErrNum(), 0);
}

TEST(Evaluate, PlatformFaultsPropagate) {
  Harness f;
  const auto fault = [&f](std::u16string_view text) {
    return errorOf([&] { Evaluate(contextOf(f.engine), std::u16string(text)); });
  };
  EXPECT_EQ(fault(u"SQR(-1)"), vb::kInvalidCall);
  EXPECT_EQ(fault(u"INT(NULL)"), vb::kInvalidNull);
  // The most negative amount has no positive counterpart.
  f.engine.SetSysVar(u"LOWEST", Value::currency(Currency{INT64_MIN}));
  EXPECT_EQ(fault(u"ABS(LOWEST)"), vb::kOverflow);
  // Positions and numbers beyond their range.
  // A literal may open at the last 16-bit position, not one after it.
  // A literal must close by the last 16-bit position.
  const std::u16string pad(32764, u' ');
  EXPECT_EQ(describe(Evaluate(contextOf(f.engine), pad + u"\"a\"")), "String:a");
  EXPECT_EQ(fault(pad + u" \"a\""), vb::kOverflow);
  EXPECT_NE(fault(std::u16string(400, u'9')), 0);
  EXPECT_EQ(describe(Evaluate(contextOf(f.engine), u"0." + std::u16string(400, u'0') + u"1")),
            "Double:0");
  // Below the limit a long literal is an ordinary operand.
  const std::u16string shortLiteral = u"\"" + std::u16string(30000, u'a') + u"\"";
  EXPECT_EQ(Evaluate(contextOf(f.engine), u"LEN(" + shortLiteral + u")").longValue(), 30000);
  // The engine's own entry point traps them.
  EXPECT_TRUE(f.engine.Evaluate(u"SQR(\"x\")").isEmpty());
  EXPECT_NE(f.engine.ErrNum(), 0);
}

// The character-level readers and the argument-list splitter.
enum class Reader { Quote, Group, ListItem };

struct ReadCase {
  Reader reader;
  const char16_t* text;
  std::int16_t start;
  std::int32_t errNum;
  const char16_t* piece;  // on success
  std::int16_t end;       // position left on the last character consumed
  bool separator = false;
};

class Reads : public ::testing::TestWithParam<ReadCase> {};

TEST_P(Reads, PieceAndPosition) {
  const ReadCase& c = GetParam();
  ScriptReader op;
  std::int16_t pos = c.start;
  std::u16string piece;
  bool separator = false;
  std::int32_t r = 0;
  switch (c.reader) {
    case Reader::Quote:
      r = op.readQuoted(c.text, pos, piece);
      break;
    case Reader::Group:
      r = op.readGroup(c.text, pos, piece);
      break;
    case Reader::ListItem:
      r = op.readListItem(c.text, pos, piece, separator);
      break;
  }
  const std::string text = toUtf8(c.text);
  EXPECT_EQ(r, c.errNum) << text;
  EXPECT_EQ(op.error().number, c.errNum) << text;
  if (c.errNum == 0) {
    EXPECT_EQ(piece, c.piece) << text;
    EXPECT_EQ(pos, c.end) << text;
    EXPECT_EQ(separator, c.separator) << text;
  }
}

// clang-format off
const ReadCase kReads[] = {
    {Reader::Quote, u"\"a,b\"", 1, 0, u"\"a,b\"", 5},
    {Reader::Quote, u"x = \"a\"\"b\"", 5, 0, u"\"a\"", 7},  // no escapes
    {Reader::Quote, u"\"abc", 1, 2, nullptr, 0},
    {Reader::Group, u"  (1+(2*3)) rest", 1, 0, u"  (1+(2*3))", 11},
    {Reader::Group, u"(\")\" & x)", 1, 0, u"(\")\" & x)", 9},
    {Reader::Group, u"abs(1)", 1, 26, nullptr, 0}, {Reader::Group, u"(1+(2", 1, 25, nullptr, 0},
    {Reader::Group, u"LEN", 4, 0, u"", 3},      // nothing after a name
    {Reader::Group, u" )", 1, 25, nullptr, 0},  // a ")" before any "("
    {Reader::ListItem, u"a b, c", 1, 0, u"ab", 4, true},
    {Reader::ListItem, u"a，b", 1, 0, u"a", 2, true},
    {Reader::ListItem, u"f(1,2), \"x,y\"", 1, 0, u"f(1,2)", 7, true},
    {Reader::ListItem, u"f(1,2), \"x,y\"", 8, 0, u"\"x,y\"", 13},
    {Reader::ListItem, u"\" a \" ' c, d", 1, 0, u"\" a \"", 12},
    {Reader::ListItem, u"a, ", 1, 2, nullptr, 0}, {Reader::ListItem, u"(a", 1, 25, nullptr, 0},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(All, Reads, ::testing::ValuesIn(kReads));

// The message of an unterminated quote is pinned through the evaluator.
TEST(TextHelpers, ClassifyTrimAndCompare) {
  for (char16_t c : {u'a', u'_', u'工'}) EXPECT_TRUE(isIdentStart(c)) << int(c);
  EXPECT_FALSE(isIdentStart(u'1'));
  EXPECT_TRUE(isIdentChar(u'1'));
  EXPECT_FALSE(isIdentChar(u'.'));
  EXPECT_EQ(trimBlanks(u"\t a b \r\n"), u"a b");
  EXPECT_EQ(trimBlanks(u"   "), u"");
  EXPECT_EQ(firstLine(u"one\r\ntwo"), u"one");
  EXPECT_EQ(firstLine(u"one"), u"one");
  EXPECT_EQ(upperName(u"abc中Z"), u"ABC中Z");
  EXPECT_TRUE(equalsNoCase(u"Loop", u"LOOP"));
  EXPECT_FALSE(equalsNoCase(u"Loop", u"LOOPS"));
}

// An argument list, the error number, and the arguments split from it.
using ParseCase = std::tuple<const char16_t*, std::int32_t, std::vector<std::u16string>>;

class ParasParse : public ::testing::TestWithParam<ParseCase> {};

TEST_P(ParasParse, SplitsArguments) {
  const auto& [text, errNum, args] = GetParam();
  Paras p;
  EXPECT_EQ(p.Parse(text), errNum) << toUtf8(text);
  EXPECT_EQ(p.error().number, errNum);
  if (errNum != 0) return;
  ASSERT_EQ(p.Count(), args.size()) << toUtf8(text);
  for (std::size_t i = 1; i <= p.Count(); ++i) {
    EXPECT_EQ(p.Item(i).Expression, args[i - 1]) << toUtf8(text);
    EXPECT_EQ(p.Item(i).ParaIndex, static_cast<std::int16_t>(i - 1));
  }
}

// clang-format off
const ParseCase kParses[] = {
    {u"(a, b)", 0, {u"a", u"b"}}, {u"(a，b)", 0, {u"a", u"b"}}, {u"()", 0, {}}, {u"  ", 0, {}},
    {u"(a,,b)", 0, {u"a", u"b"}},  // empty arguments are dropped
    {u"(f(1,2), \"x, y\")", 0, {u"f(1,2)", u"\"x, y\""}}, {u" ( 1 + 2 ) ", 0, {u"1+2"}},
    {u"a, b", 0, {u"a", u"b"}},  // the outer pair is optional
    {u"(a", 0, {u"a"}}, {u"((a), (b))", 0, {u"(a)", u"(b)"}},
    {u"(1, 2 ' note, 3)", 0, {u"1", u"2"}}, {u"(a,)", 2, {}},
    {u"(a)+(b)", 25, {}},  // only one "(" and one ")" are dropped
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(All, ParasParse, ::testing::ValuesIn(kParses));

TEST(Paras, ParaTextIsTheListWithoutItsOuterPair) {
  Paras p;
  p.Parse(u"  (x, y)  ");
  EXPECT_EQ(p.ParaText(), u"x, y");
}

}  // namespace
}  // namespace korvex::testing
