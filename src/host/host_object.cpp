#include "korvex/host_object.hpp"

namespace korvex {

DispatchResult memberNotFound(std::u16string_view /*member*/) {
  return DispatchResult::failure(438, u"对象不支持该属性或方法");
}

}  // namespace korvex
