// The steps every subcommand's option parser shares: walking the
// arguments, taking an option's value, the options both subcommands know
// (--set, flags, file paths) and reporting a usage error.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "korvex/locale.hpp"
#include "options.hpp"

namespace korvex::cli {

struct ArgumentCursor {
  std::span<const std::string_view> args;
  std::size_t next = 0;
  CommandLine result;

  bool fail(std::string message) {
    result.action = CommandLine::Action::Error;
    result.error = std::move(message);
    return false;
  }

  // The value of an option given as "--opt VALUE" or "--opt=VALUE".
  std::optional<std::string_view> value(std::string_view option,
                                        std::optional<std::string_view> inlineValue) {
    if (inlineValue) return inlineValue;
    if (next >= args.size()) {
      fail("选项 " + std::string(option) + " 需要一个值");
      return std::nullopt;
    }
    return args[next++];
  }

  // An option without a value (--json, --dry-run, ...).
  bool flag(std::string_view option, std::optional<std::string_view> inlineValue, bool& target) {
    if (inlineValue) return fail("选项 " + std::string(option) + " 不带值");
    target = true;
    return true;
  }

  // An option whose value must not be empty (a path, a query, ...).
  bool text(std::string_view option, std::optional<std::string_view> inlineValue,
            std::string& target) {
    const auto v = value(option, inlineValue);
    if (!v) return false;
    if (v->empty()) return fail("选项 " + std::string(option) + " 的值不能为空");
    target = std::string(*v);
    return true;
  }

  // --encoding: utf-8 (utf8), or the Chinese code page by any of its names
  // (gbk, gb2312, cp936, gb18030); any case.
  // --locale zh-CN|en-US.
  bool locale(std::string_view option, std::optional<std::string_view> inlineValue,
              std::string& target) {
    const auto v = value(option, inlineValue);
    if (!v) return false;
    if (Locale::byName(*v) == nullptr) {
      return fail("未知的区域设置 '" + std::string(*v) + "' (可用 zh-CN 或 en-US)");
    }
    target = std::string(*v);
    return true;
  }

  bool encoding(std::string_view option, std::optional<std::string_view> inlineValue,
                Encoding& target) {
    const auto v = value(option, inlineValue);
    if (!v) return false;
    std::string lower;
    for (char c : *v) lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (lower == "utf-8" || lower == "utf8") {
      target = Encoding::Utf8;
    } else if (lower == "gbk" || lower == "gb2312" || lower == "cp936" || lower == "gb18030") {
      target = Encoding::Gbk;
    } else {
      return fail("未知的编码 '" + std::string(*v) +
                  "' (可用 utf-8 或 gbk, gb2312, cp936, gb18030)");
    }
    return true;
  }

  // --set NAME=EXPR, kept in command-line order.
  bool preset(std::string_view option, std::optional<std::string_view> inlineValue,
              std::vector<Preset>& presets) {
    const auto v = value(option, inlineValue);
    if (!v) return false;
    auto parsed = parsePreset(*v);
    if (!parsed) return fail("--set 需要 NAME=EXPR 的形式, 而不是 '" + std::string(*v) + "'");
    presets.push_back(std::move(*parsed));
    return true;
  }

  // Walks the remaining arguments: every option goes to
  // `option(name, inlineValue)`, every other argument to `positional(arg)`
  // ("--" ends the options). False after a usage error or --help.
  template <class Positional, class Option>
  bool walkAll(Positional positional, Option option) {
    bool optionsEnded = false;
    while (next < args.size()) {
      const std::string_view arg = args[next++];
      if (!optionsEnded && arg == "--") {
        optionsEnded = true;
        continue;
      }
      if (!optionsEnded && arg.size() > 1 && arg[0] == '-') {
        std::string_view name = arg;
        std::optional<std::string_view> inlineValue;
        if (const auto eq = arg.find('='); eq != std::string_view::npos) {
          name = arg.substr(0, eq);
          inlineValue = arg.substr(eq + 1);
        }
        if (name == "--help" || name == "-h") {
          result.action = CommandLine::Action::Help;
          return false;
        }
        if (!option(name, inlineValue)) return false;
        continue;
      }
      if (!positional(arg)) return false;
    }
    return true;
  }

  // The same for a command that takes one script.
  template <class Option>
  bool walk(std::string& script, Option option) {
    const auto one = [&](std::string_view arg) {
      if (!script.empty()) {
        return fail("给出了多个脚本 ('" + script + "' 和 '" + std::string(arg) + "')");
      }
      script = std::string(arg);
      return true;
    };
    if (!walkAll(one, option)) return false;
    if (script.empty()) return fail("缺少脚本文件");
    return true;
  }
};

}  // namespace korvex::cli
