// The engine's user-visible message texts. They are part of the interface:
// hosts show them to users as they are, character for character.
#pragma once

#include <string_view>

namespace korvex::msg {

inline constexpr std::u16string_view kConfirmStop = u"确信终止程序吗?";
inline constexpr std::u16string_view kSyntax = u"语法错";                            // 1
inline constexpr std::u16string_view kBadExpression = u"错误的表达式";               // 2
inline constexpr std::u16string_view kElseWithoutIf = u"Else 没有 If";               // 7
inline constexpr std::u16string_view kElseError = u"Else 语句错误";                  // 8
inline constexpr std::u16string_view kIfMissingThen = u"If 语句缺 'Then'";           // 9
inline constexpr std::u16string_view kIfWithoutEndIf = u"If 语句无 End If";          // 10
inline constexpr std::u16string_view kEndIfWithoutIf = u"End If 语句无 If";          // 11
inline constexpr std::u16string_view kEndIfSyntax = u"End If 语法错";                // 12
inline constexpr std::u16string_view kBadSymbol = u"错误的符号或变量名称";           // 3
inline constexpr std::u16string_view kDoMissingExpression = u"Do 语句缺表达式";      // 13
inline constexpr std::u16string_view kTypeMismatch = u"类型不匹配";                  // 4
inline constexpr std::u16string_view kDoWithoutLoop = u"Do 没有 Loop 或 End Do";     // 14
inline constexpr std::u16string_view kLoopWithoutDo = u"Loop 或 End Do 缺少 Do";     // 15
inline constexpr std::u16string_view kExitDoOutside = u"Exit Do 不在 Do...Loop 内";  // 16
inline constexpr std::u16string_view kStackEmpty = u"堆栈为空";
inline constexpr std::u16string_view kPopEmpty =
    u"表达式或语句结构错:\r\n对空堆栈执行'Pop'方法";                                        // 18
inline constexpr std::u16string_view kGetLineEmpty = u"对空堆栈执行'GetLine'方法";          // 19
inline constexpr std::u16string_view kGetPopValueEmpty = u"对空堆栈执行'GetPopValue'方法";  // 20
inline constexpr std::u16string_view kGetLineIndex = u"堆栈索引超出范围:'GetLine'方法";     // 21
inline constexpr std::u16string_view kUnsupportedStatement = u"不支持的语句体";             // 22
inline constexpr std::u16string_view kUndefinedVariable = u"变量未定义";                    // 5
inline constexpr std::u16string_view kBadArguments = u"错误的参数表达式或参数个数";         // 6
inline constexpr std::u16string_view kKeywordMisused = u"非法使用关键字,期待语句";          // 23
inline constexpr std::u16string_view kMissingOperator = u"缺操作符";                        // 50
inline constexpr std::u16string_view kMissingOperand = u"缺操作数";                         // 51
inline constexpr std::u16string_view kCloseWithoutOpen = u"闭括号没有与之相匹配的开括号";   // 52
inline constexpr std::u16string_view kSeveralPoints = u"操作数含多个小数点";                // 53
inline constexpr std::u16string_view kBadOperand = u"操作数非法";                           // 54
inline constexpr std::u16string_view kExpressionError = u"表达式错误";                      // 55
inline constexpr std::u16string_view kUnknownSymbol = u"遇到不可识别的符号或变量名";        // 56
inline constexpr std::u16string_view kMissingClose = u"括号不匹配:缺\")\"";                 // 57
inline constexpr std::u16string_view kSeveralResults = u"栈中含多个结果, 请检查表达式是否正确";
inline constexpr std::u16string_view kWarningType = u"警告:表达式错误,类型不匹配";
inline constexpr std::u16string_view kVariableDefined = u"变量已定义";                // 24
inline constexpr std::u16string_view kUnbalanced = u"括号不匹配";                     // 25
inline constexpr std::u16string_view kMissingOpen = u"缺少'( ' ,函数名后必须跟'( '";  // 26
// Literals of their users rather than of the table above.
inline constexpr std::u16string_view kUnrecognisedStatement = u"不能识别的语句";  // 19
inline constexpr std::u16string_view kSymbolDefined = u"符号或变量已定义";
// The line label of an error description ("… : 行号 7"); the English one is
// only used when English messages are switched on, which nothing does.
inline constexpr std::u16string_view kLineLabel = u"行号 ";
inline constexpr std::u16string_view kLineLabelEnglish = u"Line ";
// The multiple-results warning when English messages are switched on.
inline constexpr std::u16string_view kSeveralResultsEnglish =
    u"Warning:multiple result in stack, check expression please";
// Appended (after a line break) to a failed field assignment's description.
inline constexpr std::u16string_view kChangeFieldSource = u"错误源:BasicEngine/ChangeField.";

}  // namespace korvex::msg
