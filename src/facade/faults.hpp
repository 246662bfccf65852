// Turning an exception that reached the facade into the error the host
// reads: a platform run-time error keeps its number and text, running out
// of memory is error 7 and anything else an internal error (51).
#pragma once

#include "values/error.hpp"

namespace korvex {

/// The fault being handled; call only inside a catch block.
Error currentFault();

}  // namespace korvex
