#include "presets.hpp"

namespace korvex::cli {

bool evaluatePresets(BasicEngine& engine, const std::vector<Preset>& presets, std::string& error,
                     const std::function<void(std::u16string name, Value value)>& take) {
  for (const Preset& preset : presets) {
    Value value = engine.Evaluate(fromUtf8(preset.expression));
    if (engine.ErrNum() != 0) {
      error = "--set " + preset.name + '=' + preset.expression + ": " + toUtf8(engine.ErrMsg()) +
              " (" + std::to_string(engine.ErrNum()) + ")";
      return false;
    }
    take(fromUtf8(preset.name), std::move(value));
  }
  return true;
}

}  // namespace korvex::cli
