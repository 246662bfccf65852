// The platform's run-time errors, raised by value operations: an Error on
// its way up to whoever traps it.
//
// Inside KORVEX a failing Variant operation (a string that is no number, an
// overflow, a division by zero, a Null where a value is needed) behaves like
// the platform's run-time error: it unwinds to whoever traps it. The trap is
// the run loop of the engine (or an evaluator that maps faults to its own
// error); the exception never leaves the library.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "values/error.hpp"

namespace korvex::vb {

// Platform run-time error numbers.
inline constexpr std::int32_t kInvalidCall = 5;       // 无效的过程调用或参数
inline constexpr std::int32_t kOverflow = 6;          // 溢出
inline constexpr std::int32_t kSubscript = 9;         // 下标越界
inline constexpr std::int32_t kDivisionByZero = 11;   // 除数为零
inline constexpr std::int32_t kTypeMismatch = 13;     // 类型不匹配
inline constexpr std::int32_t kOutOfStackSpace = 28;  // 堆栈空间溢出
inline constexpr std::int32_t kObjectNotSet = 91;     // 对象变量或 With 块变量未设置
inline constexpr std::int32_t kInvalidNull = 94;      // 无效使用 Null
inline constexpr std::int32_t kObjectRequired = 424;  // 要求对象
inline constexpr std::int32_t kNoSuchMember = 438;    // 对象不支持该属性或方法

/// The platform's Chinese text for a run-time error number ("" if unknown).
std::u16string_view runtimeErrorText(std::int32_t number) noexcept;

class RuntimeError : public std::exception {
 public:
  /// An error with the platform's standard text for its number.
  explicit RuntimeError(std::int32_t number);
  /// An error with its own description (host object failures).
  RuntimeError(std::int32_t number, std::u16string description);
  explicit RuntimeError(Error error) : error_(std::move(error)) {}
  /// An error raised by a named component ("GetCell()函数"), which the
  /// platform keeps as the error's source.
  RuntimeError(std::int32_t number, std::u16string description, std::u16string source)
      : RuntimeError(number, std::move(description)) {
    source_ = std::move(source);
  }

  const Error& error() const noexcept { return error_; }
  std::int32_t number() const noexcept { return error_.number; }
  const std::u16string& description() const noexcept { return error_.text; }
  const std::u16string& source() const noexcept { return source_; }
  const char* what() const noexcept override { return "korvex run-time error"; }

 private:
  Error error_;
  std::u16string source_;
};

[[noreturn]] void raise(std::int32_t number);

}  // namespace korvex::vb
