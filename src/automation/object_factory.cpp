#include "automation/object_factory.hpp"

#include <windows.h>
// the Windows headers below build on windows.h, which must come first
#include <objbase.h>

#include <string>

#include "automation/com_ptr.hpp"
#include "automation/dispatch_object.hpp"

namespace korvex::automation {

ObjectRef DataAccessFactory::create(std::u16string_view className) {
  if (host_) {
    const Value args[] = {Value::string(className)};
    const DispatchResult r = host_->callMethod(u"CreateObject", args);
    return r.ok() && r.value.isObject() ? r.value.objectValue() : nullptr;
  }
  std::wstring progId = L"ADODB.";
  progId.append(className.begin(), className.end());
  CLSID clsid;
  if (FAILED(CLSIDFromProgID(progId.c_str(), &clsid))) return nullptr;
  ComPtr<IDispatch> disp;
  if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                              IID_IDispatch, reinterpret_cast<void**>(disp.put())))) {
    return nullptr;
  }
  return wrapDispatch(disp.get());
}

}  // namespace korvex::automation
