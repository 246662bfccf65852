// --set of `korvex run` and `korvex batch`: each expression evaluated in
// command-line order on an engine that has what the script will have (the
// locale, the database), failing as a usage error.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "korvex/engine.hpp"
#include "options.hpp"

namespace korvex::cli {

/// Evaluates the presets in order and hands each name and value to `take`;
/// false, with `error` set ("--set NAME=EXPR: message (number)"), at the
/// first that fails.
bool evaluatePresets(BasicEngine& engine, const std::vector<Preset>& presets, std::string& error,
                     const std::function<void(std::u16string name, Value value)>& take);

}  // namespace korvex::cli
