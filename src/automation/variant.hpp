// Script values and automation Variants, both ways.
#pragma once

#include <windows.h>
// the Windows headers below build on windows.h, which must come first
#include <oleauto.h>

#include <string>
#include <string_view>

#include "korvex/value.hpp"

namespace korvex::automation {

/// The script value a Variant holds; a by-reference Variant is read through.
/// Types scripts do not have become their nearest: Byte and the other small
/// integers an Integer, the unsigned and 64-bit ones a Long where they fit
/// and a Double otherwise, Single and Decimal a Double, a missing argument
/// Empty. An array keeps its dimensions and lower bounds. Anything no
/// script value can hold gives DISP_E_TYPEMISMATCH.
HRESULT toValue(const VARIANT& in, Value& out);

/// Fills `out` (initialised, empty) with the Variant of a value: arrays
/// become arrays of Variants with the same bounds, objects the host's own
/// dispatch interface.
HRESULT toVariant(const Value& in, VARIANT& out);

std::u16string fromBstr(BSTR text);
/// A new BSTR (nullptr when out of memory).
BSTR toBstr(std::u16string_view text);

}  // namespace korvex::automation
