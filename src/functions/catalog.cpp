// The catalog: the family tables in lookup order, and a hash map from
// every upper-cased script name to its entry, built once.
#include "functions/catalog.hpp"

#include <array>
#include <string>
#include <unordered_map>

#include "values/text_scan.hpp"

namespace korvex::fn {
namespace {

using Map = std::unordered_map<std::u16string, const FunctionEntry*, NameHash, std::equal_to<>>;

Map buildMap() {
  Map m;
  for (const Family family : families()) {
    for (const FunctionEntry& entry : family) {
      for (const std::u16string_view name : entry.names) {
        // The first entry of a name wins, as the tables are searched in order.
        if (!name.empty()) m.emplace(upperName(name), &entry);
      }
    }
  }
  return m;
}

}  // namespace

std::span<const Family> families() noexcept {
  // clang-format off
  static const std::array<Family, 14> kFamilies = {
      cellFunctions(),
      stringFunctions(), numericFunctions(), conversionFunctions(), dateFunctions(),
      variableFunctions(), inputFunctions(), arrayFunctions(), chineseAmountFunctions(),
      sqlFunctions(),
      wage::jobDataFunctions(), wage::assessmentFunctions(), wage::propertyFunctions(),
      wage::turnoutFunctions()};
  // clang-format on
  return kFamilies;
}

std::span<const std::u16string_view> familyTitles() noexcept {
  // clang-format off
  static constexpr std::array<std::u16string_view, 14> kTitles = {
      u"单元格函数",
      u"字符串函数", u"数值函数", u"转换函数", u"日期函数",
      u"变量函数", u"输入函数", u"数组函数", u"金额大写",
      u"SQL 函数",
      u"工资函数: 计件与部门", u"工资函数: 考核与班组", u"工资函数: 属性",
      u"工资函数: 产量"};
  // clang-format on
  return kTitles;
}

const FunctionEntry* findFunction(std::u16string_view upperName) noexcept {
  static const Map map = buildMap();
  const auto it = map.find(upperName);
  return it == map.end() ? nullptr : it->second;
}

bool precedesConstants(const FunctionEntry& entry) noexcept {
  const Family cells = cellFunctions();
  return &entry >= cells.data() && &entry < cells.data() + cells.size();
}

}  // namespace korvex::fn
