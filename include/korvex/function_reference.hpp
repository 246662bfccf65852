// The reference of the built-in functions, made from the function table
// itself: each function's names, arguments, result, a one-line description,
// the errors its row tells of and, for the wage functions, sample calls with
// the SQL text they send. `korvex functions` prints it.
//
//   for (const korvex::FunctionReference& f : korvex::functionReferences())
//     show(f.signature, f.description);
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvex {

struct FunctionArgument {
  std::u16string name;
  bool optional = false;
};

/// An error the function's row tells of: its number, its message (the part
/// "(…)" stands for the argument text as written in the call) and when.
struct FunctionError {
  std::int32_t number = 0;
  std::u16string text;
  std::u16string when;
};

/// A sample call of a wage function and the SQL it sends (several
/// statements one per line).
struct FunctionSql {
  std::u16string call;
  std::u16string sql;
};

struct FunctionReference {
  std::u16string family;
  std::vector<std::u16string> names;  // the first is the one messages show
  std::u16string signature;           // MID(字符串, 开始[, 长度])
  std::vector<FunctionArgument> arguments;
  int minArgs = 0;  // -1: the count is not checked
  int maxArgs = 0;
  std::u16string result;  // 数值, 字符串, 日期, 布尔, 数组, 任意 or 无
  std::u16string description;
  std::vector<FunctionError> errors;
  std::vector<FunctionSql> sql;
};

/// Every built-in function, family by family in the order names are looked
/// up.
const std::vector<FunctionReference>& functionReferences();

/// The function one of whose names is `name` in any case, or nullptr.
const FunctionReference* findFunctionReference(std::u16string_view name);

}  // namespace korvex
