#include "values/runtime_error.hpp"

namespace korvex::vb {

std::u16string_view runtimeErrorText(std::int32_t number) noexcept {
  switch (number) {
    case kInvalidCall:
      return u"无效的过程调用或参数";
    case kOverflow:
      return u"溢出";
    case kSubscript:
      return u"下标越界";
    case kDivisionByZero:
      return u"除数为零";
    case kTypeMismatch:
      return u"类型不匹配";
    case kOutOfStackSpace:
      return u"堆栈空间溢出";
    case kObjectNotSet:
      return u"对象变量或 With 块变量未设置";
    case kInvalidNull:
      return u"无效使用 Null";
    case kObjectRequired:
      return u"要求对象";
    case kNoSuchMember:
      return u"对象不支持该属性或方法";
    default:
      return u"";
  }
}

RuntimeError::RuntimeError(std::int32_t number)
    : error_{number, std::u16string(runtimeErrorText(number))} {}

RuntimeError::RuntimeError(std::int32_t number, std::u16string description)
    : error_{number, std::move(description)} {}

void raise(std::int32_t number) { throw RuntimeError(number); }

}  // namespace korvex::vb
