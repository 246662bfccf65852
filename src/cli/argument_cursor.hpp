// The steps every subcommand's option parser shares: walking the
// arguments, taking an option's value and reporting a usage error.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

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
};

}  // namespace korvex::cli
