#include "kalvento/WordFault.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

namespace kalvento::tool {

namespace {

using OptionText = std::pair<EReadOption, std::string_view>;

constexpr std::array<OptionText, 12> S_names = {{{EOptionColumns, "--columns: "},
                                                 {EOptionFolds, "--fold: "},
                                                 {EOptionFrom, "--from: "},
                                                 {EOptionInputInterval, "--input-interval: "},
                                                 {EOptionOutputZone, "--output-zone: "},
                                                 {EOptionStampedWithEnd, "--input-stamp end: "},
                                                 {EOptionSort, "--sort: "},
                                                 {EOptionSymbol, "--symbol: "},
                                                 {EOptionSymbolColumn, "--symbol-column: "},
                                                 {EOptionTimeFormat, "--time-format "},
                                                 {EOptionTo, "--to: "},
                                                 {EOptionZone, "--zone: "}}};

constexpr std::array<OptionText, 7> S_advice = {
    {{EOptionDelimiter, "; give --delimiter"},
     {EOptionOrder, " (--order raise or drop takes such rows)"},
     {EOptionSort, " (--sort puts the rows in order, --order raise takes them as they come)"},
     {EOptionStrict, "; name them by --columns, or leave --strict out to pass over them"},
     {EOptionSymbol, " (--symbol NAME takes one of them; --symbol-column names another column of symbols)"},
     {EOptionSymbolColumn, "; --symbol-column names one"},
     {EOptionTimeFormat, " (--time-format for others)"}}};

std::string TextOf(std::span<const OptionText> a_texts, EReadOption a_option)
{
    const auto found = std::ranges::find(a_texts, a_option, &OptionText::first);
    return found == a_texts.end() ? std::string() : std::string(found->second);
}

} // namespace

std::string WordFault(const RowsFault::Parts& a_fault)
{
    // Where an option contradicts another one or the input, the text names both.
    if (a_fault.wrong == EOptionHeader)
        return "--no-header needs --columns with places, such as time=1,price=2,volume=3";
    if (a_fault.wrong == EOptionFrom && a_fault.help == EOptionTo)
        return "--from " + a_fault.found + " lies behind --to " + a_fault.value;
    if (a_fault.help == EOptionInputInterval)
        return a_fault.found + ", which --input-interval " + a_fault.value +
               " doesn't fit; leave it out or give " + a_fault.expected;
    const std::string text = TextOf(S_names, a_fault.wrong) + a_fault.GetText();
    if (a_fault.help == EOptionColumns)
        return text + (a_fault.expected.empty() ? "; choose one by" : ", or") + " --columns " +
               a_fault.value + "=NAME";
    return text + TextOf(S_advice, a_fault.help);
}

void RaiseToolErrors(const std::function<void()>& a_action)
{
    try {
        a_action();
    } catch (const RowsFault& failure) {
        const RowsFault::Parts& fault = failure.GetParts();
        constexpr std::array<EExitCode, 3> exitCodes = {EExitNoInput, EExitBadData, EExitUsage};
        throw ToolError(exitCodes[fault.kind], fault.GetPlace() + WordFault(fault));
    }
}

} // namespace kalvento::tool
