// The function reference (korvex/function_reference.hpp): the catalog's rows
// and the evaluator's own functions, each described from its row: the
// arguments and texts its doc holds, the errors its counts, checks and
// quirks imply, with the texts of the engine's message table.
#include "korvex/function_reference.hpp"

#include "engine/messages.hpp"
#include "eval/function_table.hpp"
#include "functions/catalog.hpp"
#include "values/text_scan.hpp"

namespace korvex {
namespace {

std::u16string_view kindName(fn::ResultKind kind) {
  switch (kind) {
    case fn::ResultKind::Number:
      return u"数值";
    case fn::ResultKind::String:
      return u"字符串";
    case fn::ResultKind::Date:
      return u"日期";
    case fn::ResultKind::Boolean:
      return u"布尔";
    case fn::ResultKind::Array:
      return u"数组";
    case fn::ResultKind::Any:
      return u"任意";
    case fn::ResultKind::Nothing:
      break;
  }
  return u"无";
}

// What an argument that fails its check is not.
std::u16string_view checkFailure(ArgCheck check) {
  switch (check) {
    case ArgCheck::Any:
      break;
    case ArgCheck::Numeric:
      return u"不是数值";
    case ArgCheck::NumericOrNull:
      return u"不是数值或 Null";
    case ArgCheck::NonNegative:
      return u"不是不小于 0 的数值";
    case ArgCheck::Date:
      return u"不是日期";
    case ArgCheck::String:
      return u"不是字符串";
    case ArgCheck::Textual:
      return u"没有文本形式 (是 Null、对象或数组)";
    case ArgCheck::Array:
      return u"不是数组";
  }
  return {};
}

// "字符串, 开始[, 长度]": the names in order, optional from the first "[".
std::vector<FunctionArgument> parseArguments(std::u16string_view text) {
  std::vector<FunctionArgument> out;
  int depth = 0;
  FunctionArgument current;
  const auto flush = [&] {
    current.name = std::u16string(trimBlanks(current.name));
    if (!current.name.empty()) out.push_back(std::move(current));
    current = {};
  };
  for (const char16_t c : text) {
    if (c == u'[' || c == u']' || c == u',') {
      flush();
      depth += c == u'[' ? 1 : (c == u']' ? -1 : 0);
    } else {
      if (trimBlanks(current.name).empty()) current.optional = depth > 0;
      current.name += c;
    }
  }
  flush();
  return out;
}

std::u16string decimal(int n) {
  const std::string digits = std::to_string(n);
  return std::u16string(digits.begin(), digits.end());
}

std::u16string join(const std::vector<std::u16string>& parts) {
  std::u16string out;
  for (const std::u16string& p : parts) out += (out.empty() ? u"" : u"; ") + p;
  return out;
}

// The errors every call through the common steps can give (eval/call.cpp).
std::vector<FunctionError> commonErrors(const fn::FunctionEntry& e,
                                        const std::vector<FunctionArgument>& args) {
  const std::u16string suffix = !e.fixedSuffix.empty()
                                    ? std::u16string(e.fixedSuffix)
                                    : u"{函数:" + std::u16string(e.displayName()) + u"(…)}";
  std::vector<std::u16string> count{u"参数表达式有误 (如多余的逗号)"};
  if (e.minArgs >= 0) {
    count.push_back(e.minArgs == e.maxArgs ? u"参数不是 " + decimal(e.minArgs) + u" 个"
                                           : u"参数少于 " + decimal(e.minArgs) + u" 个或多于 " +
                                                 decimal(e.maxArgs) + u" 个");
  }
  if (e.quirks & fn::kRequiresParenthesis) count.push_back(u"参数前没有 (");
  std::vector<FunctionError> errors{
      {msg::kBadArguments.number, std::u16string(msg::kBadArguments.text) + suffix, join(count)}};

  std::vector<std::u16string> type;
  const std::size_t positions = e.minArgs < 0 ? 0 : static_cast<std::size_t>(e.maxArgs);
  for (std::size_t i = 0; i < positions && i < e.checks.size(); ++i) {
    if (e.checks[i] == ArgCheck::Any) continue;
    const std::u16string name =
        i < args.size() ? args[i].name : u"第 " + decimal(static_cast<int>(i + 1)) + u" 个参数";
    type.push_back(name + u" " + std::u16string(checkFailure(e.checks[i])));
  }
  if (!e.doc.ownTypeTests.empty()) type.emplace_back(e.doc.ownTypeTests);
  if (!type.empty()) {
    const bool plain = (e.quirks & fn::kPlainTypeMessage) != 0;
    errors.push_back({msg::kTypeMismatch.number,
                      std::u16string(msg::kTypeMismatch.text) + (plain ? u"" : suffix),
                      join(type)});
  }
  return errors;
}

FunctionReference describe(std::u16string_view family,
                           const std::array<std::u16string_view, 2>& names,
                           const fn::FunctionDoc& doc) {
  FunctionReference r;
  r.family = family;
  for (const std::u16string_view name : names) {
    if (!name.empty()) r.names.emplace_back(name);
  }
  r.arguments = parseArguments(doc.arguments);
  r.signature = r.names.front() + u"(" + std::u16string(doc.arguments) + u")";
  r.result = kindName(doc.result);
  r.description = doc.summary;
  if (doc.sql != nullptr) {
    for (fn::SqlExample& example : doc.sql()) {
      r.sql.push_back({std::move(example.call), std::move(example.sql)});
    }
  }
  return r;
}

std::vector<FunctionReference> build() {
  std::vector<FunctionReference> out;
  const auto families = fn::families();
  const auto titles = fn::familyTitles();
  const auto addFamily = [&](std::size_t i) {
    for (const fn::FunctionEntry& e : families[i]) {
      FunctionReference r = describe(titles[i], e.names, e.doc);
      r.minArgs = e.minArgs;
      r.maxArgs = e.maxArgs;
      r.errors = commonErrors(e, r.arguments);
      out.push_back(std::move(r));
    }
  };
  // The cell functions come before the evaluator's own names.
  addFamily(0);
  for (const eval::InlineFunction& f : eval::inlineFunctions()) {
    FunctionReference r = describe(u"表达式内置函数", {f.name, {}}, f.doc);
    r.minArgs = r.maxArgs = static_cast<int>(r.arguments.size());
    out.push_back(std::move(r));
  }
  for (std::size_t i = 1; i < families.size() && i < titles.size(); ++i) addFamily(i);
  return out;
}

}  // namespace

const std::vector<FunctionReference>& functionReferences() {
  static const std::vector<FunctionReference> all = build();
  return all;
}

const FunctionReference* findFunctionReference(std::u16string_view name) {
  for (const FunctionReference& f : functionReferences()) {
    for (const std::u16string& n : f.names) {
      if (equalsNoCase(n, name)) return &f;
    }
  }
  return nullptr;
}

}  // namespace korvex
