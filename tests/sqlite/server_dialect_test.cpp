// The payroll texts as the database server gets them: names, functions,
// dates, placeholders and column types adapted, nothing inside quotes
// touched; statements cut and classified.
#include "postgres/server_dialect.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvex/sqlite.hpp"
#include "korvex/value.hpp"

namespace korvex::ds {
namespace {

TEST(ServerDialect, AdaptsThePayrollTexts) {
  struct Case {
    const char* written;
    const char* sent;
    bool domains = false;
  };
  const Case cases[] = {
      {"select [基本工资] as WA_Value from [工资表2005年03月] Where (工号 = '001')",
       "select \"基本工资\" as WA_Value from \"工资表2005年03月\" Where (工号 = '001')"},
      // Names ignore case, quoted or not; a quote inside a name is doubled.
      {"select [cCode], \"dInTime\", `X\"y` from Employes",
       "select \"ccode\", \"dintime\", \"x\"\"y\" from Employes"},
      {"select year(日期), MONTH (日期), Day(日期), left(a, 2), RIGHT(a,1), len(a), "
       "isnull(a, 0), getdate() from t",
       "select pg_temp.korvex_year(日期), pg_temp.korvex_month (日期), pg_temp.korvex_day(日期), "
       "pg_temp.korvex_left(a, 2), pg_temp.korvex_right(a,1), pg_temp.korvex_len(a), "
       "coalesce(a, 0), pg_temp.korvex_getdate() from t"},
      // A name that is not called stays; so does a left join.
      {"select year, a.left from a left join b on a.k = b.k",
       "select year, a.left from a left join b on a.k = b.k"},
      // Dates in ISO form whatever the server's DateStyle; other texts and
      // names as written.
      {"where 日期 between '03/01/2005' and '2005/3/31 08:30' and x = '13/01/2005' and "
       "[03/01/2005] = 'it''s'",
       "where 日期 between '2005-03-01' and '2005-03-31 08:30:00' and x = '13/01/2005' and "
       "\"03/01/2005\" = 'it''s'"},
      {"select a::text[] from t", "select a::text[] from t"},
      {"select :p0 || :P1, ?2, ?, ? from t where a::text = ':p0 ?1' -- :p0",
       "select $1 || $2, $2, $1, $2 from t where a::text = ':p0 ?1' -- :p0"},
      // Column types of the payroll database, in declarations only.
      {"create table t (a money, b bit not null default 0, c datetime, d nvarchar(20), "
       "e image); select bit, money from t",
       "create table t (a public.korvex_money, b public.korvex_bit not null default 0, "
       "c timestamp(0), d varchar(20), e bytea); select bit, money from t",
       true},
      {"ALTER TABLE t ADD n NCHAR(4)", "ALTER TABLE t ADD n char(4)"},
  };
  for (const Case& c : cases) {
    const ServerText text = adaptForServer(fromUtf8(c.written));
    EXPECT_EQ(toUtf8(text.sql), c.sent) << c.written;
    EXPECT_EQ(text.usesDomains, c.domains) << c.written;
  }
}

TEST(ServerDialect, CutsAndClassifiesStatements) {
  const std::vector<std::string_view> pieces =
      serverStatements("select 1; ; -- only this\n select ';' /* ; */;begin");
  EXPECT_EQ(pieces, (std::vector<std::string_view>{"select 1", " -- only this\n select ';' /* ; */",
                                                   "begin"}));
  const std::pair<const char*, TransactionWord> words[] = {
      {"BEGIN", TransactionWord::Begin},
      {" begin transaction ", TransactionWord::Begin},
      {"start transaction", TransactionWord::Begin},
      {"commit", TransactionWord::Commit},
      {"END", TransactionWord::Commit},
      {"rollback", TransactionWord::Rollback},
      {"rollback to korvex_user", TransactionWord::None},
      {"commit work", TransactionWord::Commit},
      {"begin tran", TransactionWord::Begin},
      {"abort", TransactionWord::Ends},
      {"commit and chain", TransactionWord::Ends},
      {"rollback work to savepoint s", TransactionWord::None},
      {"prepare transaction 'x'", TransactionWord::Ends},
      {"commit prepared 'x'", TransactionWord::Ends},
      {"begin; select 1", TransactionWord::None},
      {"select 1", TransactionWord::None},
  };
  for (const auto& [statement, word] : words) {
    EXPECT_EQ(transactionWord(statement), word) << statement;
  }
  EXPECT_EQ(placeholdersUsed("select $3, '$1', $1"), (std::vector<bool>{true, false, true}));
}

// What the sessions of one snapshot may share: the answer of a query that
// reads, locks nothing and calls only functions of the data.
TEST(ServerDialect, SteadyQueriesAndServerNames) {
  const std::pair<const char*, bool> queries[] = {
      {"SELECT SUM(工资合计) AS 合计 From WA_JobData WHERE (pg_temp.korvex_year(日期) = 2025)",
       true},
      {"select \"基本工资\" as WA_Value from \"工资表\" Where (工号 = '001')", true},
      {"select count(*) from t where exists (select 1 from u where rtrim(u.k) in ('a'))", true},
      {"select pg_temp.korvex_getdate()", false},
      {"select random() from t", false},
      {"select nextval('s')", false},
      {"select calcbyworkgroup($1)", false},
      {"select * from t for update", false},
      {"update t set a = 1", false},
      {"-- only a comment", false},
  };
  for (const auto& [sql, steady] : queries) EXPECT_EQ(steadyQuery(sql), steady) << sql;
  const std::pair<const char*, bool> names[] = {
      {"postgresql://clerk@db/payroll", true},
      {"postgres://db", true},
      {"host=/run/pg dbname=payroll", true},
      {"dbname = payroll", true},
      {"service=payroll", true},
      {"pay.db", false},
      {"/data/dbname=x.db", false},
      {"Data Source=pay.db", false},
  };
  for (const auto& [name, server] : names) EXPECT_EQ(namesServer(name), server) << name;
  // What scripts and messages see of a connection string: no password.
  const std::pair<const char*, const char*> shown[] = {
      {"postgresql://clerk:s3cret@db:5432/payroll?sslmode=require",
       "postgresql://clerk:***@db:5432/payroll?sslmode=require"},
      {"postgres://clerk:a@b@db/payroll", "postgres://clerk:***@db/payroll"},
      {"postgres://db/payroll?user=clerk&password=s3cret&sslmode=disable",
       "postgres://db/payroll?user=clerk&password=***&sslmode=disable"},
      {"host=db password = 'a b\\'c' user=clerk", "host=db password = *** user=clerk"},
      {"password=s3cret", "password=***"},
      {"host=db mypassword=x password=y", "host=db mypassword=x password=***"},
      {"postgresql://clerk@db/payroll", "postgresql://clerk@db/payroll"},
  };
  for (const auto& [connection, seen] : shown) EXPECT_EQ(shownConnection(connection), seen);
}

}  // namespace
}  // namespace korvex::ds
