#include "korvex/system_error.hpp"

#include <cerrno>
#include <cstring>

namespace korvex {

std::string systemErrorText(int code) {
  struct Reason {
    int code;
    const char* text;
  };
  static constexpr Reason kReasons[] = {
      {ENOENT, "文件不存在"},        {EACCES, "没有访问权限"},          {EPERM, "没有访问权限"},
      {EISDIR, "是一个目录"},        {ENOTDIR, "路径中有一段不是目录"}, {ENOSPC, "设备上没有空间"},
      {EPIPE, "管道的读取端已关闭"},
  };
  for (const Reason& r : kReasons) {
    if (r.code == code) return r.text;
  }
  return std::strerror(code);
}

}  // namespace korvex
