// The interface generated from korvex.idl, for the component's own units.
//
// The interface has a member named EOF, which the C library defines as a
// macro: every standard header that might define it comes first, then the
// macro goes, and the component's units include this header last.
#pragma once

#include <windows.h>
// the Windows headers below build on windows.h, which must come first
#include <oaidl.h>
#include <ocidl.h>

#include <cstdio>
#include <string>

#undef EOF

#include "korvex_automation.h"
