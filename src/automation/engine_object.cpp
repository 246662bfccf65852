#include "automation/engine_object.hpp"

#include <new>
#include <string>

#include "automation/dispatch_object.hpp"
#include "automation/module.hpp"
#include "automation/variant.hpp"

namespace korvex::automation {
namespace {

VARIANT_BOOL vbBool(bool b) { return b ? VARIANT_TRUE : VARIANT_FALSE; }

HRESULT giveString(const std::u16string& s, BSTR* out) {
  if (!out) return E_POINTER;
  *out = toBstr(s);
  return *out || s.empty() ? S_OK : E_OUTOFMEMORY;
}

HRESULT giveValue(const Value& v, VARIANT* out) {
  if (!out) return E_POINTER;
  VariantInit(out);
  return toVariant(v, *out);
}

HRESULT giveObject(const ObjectRef& obj, IDispatch** out) {
  if (!out) return E_POINTER;
  *out = dispatchOf(obj);
  return S_OK;
}

// Members that build host objects or values allocate: running out of memory
// is reported as such, never thrown through the interface.
template <class F>
HRESULT guard(F&& f) noexcept {
  try {
    return f();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

// Hands a host object to one of the engine's setters.
template <class Set>
HRESULT storeObject(IDispatch* disp, Set&& set) noexcept {
  return guard([&]() -> HRESULT {
    set(wrapDispatch(disp));
    return S_OK;
  });
}

template <class T, class U>
HRESULT give(T value, U* out) {
  if (!out) return E_POINTER;
  *out = static_cast<U>(value);
  return S_OK;
}

}  // namespace

EngineObject::EngineObject()
    : ui_(std::make_shared<WindowsUserInterface>()),
      objects_(std::make_shared<DataAccessFactory>()) {
  objectCreated();
  engine_.SetUserInterface(ui_);
  engine_.SetObjectFactory(objects_);
  // The run yields to the host's message loop once per line, so that the
  // host's windows stay alive during a long run.
  engine_.SetLineHook([](std::int16_t) {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&msg);
      DispatchMessageW(&msg);
    }
    return true;
  });
}

EngineObject::~EngineObject() { objectDestroyed(); }

// ---- IUnknown and IDispatch -------------------------------------------------

HRESULT EngineObject::QueryInterface(REFIID riid, void** out) {
  if (!out) return E_POINTER;
  if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) ||
      IsEqualIID(riid, IID__BasicEngine)) {
    *out = static_cast<_BasicEngine*>(this);
    AddRef();
    return S_OK;
  }
  *out = nullptr;
  return E_NOINTERFACE;
}

ULONG EngineObject::AddRef() { return ++refs_; }

ULONG EngineObject::Release() {
  const ULONG left = --refs_;
  if (left == 0) delete this;
  return left;
}

HRESULT EngineObject::GetTypeInfoCount(UINT* count) { return give(1, count); }

HRESULT EngineObject::GetTypeInfo(UINT index, LCID, ITypeInfo** info) {
  if (!info) return E_POINTER;
  *info = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  ITypeInfo* ti = engineTypeInfo();
  if (!ti) return TYPE_E_CANTLOADLIBRARY;
  ti->AddRef();
  *info = ti;
  return S_OK;
}

HRESULT EngineObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  ITypeInfo* ti = engineTypeInfo();
  if (!ti) return TYPE_E_CANTLOADLIBRARY;
  return DispGetIDsOfNames(ti, names, count, ids);
}

HRESULT EngineObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                             VARIANT* result, EXCEPINFO* info, UINT* argErr) {
  ITypeInfo* ti = engineTypeInfo();
  if (!ti) return TYPE_E_CANTLOADLIBRARY;
  return DispInvoke(static_cast<_BasicEngine*>(this), ti, id, flags, params, result, info, argErr);
}

// ---- the script and its outcome ---------------------------------------------

HRESULT EngineObject::get_CodeBlock(BSTR* text) { return giveString(engine_.CodeBlock(), text); }

HRESULT EngineObject::put_CodeBlock(BSTR text) {
  return guard([&]() -> HRESULT {
    engine_.SetCodeBlock(fromBstr(text));
    return S_OK;
  });
}

// Never fails towards the host: the outcome is in ErrNum and ErrMsg.
HRESULT EngineObject::Execute() {
  engine_.Execute();
  return S_OK;
}

HRESULT EngineObject::get_ErrNum(LONG* number) { return give(engine_.ErrNum(), number); }

HRESULT EngineObject::put_ErrNum(LONG number) {
  engine_.SetErrNum(number);
  return S_OK;
}

HRESULT EngineObject::get_ErrMsg(BSTR* text) { return giveString(engine_.ErrMsg(), text); }

HRESULT EngineObject::put_ErrMsg(BSTR text) {
  return guard([&]() -> HRESULT {
    engine_.SetErrMsg(fromBstr(text));
    return S_OK;
  });
}

HRESULT EngineObject::get_CurrentLineNum(SHORT* line) {
  return give(engine_.CurrentLineNum(), line);
}

HRESULT EngineObject::put_CurrentLineNum(SHORT line) {
  engine_.SetCurrentLineNum(line);
  return S_OK;
}

HRESULT EngineObject::get_LineCount(VARIANT* count) {
  return giveValue(Value::integer(engine_.LineCount()), count);
}

HRESULT EngineObject::GetLineCode(SHORT line, BSTR* text) {
  return guard([&]() -> HRESULT { return giveString(engine_.GetLineCode(line), text); });
}

HRESULT EngineObject::WhatSTMT(BSTR line, SHORT* kind) {
  return guard([&]() -> HRESULT { return give(engine_.WhatSTMT(fromBstr(line)), kind); });
}

HRESULT EngineObject::get_Language(LONG* language) { return give(engine_.Language(), language); }

HRESULT EngineObject::put_Language(LONG language) {
  engine_.SetLanguage(language);
  return S_OK;
}

// ---- the host's objects -------------------------------------------------------

HRESULT EngineObject::get_Parent(IDispatch** parent) {
  return giveObject(engine_.Parent(), parent);
}

HRESULT EngineObject::put_Parent(IDispatch* parent) { return putref_Parent(parent); }

HRESULT EngineObject::putref_Parent(IDispatch* parent) {
  return storeObject(parent, [&](ObjectRef o) { engine_.SetParent(std::move(o)); });
}

HRESULT EngineObject::get_RecordSet(IDispatch** recordset) {
  return giveObject(engine_.RecordSet(), recordset);
}

HRESULT EngineObject::putref_RecordSet(IDispatch* recordset) {
  return storeObject(recordset, [&](ObjectRef o) { engine_.SetRecordSet(std::move(o)); });
}

HRESULT EngineObject::get_ExcelBook(IDispatch** book) {
  return giveObject(engine_.ExcelBook(), book);
}

HRESULT EngineObject::put_ExcelBook(IDispatch* book) { return putref_ExcelBook(book); }

HRESULT EngineObject::putref_ExcelBook(IDispatch* book) {
  return storeObject(book, [&](ObjectRef o) { engine_.SetExcelBook(std::move(o)); });
}

HRESULT EngineObject::get_ActiveExcelSheet(IDispatch** sheet) {
  return giveObject(engine_.ActiveExcelSheet(), sheet);
}

HRESULT EngineObject::put_ActiveExcelSheet(IDispatch* sheet) {
  return putref_ActiveExcelSheet(sheet);
}

HRESULT EngineObject::putref_ActiveExcelSheet(IDispatch* sheet) {
  return storeObject(sheet, [&](ObjectRef o) { engine_.SetActiveExcelSheet(std::move(o)); });
}

// ---- variables -----------------------------------------------------------------

HRESULT EngineObject::IsVarDefined(BSTR name, VARIANT_BOOL* defined) {
  return guard(
      [&]() -> HRESULT { return give(vbBool(engine_.IsVarDefined(fromBstr(name))), defined); });
}

HRESULT EngineObject::GetVarValue(BSTR name, VARIANT* value) {
  return guard([&]() -> HRESULT { return giveValue(engine_.GetVarValue(fromBstr(name)), value); });
}

HRESULT EngineObject::Vaule(BSTR name, VARIANT value) {
  return guard([&]() -> HRESULT {
    Value v;
    const HRESULT hr = toValue(value, v);
    if (FAILED(hr)) return hr;
    engine_.Vaule(fromBstr(name), v);
    return S_OK;
  });
}

HRESULT EngineObject::SetSysVar(BSTR name, VARIANT value) {
  return guard([&]() -> HRESULT {
    Value v;
    const HRESULT hr = toValue(value, v);
    if (FAILED(hr)) return hr;
    engine_.SetSysVar(fromBstr(name), v);
    return S_OK;
  });
}

// ---- the control-structure stack and the open-block counters -------------------

HRESULT EngineObject::PushStmtFlag(VARIANT entry) {
  return guard([&]() -> HRESULT {
    Value v;
    const HRESULT hr = toValue(entry, v);
    if (FAILED(hr)) return hr;
    engine_.PushStmtFlag(v);
    return S_OK;
  });
}

HRESULT EngineObject::PopStmtFlag(VARIANT* entry) {
  return guard([&]() -> HRESULT { return giveValue(engine_.PopStmtFlag(), entry); });
}

HRESULT EngineObject::GetpopValueStmtFlag(VARIANT* entry) {
  return guard([&]() -> HRESULT { return giveValue(engine_.GetpopValueStmtFlag(), entry); });
}

HRESULT EngineObject::StmtFlagCount(SHORT* count) { return give(engine_.StmtFlagCount(), count); }

HRESULT EngineObject::get_IfCount(SHORT* count) { return give(engine_.IfCount(), count); }

HRESULT EngineObject::put_IfCount(SHORT count) {
  engine_.SetIfCount(count);
  return S_OK;
}

HRESULT EngineObject::get_ForCount(SHORT* count) { return give(engine_.ForCount(), count); }

HRESULT EngineObject::put_ForCount(SHORT count) {
  engine_.SetForCount(count);
  return S_OK;
}

HRESULT EngineObject::get_DoCount(SHORT* count) { return give(engine_.DoCount(), count); }

HRESULT EngineObject::put_DoCount(SHORT count) {
  engine_.SetDoCount(count);
  return S_OK;
}

// ---- the current record ----------------------------------------------------------

HRESULT EngineObject::isFieldName(BSTR name, VARIANT_BOOL* found) {
  return guard(
      [&]() -> HRESULT { return give(vbBool(engine_.isFieldName(fromBstr(name))), found); });
}

HRESULT EngineObject::isFieldNameByArr(BSTR name, VARIANT_BOOL* found) {
  return guard(
      [&]() -> HRESULT { return give(vbBool(engine_.isFieldNameByArr(fromBstr(name))), found); });
}

HRESULT EngineObject::ChangeField(VARIANT field, VARIANT value, VARIANT_BOOL* done) {
  return guard([&]() -> HRESULT {
    Value f, v;
    HRESULT hr = toValue(field, f);
    if (SUCCEEDED(hr)) hr = toValue(value, v);
    if (FAILED(hr)) return hr;
    return give(vbBool(engine_.ChangeField(f, v)), done);
  });
}

HRESULT EngineObject::GetFieldValue(VARIANT field, VARIANT* value) {
  return guard([&]() -> HRESULT {
    Value f;
    const HRESULT hr = toValue(field, f);
    if (FAILED(hr)) return hr;
    return giveValue(engine_.GetFieldValue(f), value);
  });
}

HRESULT EngineObject::MoveFirst(VARIANT_BOOL* done) {
  return give(vbBool(engine_.MoveFirst()), done);
}

HRESULT EngineObject::MoveNext(VARIANT_BOOL* done) {
  return give(vbBool(engine_.MoveNext()), done);
}

HRESULT EngineObject::MovePrevious(VARIANT_BOOL* done) {
  return give(vbBool(engine_.MovePrevious()), done);
}

HRESULT EngineObject::MoveLast(VARIANT_BOOL* done) {
  return give(vbBool(engine_.MoveLast()), done);
}

HRESULT EngineObject::BOF(VARIANT_BOOL* atStart) { return give(vbBool(engine_.BOF()), atStart); }

HRESULT EngineObject::EOF(VARIANT_BOOL* atEnd) { return give(vbBool(engine_.Eof()), atEnd); }

// ---- unattended hosts --------------------------------------------------------------

HRESULT EngineObject::get_UserInterface(IDispatch** ui) { return giveObject(ui_->routedTo(), ui); }

HRESULT EngineObject::put_UserInterface(IDispatch* ui) { return putref_UserInterface(ui); }

HRESULT EngineObject::putref_UserInterface(IDispatch* ui) {
  return storeObject(ui, [&](ObjectRef o) { ui_->route(std::move(o)); });
}

HRESULT EngineObject::get_Unattended(VARIANT_BOOL* unattended) {
  return give(vbBool(ui_->unattended()), unattended);
}

HRESULT EngineObject::put_Unattended(VARIANT_BOOL unattended) {
  ui_->setUnattended(unattended != VARIANT_FALSE);
  return S_OK;
}

HRESULT EngineObject::get_ObjectFactory(IDispatch** factory) {
  return giveObject(objects_->routedTo(), factory);
}

HRESULT EngineObject::put_ObjectFactory(IDispatch* factory) {
  return putref_ObjectFactory(factory);
}

HRESULT EngineObject::putref_ObjectFactory(IDispatch* factory) {
  return storeObject(factory, [&](ObjectRef o) { objects_->route(std::move(o)); });
}

}  // namespace korvex::automation
