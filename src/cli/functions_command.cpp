#include "functions_command.hpp"

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "json.hpp"
#include "korvex/function_reference.hpp"
#include "korvex/value.hpp"

namespace korvex::cli {
namespace {

constexpr std::string_view kUsage =
    "用法: korvex functions [NAME] [--json]\n"
    "不给 NAME 时按类列出全部内置函数的用法和说明; 给 NAME (函数的任一名称,\n"
    "不分大小写) 时显示该函数的全部条目: 名称, 用法, 可选参数, 结果, 说明,\n"
    "可能的错误, 工资函数还有发给数据库的 SQL。\n"
    "  --json   作为一个 JSON 对象输出\n"
    "退出状态: 0; 2 未知的函数名或用法错误。\n";

std::string u8(std::u16string_view s) { return toUtf8(s); }

// ---- text ----

void listText(std::ostream& out) {
  std::u16string family;
  for (const FunctionReference& f : functionReferences()) {
    if (f.family != family) {
      out << (family.empty() ? "" : "\n") << u8(f.family) << "\n";
      family = f.family;
    }
    out << "  " << u8(f.signature) << " → " << u8(f.result) << "  " << u8(f.description);
    if (f.names.size() > 1) out << " (又名 " << u8(f.names[1]) << ")";
    out << "\n";
  }
}

void entryText(const FunctionReference& f, std::ostream& out) {
  std::string names, optional;
  for (const std::u16string& n : f.names) names += (names.empty() ? "" : ", ") + u8(n);
  for (const FunctionArgument& a : f.arguments) {
    if (a.optional) optional += (optional.empty() ? "" : ", ") + u8(a.name);
  }
  out << u8(f.names.front()) << "\n"
      << "  名称: " << names << "\n"
      << "  类别: " << u8(f.family) << "\n"
      << "  用法: " << u8(f.signature) << "\n"
      << "  可选参数: " << (optional.empty() ? "无" : optional) << "\n"
      << "  结果: " << u8(f.result) << "\n"
      << "  说明: " << u8(f.description) << "\n";
  if (!f.errors.empty()) {
    out << "  错误 ((…) 为调用时写的参数):\n";
    for (const FunctionError& e : f.errors) {
      out << "    " << e.number << " " << u8(e.text) << "\n      当 " << u8(e.when) << "\n";
    }
  }
  if (!f.sql.empty()) {
    out << "  SQL:\n";
    for (const FunctionSql& s : f.sql) {
      out << "    " << u8(s.call) << "\n";
      std::u16string_view text = s.sql;
      while (!text.empty()) {
        const std::size_t brk = std::min(text.find(u'\n'), text.size());
        out << "      " << u8(text.substr(0, brk)) << "\n";
        text.remove_prefix(std::min(brk + 1, text.size()));
      }
    }
  }
}

// ---- JSON ----

template <class T, class Write>
std::string jsonList(const std::vector<T>& items, Write write) {
  std::string out = "[";
  for (const T& item : items) out += (out.size() > 1 ? ", " : "") + write(item);
  return out + "]";
}

std::string entryJson(const FunctionReference& f) {
  return "{\"names\": " + jsonList(f.names, [](const auto& n) { return jsonString(n); }) +
         ", \"family\": " + jsonString(f.family) + ", \"signature\": " + jsonString(f.signature) +
         ", \"arguments\": " +
         jsonList(f.arguments,
                  [](const FunctionArgument& a) {
                    return "{\"name\": " + jsonString(a.name) +
                           ", \"optional\": " + (a.optional ? "true" : "false") + "}";
                  }) +
         ", \"minArgs\": " + std::to_string(f.minArgs) +
         ", \"maxArgs\": " + std::to_string(f.maxArgs) + ", \"result\": " + jsonString(f.result) +
         ", \"description\": " + jsonString(f.description) + ", \"errors\": " +
         jsonList(f.errors,
                  [](const FunctionError& e) {
                    return "{\"number\": " + std::to_string(e.number) +
                           ", \"text\": " + jsonString(e.text) +
                           ", \"when\": " + jsonString(e.when) + "}";
                  }) +
         ", \"sql\": " +
         jsonList(f.sql,
                  [](const FunctionSql& s) {
                    return "{\"call\": " + jsonString(s.call) + ", \"text\": " + jsonString(s.sql) +
                           "}";
                  }) +
         "}";
}

std::string listJson() {
  std::string out = "{\"families\": [";
  std::u16string family;
  for (const FunctionReference& f : functionReferences()) {
    if (f.family != family) {
      out += family.empty() ? "" : "]}, ";
      family = f.family;
      out += "{\"family\": " + jsonString(family) + ", \"functions\": [";
    } else {
      out += ", ";
    }
    out += entryJson(f);
  }
  return out + (family.empty() ? "]}" : "]}]}");
}

// ---- nearest names ----

std::u16string upper(std::u16string_view s) {
  std::u16string out(s);
  for (char16_t& c : out) {
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
  }
  return out;
}

std::size_t distance(std::u16string_view a, std::u16string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// Up to five names within a third of the name's length (at least 1) of
// edits, or containing it, nearest first.
std::vector<std::u16string> nearestNames(std::u16string_view wanted) {
  const std::u16string key = upper(wanted);
  const std::size_t limit = std::max<std::size_t>(1, key.size() / 3);
  std::vector<std::pair<std::size_t, std::u16string>> scored;
  for (const FunctionReference& f : functionReferences()) {
    for (const std::u16string& name : f.names) {
      const std::u16string other = upper(name);
      std::size_t d = distance(key, other);
      if (d > limit && other.find(key) != std::u16string::npos) d = limit;
      if (d <= limit) scored.emplace_back(d, name);
    }
  }
  std::stable_sort(scored.begin(), scored.end(),
                   [](const auto& x, const auto& y) { return x.first < y.first; });
  std::vector<std::u16string> out;
  for (std::size_t i = 0; i < scored.size() && i < 5; ++i) out.push_back(scored[i].second);
  return out;
}

int usageError(std::ostream& err, const std::string& message) {
  err << "korvex functions: " << message << "\n" << kUsage;
  return 2;
}

}  // namespace

int runFunctions(std::span<const std::string_view> args, std::ostream& out, std::ostream& err) {
  bool json = false;
  std::optional<std::string_view> name;
  for (const std::string_view arg : args) {
    if (arg == "--help" || arg == "-h") {
      out << kUsage;
      return 0;
    }
    if (arg == "--json") {
      json = true;
    } else if (arg.starts_with("--")) {
      return usageError(err, "未知的选项 '" + std::string(arg) + "'");
    } else if (name) {
      return usageError(err, "只能给一个函数名");
    } else {
      name = arg;
    }
  }
  if (!name) {
    if (json) {
      out << listJson() << "\n";
    } else {
      listText(out);
    }
    return 0;
  }
  const std::u16string wanted = fromUtf8(*name);
  const FunctionReference* f = findFunctionReference(wanted);
  if (f == nullptr) {
    err << "korvex functions: 没有名为 '" << *name << "' 的函数。";
    const std::vector<std::u16string> near = nearestNames(wanted);
    std::string list;
    for (const std::u16string& n : near) list += (list.empty() ? "" : ", ") + u8(n);
    if (!list.empty()) err << "相近的名称: " << list << "。";
    err << "\n用 'korvex functions' 查看全部函数。\n";
    return 2;
  }
  if (json) {
    out << entryJson(*f) << "\n";
  } else {
    entryText(*f, out);
  }
  return 0;
}

}  // namespace korvex::cli
