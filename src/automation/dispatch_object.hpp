// The host's automation objects as the engine sees them: a HostObject whose
// members are called late-bound through IDispatch, by name.
//
// Script hosts often hand over objects that only resolve names through
// IDispatchEx (their GetIDsOfNames is not implemented): a name the plain
// lookup refuses is looked up once more through IDispatchEx, without regard
// to case, and then invoked through InvokeEx.
#pragma once

#include <windows.h>
// the Windows headers below build on windows.h, which must come first
#include <oaidl.h>

#include "korvex/host_object.hpp"

namespace korvex::automation {

/// The host object for an automation object (Nothing for nullptr); the
/// object gets one reference of its own.
ObjectRef wrapDispatch(IDispatch* disp);

/// The automation object behind a host object, with a reference for the
/// caller; nullptr for Nothing. Only objects that came from the host exist
/// in the component, so any host object is one of these.
IDispatch* dispatchOf(const ObjectRef& obj);

/// The error a failed call reports, as a script sees it: the number and
/// description of the exception an object raised, or the platform's number
/// and text for a dispatch failure.
DispatchResult dispatchFailure(HRESULT hr, EXCEPINFO* info);

}  // namespace korvex::automation
