#include "automation/dispatch_object.hpp"

#include <dispex.h>

#include <string>
#include <utility>
#include <vector>

#include "automation/com_ptr.hpp"
#include "automation/variant.hpp"
#include "values/runtime_error.hpp"
#include "values/text_scan.hpp"

namespace korvex::automation {
namespace {

// The error numbers scripts know for the dispatch failures that carry no
// description of their own.
std::int32_t scriptNumber(HRESULT hr) {
  struct Known {
    HRESULT hr;
    std::int32_t number;
  };
  static constexpr Known kKnown[] = {
      {DISP_E_MEMBERNOTFOUND, 438},
      {DISP_E_UNKNOWNNAME, 438},
      {DISP_E_TYPEMISMATCH, 13},
      {DISP_E_BADPARAMCOUNT, 450},
      {DISP_E_PARAMNOTOPTIONAL, 449},
      {DISP_E_OVERFLOW, 6},
      {DISP_E_BADINDEX, 9},
      {DISP_E_DIVBYZERO, 11},
      {E_OUTOFMEMORY, 7},
      {E_NOINTERFACE, 430},
      {E_INVALIDARG, 5},
      {DISP_E_ARRAYISLOCKED, 10},
  };
  for (const Known& k : kKnown) {
    if (k.hr == hr) return k.number;
  }
  // Errors raised in the scripting style carry their number in the low word.
  if (HRESULT_FACILITY(hr) == FACILITY_CONTROL) return HRESULT_CODE(hr);
  return static_cast<std::int32_t>(hr);
}

class DispatchObject final : public HostObject {
 public:
  explicit DispatchObject(IDispatch* disp) : disp_(ComPtr<IDispatch>::share(disp)) {}

  IDispatch* dispatch() const noexcept { return disp_.get(); }

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override {
    DispatchResult r = invokeNamed(name, DISPATCH_PROPERTYGET | DISPATCH_METHOD, args, nullptr);
    if (r.ok() || args.empty()) return r;
    // A property without parameters that is given arguments is read whole
    // and its value's default member takes them, as automation clients do:
    // Fields(0) is Fields.Item(0) even for an object whose Fields refuses
    // an argument. The first failure stands when that fails too.
    const DispatchResult whole =
        invokeNamed(name, DISPATCH_PROPERTYGET | DISPATCH_METHOD, {}, nullptr);
    if (!whole.ok() || !whole.value.isObject() || !whole.value.objectValue()) return r;
    DispatchResult item = whole.value.objectValue()->getDefault(args);
    return item.ok() ? item : r;
  }
  DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                             const Value& value) override {
    DispatchResult r = invokeNamed(name, DISPATCH_PROPERTYPUT, args, &value);
    // An object value may only be accepted by reference (Set).
    if (!r.ok() && r.number == 438 && value.isObject()) {
      r = invokeNamed(name, DISPATCH_PROPERTYPUTREF, args, &value);
    }
    return r;
  }
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override {
    return invokeNamed(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, args, nullptr);
  }
  DispatchResult getDefault(std::span<const Value> args) override {
    DispatchResult r =
        invoke({DISPID_VALUE, false}, DISPATCH_PROPERTYGET | DISPATCH_METHOD, args, nullptr);
    if (!r.ok() && r.number == 438) return getProperty(u"Value", args);
    return r;
  }

 private:
  struct Member {
    DISPID id = DISPID_UNKNOWN;
    bool ex = false;  // found through IDispatchEx: call through InvokeEx
  };

  DispatchResult invokeNamed(std::u16string_view name, WORD flags, std::span<const Value> args,
                             const Value* put) {
    Member m;
    if (!lookUp(name, m)) return memberNotFound(name);
    return invoke(m, flags, args, put);
  }

  bool lookUp(std::u16string_view name, Member& found) {
    for (const auto& [known, member] : members_) {
      if (vb::equalsNoCase(known, name)) {
        found = member;
        return true;
      }
    }
    std::u16string text(name);
    LPOLESTR names[] = {reinterpret_cast<LPOLESTR>(text.data())};
    Member m;
    if (FAILED(disp_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &m.id))) {
      if (!dispatchEx()) return false;
      BSTR b = toBstr(name);
      if (!b) return false;
      const HRESULT hr = ex_->GetDispID(b, fdexNameCaseInsensitive, &m.id);
      SysFreeString(b);
      if (FAILED(hr)) return false;
      m.ex = true;
    }
    members_.emplace_back(std::move(text), m);
    found = m;
    return true;
  }

  bool dispatchEx() {
    if (!ex_) disp_->QueryInterface(__uuidof(IDispatchEx), reinterpret_cast<void**>(ex_.put()));
    return static_cast<bool>(ex_);
  }

  DispatchResult invoke(Member m, WORD flags, std::span<const Value> args, const Value* put) {
    // Arguments go in reverse order; a written value is the named argument.
    std::vector<VARIANT> argv(args.size() + (put ? 1 : 0));
    for (VARIANT& v : argv) VariantInit(&v);
    struct Clear {
      std::vector<VARIANT>& v;
      ~Clear() {
        for (VARIANT& x : v) VariantClear(&x);
      }
    } clear{argv};
    std::size_t slot = 0;
    if (put) {
      HRESULT hr = toVariant(*put, argv[slot++]);
      if (FAILED(hr)) return dispatchFailure(hr, nullptr);
    }
    for (std::size_t i = args.size(); i-- > 0;) {
      HRESULT hr = toVariant(args[i], argv[slot++]);
      if (FAILED(hr)) return dispatchFailure(hr, nullptr);
    }
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS params{};
    params.rgvarg = argv.empty() ? nullptr : argv.data();
    params.cArgs = static_cast<UINT>(argv.size());
    if (put) {
      params.rgdispidNamedArgs = &named;
      params.cNamedArgs = 1;
    }
    VARIANT result;
    VariantInit(&result);
    EXCEPINFO info{};
    UINT argErr = 0;
    HRESULT hr;
    if (m.ex || (m.id == DISPID_VALUE && dispatchEx())) {
      hr = ex_->InvokeEx(m.id, LOCALE_USER_DEFAULT, flags, &params, &result, &info, nullptr);
    } else {
      hr = disp_->Invoke(m.id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, &result, &info,
                         &argErr);
    }
    if (FAILED(hr)) {
      VariantClear(&result);
      return dispatchFailure(hr, &info);
    }
    Value out;
    hr = toValue(result, out);
    VariantClear(&result);
    if (FAILED(hr)) return dispatchFailure(hr, nullptr);
    return DispatchResult::success(std::move(out));
  }

  ComPtr<IDispatch> disp_;
  ComPtr<IDispatchEx> ex_;
  std::vector<std::pair<std::u16string, Member>> members_;  // names seen so far
};

}  // namespace

ObjectRef wrapDispatch(IDispatch* disp) {
  if (!disp) return nullptr;
  return std::make_shared<DispatchObject>(disp);
}

IDispatch* dispatchOf(const ObjectRef& obj) {
  auto* d = dynamic_cast<DispatchObject*>(obj.get());
  if (!d) return nullptr;
  IDispatch* disp = d->dispatch();
  disp->AddRef();
  return disp;
}

DispatchResult dispatchFailure(HRESULT hr, EXCEPINFO* info) {
  std::u16string description;
  if (hr == DISP_E_EXCEPTION && info) {
    if (info->pfnDeferredFillIn) info->pfnDeferredFillIn(info);
    hr = info->scode != 0 ? info->scode
                          : MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, info->wCode);
    description = fromBstr(info->bstrDescription);
  }
  if (info) {
    SysFreeString(info->bstrSource);
    SysFreeString(info->bstrDescription);
    SysFreeString(info->bstrHelpFile);
    *info = EXCEPINFO{};
  }
  const std::int32_t number = scriptNumber(hr);
  if (description.empty()) description = vb::runtimeErrorText(number);
  if (description.empty()) description = u"自动化错误";
  return DispatchResult::failure(number, std::move(description));
}

}  // namespace korvex::automation
