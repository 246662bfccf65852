// The identifiers the generated header declares (the interface, the class,
// the type library), defined once, here: the system headers come first so
// that only the generated header sees the defining form of DEFINE_GUID.
#include <windows.h>
// the Windows headers below build on windows.h, which must come first
#include <oaidl.h>
#include <ocidl.h>

#include <cstdio>

#undef EOF

#include <initguid.h>

#include "korvex_automation.h"
