// Registration (regsvr32): the class under its identifier, in-process with
// apartment threading; the class names Morlan.BasicEngine and its versioned
// form; the type library inside the component for early-binding hosts.
// Unregistering removes exactly what registering wrote.
#include <windows.h>
// the Windows headers below build on windows.h, which must come first
#include <oleauto.h>
#include <olectl.h>

#include <string>

#include "automation/interface.hpp"
#include "automation/module.hpp"

namespace korvex::automation {
namespace {

constexpr const wchar_t* kProgId = L"Morlan.BasicEngine";
constexpr const wchar_t* kVersionedProgId = L"Morlan.BasicEngine.1";
constexpr const wchar_t* kDescription = L"Morlan BasicEngine";

std::wstring guidText(REFGUID g) {
  wchar_t text[40] = {};
  StringFromGUID2(g, text, 40);
  return text;
}

// Writes the default value (name empty) or a named value of a key under
// HKEY_CLASSES_ROOT, creating the key.
bool setValue(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
  HKEY h = nullptr;
  if (RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                      KEY_WRITE, nullptr, &h, nullptr) != ERROR_SUCCESS) {
    return false;
  }
  const LONG r = RegSetValueExW(h, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                                static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
  RegCloseKey(h);
  return r == ERROR_SUCCESS;
}

void removeTree(const std::wstring& key) { RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str()); }

std::wstring classKey() { return L"CLSID\\" + guidText(CLSID_BasicEngine); }

HRESULT unregisterAll() {
  removeTree(classKey());
  removeTree(kProgId);
  removeTree(kVersionedProgId);
  const SYSKIND kind = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;
  UnRegisterTypeLib(LIBID_KORVEX, 1, 0, LOCALE_NEUTRAL, kind);
  return S_OK;
}

HRESULT registerAll() {
  const std::wstring path = modulePath();
  const std::wstring clsid = guidText(CLSID_BasicEngine);
  const std::wstring key = classKey();
  const bool written =
      setValue(key, nullptr, kDescription) && setValue(key + L"\\InprocServer32", nullptr, path) &&
      setValue(key + L"\\InprocServer32", L"ThreadingModel", L"Apartment") &&
      setValue(key + L"\\ProgID", nullptr, kVersionedProgId) &&
      setValue(key + L"\\VersionIndependentProgID", nullptr, kProgId) &&
      setValue(key + L"\\TypeLib", nullptr, guidText(LIBID_KORVEX)) &&
      setValue(key + L"\\Version", nullptr, L"1.0") && setValue(kProgId, nullptr, kDescription) &&
      setValue(std::wstring(kProgId) + L"\\CLSID", nullptr, clsid) &&
      setValue(std::wstring(kProgId) + L"\\CurVer", nullptr, kVersionedProgId) &&
      setValue(kVersionedProgId, nullptr, kDescription) &&
      setValue(std::wstring(kVersionedProgId) + L"\\CLSID", nullptr, clsid);
  if (!written) {
    unregisterAll();
    return SELFREG_E_CLASS;
  }
  ITypeLib* lib = nullptr;
  HRESULT hr = LoadTypeLibEx(path.c_str(), REGKIND_REGISTER, &lib);
  if (FAILED(hr)) {
    unregisterAll();
    return SELFREG_E_TYPELIB;
  }
  lib->Release();
  return S_OK;
}

}  // namespace
}  // namespace korvex::automation

STDAPI DllRegisterServer() {
  try {
    return korvex::automation::registerAll();
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}

STDAPI DllUnregisterServer() {
  try {
    return korvex::automation::unregisterAll();
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}
