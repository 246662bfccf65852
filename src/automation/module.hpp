// What the whole component shares: its module handle, the count of live
// objects and locks that decides whether it may be unloaded, and its type
// information.
#pragma once

#include <windows.h>
// the Windows headers below build on windows.h, which must come first
#include <oaidl.h>

#include <string>

namespace korvex::automation {

HINSTANCE moduleHandle() noexcept;
/// The full path of the component's file.
std::wstring modulePath();

void objectCreated() noexcept;
void objectDestroyed() noexcept;
void lockModule(bool lock) noexcept;
bool moduleInUse() noexcept;

/// The type information of the engine's interface, from the type library
/// inside the component (loaded once; nullptr when it cannot be read).
ITypeInfo* engineTypeInfo() noexcept;

}  // namespace korvex::automation
