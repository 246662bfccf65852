// The automation object hosts create as the engine: each member of the
// dual interface forwards to korvex::BasicEngine, converting strings and
// Variants; the dispatch side is driven by the type library.
#pragma once

#include <windows.h>

#include <atomic>
#include <memory>

#include "automation/interface.hpp"
#include "automation/object_factory.hpp"
#include "automation/windows_ui.hpp"
#include "korvex/engine.hpp"

namespace korvex::automation {

class EngineObject final : public _BasicEngine {
 public:
  EngineObject();
  ~EngineObject();
  EngineObject(const EngineObject&) = delete;
  EngineObject& operator=(const EngineObject&) = delete;

  // IUnknown
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  // IDispatch
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags,
                                   DISPPARAMS* params, VARIANT* result, EXCEPINFO* info,
                                   UINT* argErr) override;

  // the script and its outcome
  HRESULT STDMETHODCALLTYPE get_CodeBlock(BSTR* text) override;
  HRESULT STDMETHODCALLTYPE put_CodeBlock(BSTR text) override;
  HRESULT STDMETHODCALLTYPE Execute() override;
  HRESULT STDMETHODCALLTYPE get_ErrNum(LONG* number) override;
  HRESULT STDMETHODCALLTYPE put_ErrNum(LONG number) override;
  HRESULT STDMETHODCALLTYPE get_ErrMsg(BSTR* text) override;
  HRESULT STDMETHODCALLTYPE put_ErrMsg(BSTR text) override;
  HRESULT STDMETHODCALLTYPE get_CurrentLineNum(SHORT* line) override;
  HRESULT STDMETHODCALLTYPE put_CurrentLineNum(SHORT line) override;
  HRESULT STDMETHODCALLTYPE get_LineCount(VARIANT* count) override;
  HRESULT STDMETHODCALLTYPE GetLineCode(SHORT line, BSTR* text) override;
  HRESULT STDMETHODCALLTYPE WhatSTMT(BSTR line, SHORT* kind) override;
  HRESULT STDMETHODCALLTYPE get_Language(LONG* language) override;
  HRESULT STDMETHODCALLTYPE put_Language(LONG language) override;

  // the host's objects
  HRESULT STDMETHODCALLTYPE get_Parent(IDispatch** parent) override;
  HRESULT STDMETHODCALLTYPE put_Parent(IDispatch* parent) override;
  HRESULT STDMETHODCALLTYPE putref_Parent(IDispatch* parent) override;
  HRESULT STDMETHODCALLTYPE get_RecordSet(IDispatch** recordset) override;
  HRESULT STDMETHODCALLTYPE putref_RecordSet(IDispatch* recordset) override;
  HRESULT STDMETHODCALLTYPE get_ExcelBook(IDispatch** book) override;
  HRESULT STDMETHODCALLTYPE put_ExcelBook(IDispatch* book) override;
  HRESULT STDMETHODCALLTYPE putref_ExcelBook(IDispatch* book) override;
  HRESULT STDMETHODCALLTYPE get_ActiveExcelSheet(IDispatch** sheet) override;
  HRESULT STDMETHODCALLTYPE put_ActiveExcelSheet(IDispatch* sheet) override;
  HRESULT STDMETHODCALLTYPE putref_ActiveExcelSheet(IDispatch* sheet) override;

  // variables
  HRESULT STDMETHODCALLTYPE IsVarDefined(BSTR name, VARIANT_BOOL* defined) override;
  HRESULT STDMETHODCALLTYPE GetVarValue(BSTR name, VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE Vaule(BSTR name, VARIANT value) override;
  HRESULT STDMETHODCALLTYPE SetSysVar(BSTR name, VARIANT value) override;

  // the control-structure stack and the open-block counters
  HRESULT STDMETHODCALLTYPE PushStmtFlag(VARIANT entry) override;
  HRESULT STDMETHODCALLTYPE PopStmtFlag(VARIANT* entry) override;
  HRESULT STDMETHODCALLTYPE GetpopValueStmtFlag(VARIANT* entry) override;
  HRESULT STDMETHODCALLTYPE StmtFlagCount(SHORT* count) override;
  HRESULT STDMETHODCALLTYPE get_IfCount(SHORT* count) override;
  HRESULT STDMETHODCALLTYPE put_IfCount(SHORT count) override;
  HRESULT STDMETHODCALLTYPE get_ForCount(SHORT* count) override;
  HRESULT STDMETHODCALLTYPE put_ForCount(SHORT count) override;
  HRESULT STDMETHODCALLTYPE get_DoCount(SHORT* count) override;
  HRESULT STDMETHODCALLTYPE put_DoCount(SHORT count) override;

  // the current record
  HRESULT STDMETHODCALLTYPE isFieldName(BSTR name, VARIANT_BOOL* found) override;
  HRESULT STDMETHODCALLTYPE isFieldNameByArr(BSTR name, VARIANT_BOOL* found) override;
  HRESULT STDMETHODCALLTYPE ChangeField(VARIANT field, VARIANT value, VARIANT_BOOL* done) override;
  HRESULT STDMETHODCALLTYPE GetFieldValue(VARIANT field, VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE MoveFirst(VARIANT_BOOL* done) override;
  HRESULT STDMETHODCALLTYPE MoveNext(VARIANT_BOOL* done) override;
  HRESULT STDMETHODCALLTYPE MovePrevious(VARIANT_BOOL* done) override;
  HRESULT STDMETHODCALLTYPE MoveLast(VARIANT_BOOL* done) override;
  HRESULT STDMETHODCALLTYPE BOF(VARIANT_BOOL* atStart) override;
  HRESULT STDMETHODCALLTYPE EOF(VARIANT_BOOL* atEnd) override;

  // unattended hosts
  HRESULT STDMETHODCALLTYPE get_UserInterface(IDispatch** ui) override;
  HRESULT STDMETHODCALLTYPE put_UserInterface(IDispatch* ui) override;
  HRESULT STDMETHODCALLTYPE putref_UserInterface(IDispatch* ui) override;
  HRESULT STDMETHODCALLTYPE get_Unattended(VARIANT_BOOL* unattended) override;
  HRESULT STDMETHODCALLTYPE put_Unattended(VARIANT_BOOL unattended) override;
  HRESULT STDMETHODCALLTYPE get_ObjectFactory(IDispatch** factory) override;
  HRESULT STDMETHODCALLTYPE put_ObjectFactory(IDispatch* factory) override;
  HRESULT STDMETHODCALLTYPE putref_ObjectFactory(IDispatch* factory) override;

 private:
  std::atomic<ULONG> refs_{1};
  korvex::BasicEngine engine_;
  std::shared_ptr<WindowsUserInterface> ui_;
  std::shared_ptr<DataAccessFactory> objects_;
};

}  // namespace korvex::automation
