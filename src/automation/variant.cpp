#include "automation/variant.hpp"

#include <cstdint>
#include <limits>
#include <vector>

#include "automation/dispatch_object.hpp"

namespace korvex::automation {
namespace {

// Clears a Variant on every way out.
struct VariantGuard {
  VARIANT v;
  VariantGuard() { VariantInit(&v); }
  ~VariantGuard() { VariantClear(&v); }
  VariantGuard(const VariantGuard&) = delete;
  VariantGuard& operator=(const VariantGuard&) = delete;
};

Value wholeNumber(double v) {
  if (v >= std::numeric_limits<std::int32_t>::min() &&
      v <= std::numeric_limits<std::int32_t>::max()) {
    return Value::lng(static_cast<std::int32_t>(v));
  }
  return Value::dbl(v);
}

HRESULT scalarToValue(const VARIANT& v, Value& out) {
  switch (V_VT(&v)) {
    case VT_EMPTY:
    case VT_ERROR:  // a missing optional argument
      out = Value{};
      return S_OK;
    case VT_NULL:
      out = Value::null();
      return S_OK;
    case VT_I2:
      out = Value::integer(V_I2(&v));
      return S_OK;
    case VT_I4:
      out = Value::lng(V_I4(&v));
      return S_OK;
    case VT_INT:
      out = Value::lng(V_INT(&v));
      return S_OK;
    case VT_R8:
      out = Value::dbl(V_R8(&v));
      return S_OK;
    case VT_R4:
      out = Value::dbl(static_cast<double>(V_R4(&v)));
      return S_OK;
    case VT_CY:
      out = Value::currency(Currency{V_CY(&v).int64});
      return S_OK;
    case VT_DATE:
      out = Value::date(V_DATE(&v));
      return S_OK;
    case VT_BSTR:
      out = Value::string(fromBstr(V_BSTR(&v)));
      return S_OK;
    case VT_BOOL:
      out = Value::boolean(V_BOOL(&v) != VARIANT_FALSE);
      return S_OK;
    case VT_UI1:
      out = Value::integer(V_UI1(&v));
      return S_OK;
    case VT_I1:
      out = Value::integer(V_I1(&v));
      return S_OK;
    case VT_UI2:
      out = Value::lng(V_UI2(&v));
      return S_OK;
    case VT_UI4:
      out = wholeNumber(static_cast<double>(V_UI4(&v)));
      return S_OK;
    case VT_UINT:
      out = wholeNumber(static_cast<double>(V_UINT(&v)));
      return S_OK;
    case VT_I8:
      out = wholeNumber(static_cast<double>(V_I8(&v)));
      return S_OK;
    case VT_UI8:
      out = wholeNumber(static_cast<double>(V_UI8(&v)));
      return S_OK;
    case VT_DECIMAL: {
      double d = 0;
      DECIMAL dec = V_DECIMAL(&v);
      HRESULT hr = VarR8FromDec(&dec, &d);
      if (FAILED(hr)) return hr;
      out = Value::dbl(d);
      return S_OK;
    }
    case VT_DISPATCH:
      out = Value::object(wrapDispatch(V_DISPATCH(&v)));
      return S_OK;
    case VT_UNKNOWN: {
      IUnknown* unknown = V_UNKNOWN(&v);
      if (!unknown) {
        out = Value::object(nullptr);
        return S_OK;
      }
      IDispatch* disp = nullptr;
      if (FAILED(unknown->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&disp)))) {
        return DISP_E_TYPEMISMATCH;
      }
      out = Value::object(wrapDispatch(disp));
      disp->Release();
      return S_OK;
    }
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

// Walks every index combination of an array, first index outermost (the
// order of korvex::Array's elements), calling f(indexes) for each.
template <class F>
HRESULT forEachIndex(const std::vector<Array::Bound>& bounds, F&& f) {
  for (const Array::Bound& b : bounds) {
    if (b.count == 0) return S_OK;
  }
  std::vector<LONG> idx(bounds.size());
  for (std::size_t d = 0; d < bounds.size(); ++d) idx[d] = bounds[d].lower;
  for (;;) {
    HRESULT hr = f(idx.data());
    if (FAILED(hr)) return hr;
    std::size_t d = bounds.size();
    for (;;) {
      if (d == 0) return S_OK;
      --d;
      if (++idx[d] < bounds[d].lower + bounds[d].count) break;
      idx[d] = bounds[d].lower;
    }
  }
}

HRESULT arrayToValue(SAFEARRAY* sa, VARTYPE elementType, Value& out) {
  const UINT dims = SafeArrayGetDim(sa);
  std::vector<Array::Bound> bounds(dims);
  for (UINT d = 0; d < dims; ++d) {
    LONG lower = 0, upper = -1;
    SafeArrayGetLBound(sa, d + 1, &lower);
    SafeArrayGetUBound(sa, d + 1, &upper);
    bounds[d].lower = lower;
    bounds[d].count = upper >= lower ? upper - lower + 1 : 0;
  }
  Array result(bounds);
  std::size_t next = 0;
  HRESULT hr = forEachIndex(bounds, [&](LONG* idx) -> HRESULT {
    VariantGuard element;
    HRESULT got;
    if (elementType == VT_VARIANT) {
      got = SafeArrayGetElement(sa, idx, &element.v);
    } else {
      // The element's bytes go where a Variant of its type keeps them.
      V_VT(&element.v) = elementType;
      got = SafeArrayGetElement(sa, idx, &V_I8(&element.v));
      if (FAILED(got)) V_VT(&element.v) = VT_EMPTY;
    }
    if (FAILED(got)) return got;
    return toValue(element.v, result.elements()[next++]);
  });
  if (FAILED(hr)) return hr;
  out = Value::array(std::move(result));
  return S_OK;
}

}  // namespace

std::u16string fromBstr(BSTR text) {
  if (!text) return {};
  return std::u16string(reinterpret_cast<const char16_t*>(text), SysStringLen(text));
}

BSTR toBstr(std::u16string_view text) {
  return SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                           static_cast<UINT>(text.size()));
}

HRESULT toValue(const VARIANT& in, Value& out) {
  VariantGuard plain;
  // The platform's signature is not const-correct; the source is only read.
  HRESULT hr = VariantCopyInd(&plain.v, const_cast<VARIANT*>(&in));
  if (FAILED(hr)) return hr;
  const VARTYPE vt = V_VT(&plain.v);
  if ((vt & VT_ARRAY) != 0) {
    SAFEARRAY* sa = V_ARRAY(&plain.v);
    if (!sa) {
      out = Value::array(Array{});
      return S_OK;
    }
    return arrayToValue(sa, static_cast<VARTYPE>(vt & VT_TYPEMASK), out);
  }
  try {
    return scalarToValue(plain.v, out);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

HRESULT toVariant(const Value& in, VARIANT& out) {
  switch (in.type()) {
    case VarType::Empty:
      V_VT(&out) = VT_EMPTY;
      return S_OK;
    case VarType::Null:
      V_VT(&out) = VT_NULL;
      return S_OK;
    case VarType::Integer:
      V_VT(&out) = VT_I2;
      V_I2(&out) = in.integerValue();
      return S_OK;
    case VarType::Long:
      V_VT(&out) = VT_I4;
      V_I4(&out) = in.longValue();
      return S_OK;
    case VarType::Double:
      V_VT(&out) = VT_R8;
      V_R8(&out) = in.doubleValue();
      return S_OK;
    case VarType::Currency:
      V_VT(&out) = VT_CY;
      V_CY(&out).int64 = in.currencyValue().scaled;
      return S_OK;
    case VarType::Date:
      V_VT(&out) = VT_DATE;
      V_DATE(&out) = in.doubleValue();
      return S_OK;
    case VarType::Boolean:
      V_VT(&out) = VT_BOOL;
      V_BOOL(&out) = in.booleanValue() ? VARIANT_TRUE : VARIANT_FALSE;
      return S_OK;
    case VarType::String: {
      BSTR b = toBstr(in.stringValue());
      if (!b) return E_OUTOFMEMORY;
      V_VT(&out) = VT_BSTR;
      V_BSTR(&out) = b;
      return S_OK;
    }
    case VarType::Object: {
      V_VT(&out) = VT_DISPATCH;
      V_DISPATCH(&out) = dispatchOf(in.objectValue());
      return S_OK;
    }
    case VarType::Array: {
      const Array& a = in.arrayValue();
      if (a.dimensions() == 0) {  // an array never dimensioned
        V_VT(&out) = VT_ARRAY | VT_VARIANT;
        V_ARRAY(&out) = nullptr;
        return S_OK;
      }
      std::vector<SAFEARRAYBOUND> bounds(a.dimensions());
      for (std::size_t d = 0; d < a.dimensions(); ++d) {
        bounds[d].lLbound = a.bounds()[d].lower;
        bounds[d].cElements = static_cast<ULONG>(a.bounds()[d].count);
      }
      SAFEARRAY* sa = SafeArrayCreate(VT_VARIANT, static_cast<UINT>(bounds.size()), bounds.data());
      if (!sa) return E_OUTOFMEMORY;
      std::size_t next = 0;
      HRESULT hr = forEachIndex(a.bounds(), [&](LONG* idx) -> HRESULT {
        VariantGuard element;
        HRESULT made = toVariant(a.elements()[next++], element.v);
        return FAILED(made) ? made : SafeArrayPutElement(sa, idx, &element.v);
      });
      if (FAILED(hr)) {
        SafeArrayDestroy(sa);
        return hr;
      }
      V_VT(&out) = VT_ARRAY | VT_VARIANT;
      V_ARRAY(&out) = sa;
      return S_OK;
    }
  }
  return DISP_E_TYPEMISMATCH;
}

}  // namespace korvex::automation
