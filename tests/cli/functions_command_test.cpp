// `korvex functions`: one entry as text and as JSON, the list, and an
// unknown name with the nearest names.
#include "cli/functions_command.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace korvex::cli {
namespace {

struct Ran {
  int status;
  std::string out, err;
};

Ran functions(std::vector<std::string_view> args) {
  std::ostringstream out, err;
  const int status = runFunctions(args, out, err);
  return {status, out.str(), err.str()};
}

TEST(FunctionsCommand, ShowsOneEntryAsTextAndJson) {
  const Ran mid = functions({"mid"});
  EXPECT_EQ(mid.status, 0);
  for (const char* line : {"  用法: MID(字符串, 开始[, 长度])\n", "  可选参数: 长度\n",
                           "  结果: 字符串\n", "    6 错误的参数表达式或参数个数{MID()}\n",
                           "      当 字符串 不是字符串; 开始 不是数值; 长度 不是数值\n"}) {
    EXPECT_NE(mid.out.find(line), std::string::npos) << line << mid.out;
  }
  // The other name finds the same entry; the SQL is the builders' text.
  const Ran piece = functions({"计件工资额", "--json"});
  EXPECT_EQ(piece.status, 0);
  EXPECT_EQ(piece.out.rfind("{\"names\": [\"_计件工资额\", \"计件工资额\"], ", 0), 0u) << piece.out;
  for (const char* part :
       {"{\"name\": \"工号\", \"optional\": true}", "\"minArgs\": 2, \"maxArgs\": 3",
        "{\"call\": \"_计件工资额(2025, 3, \\\"00001\\\")\", \"text\": \"SELECT  SUM(工资合计) AS "
        "合计  From WA_JobData WHERE (YEAR(日期) = 2025) AND (MONTH(日期) = 3)  AND "
        "工号='00001'\"}"}) {
    EXPECT_NE(piece.out.find(part), std::string::npos) << part << "\n" << piece.out;
  }
}

TEST(FunctionsCommand, ListsEveryFamilyOnceAndRefusesUnknownNames) {
  const Ran all = functions({});
  EXPECT_EQ(all.status, 0);
  for (const char* title : {"\n字符串函数\n", "\n工资函数: 产量\n", "  LEN(值) → 数值"}) {
    EXPECT_EQ(all.out.find(title), all.out.rfind(title)) << title;
    EXPECT_NE(all.out.find(title), std::string::npos) << title;
  }
  const Ran near = functions({"lenn"});
  EXPECT_EQ(near.status, 2);
  EXPECT_TRUE(near.out.empty());
  EXPECT_NE(near.err.find("没有名为 'lenn' 的函数。相近的名称: LEN。"), std::string::npos)
      << near.err;
  EXPECT_EQ(functions({"mid", "left"}).status, 2);
}

}  // namespace
}  // namespace korvex::cli
