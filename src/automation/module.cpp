// The component's entry points: the class factory behind
// DllGetClassObject, and whether the component may be unloaded.
#include "automation/module.hpp"

#include <atomic>
#include <mutex>
#include <new>

#include "automation/engine_object.hpp"
#include "automation/interface.hpp"

namespace korvex::automation {
namespace {

HINSTANCE gModule = nullptr;
std::atomic<long> gObjects{0};
std::atomic<long> gLocks{0};

class ClassFactory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
    if (!out) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IClassFactory)) {
      *out = static_cast<IClassFactory*>(this);
      AddRef();
      return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
  }
  // The factory is static: its count only keeps the module loaded.
  ULONG STDMETHODCALLTYPE AddRef() override {
    lockModule(true);
    return 2;
  }
  ULONG STDMETHODCALLTYPE Release() override {
    lockModule(false);
    return 1;
  }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    auto* engine = new (std::nothrow) EngineObject();
    if (!engine) return E_OUTOFMEMORY;
    const HRESULT hr = engine->QueryInterface(riid, out);
    engine->Release();
    return hr;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    lockModule(lock != FALSE);
    return S_OK;
  }
};

ClassFactory gFactory;

}  // namespace

HINSTANCE moduleHandle() noexcept { return gModule; }

std::wstring modulePath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD n = GetModuleFileNameW(gModule, path.data(), static_cast<DWORD>(path.size()));
    if (n < path.size()) {
      path.resize(n);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

void objectCreated() noexcept { ++gObjects; }
void objectDestroyed() noexcept { --gObjects; }
void lockModule(bool lock) noexcept {
  if (lock) {
    ++gLocks;
  } else {
    --gLocks;
  }
}
bool moduleInUse() noexcept { return gObjects > 0 || gLocks > 0; }

ITypeInfo* engineTypeInfo() noexcept {
  // Kept for the life of the process: objects hand it out without a lock.
  static ITypeInfo* info = [] {
    ITypeInfo* ti = nullptr;
    ITypeLib* lib = nullptr;
    try {
      if (SUCCEEDED(LoadTypeLibEx(modulePath().c_str(), REGKIND_NONE, &lib))) {
        lib->GetTypeInfoOfGuid(IID__BasicEngine, &ti);
        lib->Release();
      }
    } catch (const std::bad_alloc&) {
    }
    return ti;
  }();
  return info;
}

}  // namespace korvex::automation

using namespace korvex::automation;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    gModule = instance;
    DisableThreadLibraryCalls(instance);
  }
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, LPVOID* out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (!IsEqualCLSID(clsid, CLSID_BasicEngine)) return CLASS_E_CLASSNOTAVAILABLE;
  return gFactory.QueryInterface(riid, out);
}

STDAPI DllCanUnloadNow() { return moduleInUse() ? S_FALSE : S_OK; }
