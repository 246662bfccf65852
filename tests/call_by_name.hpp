// Calls a built-in function directly, as the evaluator does once it has
// read the name: the catalog's entry with the argument text split.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>

#include "eval/call.hpp"
#include "facade/context_of.hpp"
#include "functions/catalog.hpp"

namespace korvex::testing {

/// Status of the call of the function named `upperName` with `argText`
/// (parentheses included); -1 (and a test failure) for an unknown name.
inline std::int32_t callByName(std::u16string_view upperName, std::u16string_view argText,
                               Value& result, BasicEngine& engine) {
  const fn::FunctionEntry* entry = fn::findFunction(upperName);
  if (entry == nullptr) {
    ADD_FAILURE() << "no function " << toUtf8(upperName);
    return -1;
  }
  eval::ArgList args(argText);
  return eval::Invoke(*entry, args, result, contextOf(engine));
}

}  // namespace korvex::testing
