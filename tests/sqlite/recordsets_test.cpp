// What the in-memory record set and the database one (run by Execute or
// opened by Recordset.Open) share: the cursor's moves, BOF and EOF, the
// field lookups, writes needing a current row, and the lifetime of the
// field objects they hand out.

#include "database_fixture.hpp"
#include "korvex/memory_recordset.hpp"

namespace korvex::testing {
namespace {

enum class Kind { Memory, Executed, Opened };

class Recordsets : public DatabaseTest, public ::testing::WithParamInterface<Kind> {
 protected:
  /// A record set of one column Code holding `codes`; in the database it is
  /// the column v renamed.
  ObjectRef open(const std::vector<std::u16string>& codes) {
    if (GetParam() == Kind::Memory) {
      std::vector<std::vector<Value>> rows;
      for (const auto& code : codes) rows.push_back({Value::string(code)});
      memory_ = MemoryRecordset::create({u"Code"}, rows);
      return memory_;
    }
    exec("create table codes (v text)");
    for (const auto& code : codes) exec("insert into codes values ('" + toUtf8(code) + "')");
    const std::u16string select = u"select v as Code from codes order by rowid";
    if (GetParam() == Kind::Executed) return exec(toUtf8(select)).value.objectValue();
    ObjectRef rs = objects_->create(u"Recordset");
    const std::array<Value, 2> args{Value::string(select), Value::object(connection_)};
    EXPECT_TRUE(rs->callMethod(u"Open", args).ok());
    return rs;
  }
  /// The cursor's row from 0 as the memory set tells it, or AbsolutePosition.
  std::int32_t position(HostObject& rs) {
    if (GetParam() == Kind::Memory) return static_cast<std::int32_t>(memory_->position());
    return rs.getProperty(u"AbsolutePosition", {}).value.longValue();
  }
  /// What position() says on `row` from 0 (-1 at BOF, `rows` at EOF): the
  /// same row, or AbsolutePosition from 1 and -1 off the rows.
  std::int32_t expected(std::int32_t row, std::int32_t rows) const {
    if (GetParam() == Kind::Memory) return row;
    return row >= 0 && row < rows ? row + 1 : -1;
  }
  static std::string read(HostObject& field, std::u16string_view member = u"Value") {
    const DispatchResult r = field.getProperty(member, {});
    return r.ok() ? describe(r.value) : "error " + std::to_string(r.number);
  }
  std::shared_ptr<MemoryRecordset> memory_;
};

INSTANTIATE_TEST_SUITE_P(Both, Recordsets,
                         ::testing::Values(Kind::Memory, Kind::Executed, Kind::Opened));

TEST_P(Recordsets, MovesFollowACursor) {
  // Each step: the move, its error (3021 past either end), BOF / EOF and the
  // row after it.
  struct Step {
    const char16_t* move;
    std::int32_t error;
    bool bof, eof;
    std::int32_t row;
  };
  const Step steps[] = {
      {u"MoveNext", 0, false, false, 1},     {u"MoveNext", 0, false, false, 2},
      {u"movenext", 0, false, true, 3},      {u"MoveNext", 3021, false, true, 3},
      {u"MovePrevious", 0, false, false, 2}, {u"movefirst", 0, false, false, 0},
      {u"MoveLast", 0, false, false, 2},     {u"MOVEFIRST", 0, false, false, 0},
      {u"MovePrevious", 0, true, false, -1}, {u"MovePrevious", 3021, true, false, -1},
      {u"MOVENEXT", 0, false, false, 0},
  };
  const ObjectRef rs = open({u"A", u"B", u"C"});
  const ObjectRef code = objectOf(rs->getProperty(u"Fields", std::array{Value::lng(0)}));
  ASSERT_TRUE(rs && code);
  EXPECT_EQ(rs->getProperty(u"RecordCount", {}).value.longValue(), 3);
  EXPECT_EQ(position(*rs), expected(0, 3));
  for (const Step& s : steps) {
    SCOPED_TRACE(toUtf8(s.move) + " to " + std::to_string(s.row));
    EXPECT_EQ(rs->callMethod(s.move, {}).number, s.error);
    EXPECT_EQ(rs->getProperty(u"BOF", {}).value.booleanValue(), s.bof);
    EXPECT_EQ(rs->callMethod(u"EOF", {}).value.booleanValue(), s.eof);  // a property, called
    EXPECT_EQ(position(*rs), expected(s.row, 3));
    EXPECT_EQ(read(*code), s.row < 0 || s.row > 2 ? "error 3021"
                                                  : "String:" + std::string(1, char('A' + s.row)));
  }
}

TEST_P(Recordsets, EmptySetIsBothBofAndEof) {
  const ObjectRef rs = open({});
  EXPECT_TRUE(rs->getProperty(u"BOF", {}).value.booleanValue());
  EXPECT_TRUE(rs->getProperty(u"EOF", {}).value.booleanValue());
  for (const char16_t* move : {u"MoveFirst", u"MoveLast", u"MoveNext", u"MovePrevious"}) {
    EXPECT_EQ(rs->callMethod(move, {}).number, 3021) << toUtf8(move);
  }
  EXPECT_EQ(read(*objectOf(rs->getProperty(u"Fields", std::array{Value::string(u"code")}))),
            "error 3021");
}

// Fields by name (any case) or by position from 0, also as the record set's
// and the Fields' default member; anything else is 3265, an unknown member 438.
TEST_P(Recordsets, FieldLookupsAndUnknownMembers) {
  const ObjectRef rs = open({u"A", u"B"});
  const ObjectRef fields = objectOf(rs->getProperty(u"FIELDS", {}));
  ASSERT_TRUE(fields);
  EXPECT_EQ(fields->getProperty(u"count", {}).value.longValue(), 1);
  const ObjectRef code = objectOf(fields->getProperty(u"Item", std::array{Value::integer(0)}));
  ASSERT_TRUE(code);
  EXPECT_EQ(objectOf(fields->getProperty(u"Item", std::array{Value::string(u"CODE")})), code);
  EXPECT_EQ(objectOf(fields->getDefault(std::array{Value::string(u"code")})), code);
  EXPECT_EQ(objectOf(rs->getDefault(std::array{Value::lng(0)})), code);
  EXPECT_EQ(objectOf(rs->getDefault({})), fields);
  EXPECT_EQ(read(*code, u"Name"), "String:Code");
  EXPECT_EQ(read(*code, u"VALUE"), "String:A");
  EXPECT_EQ(describe(code->getDefault({}).value), "String:A");

  const Value keys[] = {Value::string(u"v"), Value::string(u"nope"), Value::string(u""),
                        Value::lng(1), Value::lng(-1)};
  for (const Value& key : keys) {
    EXPECT_EQ(fields->getProperty(u"Item", std::array{key}).number, 3265) << describe(key);
  }
  EXPECT_EQ(fields->getProperty(u"Item", {}).number, 3265);
  const DispatchResult r = rs->callMethod(u"Delete", {});
  EXPECT_EQ(r.number, 438);
  EXPECT_EQ(r.description, u"对象不支持该属性或方法");
  EXPECT_EQ(rs->setProperty(u"EOF", {}, Value::boolean(true)).number, 438);
  EXPECT_EQ(code->setProperty(u"Name", {}, Value::string(u"x")).number, 438);
}

TEST_P(Recordsets, WritesNeedACurrentRow) {
  const ObjectRef rs = open({u"A"});
  const ObjectRef code = objectOf(rs->getProperty(u"Fields", std::array{Value::lng(0)}));
  ASSERT_TRUE(code);
  EXPECT_TRUE(rs->callMethod(u"Edit", {}).ok());
  EXPECT_TRUE(code->setProperty(u"value", {}, Value::string(u"B")).ok());
  EXPECT_EQ(read(*code), "String:B");
  ASSERT_TRUE(rs->callMethod(u"MoveNext", {}).ok());
  EXPECT_EQ(code->setProperty(u"Value", {}, Value::string(u"C")).number, 3021);
  for (const char16_t* method : {u"Edit", u"Update"}) {
    EXPECT_EQ(rs->callMethod(method, {}).number, 3021) << toUtf8(method);
  }
}

// The same column is always the same field object; a kept field or Fields
// keeps the set's data alive, only as long as it is kept.
TEST_P(Recordsets, FieldsHoldTheDataNoLongerThanKept) {
  std::weak_ptr<HostObject> set, data;
  ObjectRef field, fields;
  {
    const ObjectRef rs = open({u"A", u"B"});
    field = objectOf(rs->getProperty(u"Fields", std::array{Value::string(u"Code")}));
    fields = objectOf(rs->getProperty(u"Fields", {}));
    set = rs;
    data = field;
    memory_.reset();
  }
  ASSERT_TRUE(field && fields);
  EXPECT_TRUE(set.expired());
  EXPECT_EQ(read(*field), "String:A");
  EXPECT_TRUE(field->setProperty(u"Value", {}, Value::string(u"Z")).ok());
  EXPECT_EQ(describe(field->getDefault({}).value), "String:Z");
  EXPECT_EQ(objectOf(fields->getProperty(u"Item", std::array{Value::lng(0)})), field);
  fields.reset();
  EXPECT_FALSE(data.expired());
  field.reset();
  EXPECT_TRUE(data.expired());
}

}  // namespace
}  // namespace korvex::testing
