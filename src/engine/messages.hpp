// The engine's user-visible message texts. They are part of the interface:
// hosts show them to users as they are, character for character. Error
// messages come with their number; the few texts that are no error (prompts,
// labels) stand apart at the end.
#pragma once

#include <string>
#include <string_view>

#include "values/error.hpp"

namespace korvex::msg {

/// A name as messages quote it after their text: `lead` (" '" unless
/// given), the name, "'".
inline std::u16string quoted(std::u16string_view name, std::u16string_view lead = u" '") {
  std::u16string s;
  s.reserve(lead.size() + name.size() + 1);
  s += lead;
  s += name;
  s += u'\'';
  return s;
}

// ---- errors, by number ------------------------------------------------------
// 19 has two texts: the line list's and the run loop's.
inline constexpr Message kSyntax{1, u"语法错"};
inline constexpr Message kBadExpression{2, u"错误的表达式"};
inline constexpr Message kBadSymbol{3, u"错误的符号或变量名称"};
inline constexpr Message kTypeMismatch{4, u"类型不匹配"};
inline constexpr Message kUndefinedVariable{5, u"变量未定义"};
inline constexpr Message kBadArguments{6, u"错误的参数表达式或参数个数"};
inline constexpr Message kElseWithoutIf{7, u"Else 没有 If"};
inline constexpr Message kElseError{8, u"Else 语句错误"};
inline constexpr Message kIfMissingThen{9, u"If 语句缺 'Then'"};
inline constexpr Message kIfWithoutEndIf{10, u"If 语句无 End If"};
inline constexpr Message kEndIfWithoutIf{11, u"End If 语句无 If"};
inline constexpr Message kEndIfSyntax{12, u"End If 语法错"};
inline constexpr Message kDoMissingExpression{13, u"Do 语句缺表达式"};
inline constexpr Message kDoWithoutLoop{14, u"Do 没有 Loop 或 End Do"};
inline constexpr Message kLoopWithoutDo{15, u"Loop 或 End Do 缺少 Do"};
inline constexpr Message kExitDoOutside{16, u"Exit Do 不在 Do...Loop 内"};
inline constexpr Message kPopEmpty{18, u"表达式或语句结构错:\r\n对空堆栈执行'Pop'方法"};
inline constexpr Message kGetLineEmpty{19, u"对空堆栈执行'GetLine'方法"};
inline constexpr Message kUnrecognisedStatement{19, u"不能识别的语句"};
inline constexpr Message kGetPopValueEmpty{20, u"对空堆栈执行'GetPopValue'方法"};
inline constexpr Message kGetLineIndex{21, u"堆栈索引超出范围:'GetLine'方法"};
inline constexpr Message kUnsupportedStatement{22, u"不支持的语句体"};
inline constexpr Message kKeywordMisused{23, u"非法使用关键字,期待语句"};
inline constexpr Message kVariableDefined{24, u"变量已定义"};
inline constexpr Message kUnbalanced{25, u"括号不匹配"};
inline constexpr Message kMissingOpen{26, u"缺少'( ' ,函数名后必须跟'( '"};
inline constexpr Message kMissingOperator{50, u"缺操作符"};
inline constexpr Message kMissingOperand{51, u"缺操作数"};
inline constexpr Message kCloseWithoutOpen{52, u"闭括号没有与之相匹配的开括号"};
inline constexpr Message kSeveralPoints{53, u"操作数含多个小数点"};
inline constexpr Message kBadOperand{54, u"操作数非法"};
inline constexpr Message kExpressionError{55, u"表达式错误"};
inline constexpr Message kUnknownSymbol{56, u"遇到不可识别的符号或变量名"};
inline constexpr Message kMissingClose{57, u"括号不匹配:缺\")\""};

// ---- texts that are no error -----------------------------------------------
inline constexpr std::u16string_view kConfirmStop = u"确信终止程序吗?";
inline constexpr std::u16string_view kSeveralResults = u"栈中含多个结果, 请检查表达式是否正确";
inline constexpr std::u16string_view kSymbolDefined = u"符号或变量已定义";
// The line label of an error description ("… : 行号 7").
inline constexpr std::u16string_view kLineLabel = u"行号 ";
// Appended (after a line break) to a failed field assignment's description.
inline constexpr std::u16string_view kChangeFieldSource = u"错误源:BasicEngine/ChangeField.";

}  // namespace korvex::msg
