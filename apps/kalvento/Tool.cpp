#include "kalvento/Tool.h"

#include "kalvento/Commands.h"
#include "kalvento/WordFault.h"
#include "platform/CodePage.h"

#include <exception>
#include <new>
#include <ostream>
#include <string_view>

namespace kalvento::tool {

namespace {

int Report(ToolContext& a_context, EExitCode a_code, const std::string& a_message)
{
    a_context.err << "kalvento: " << a_message << '\n';
    return a_code;
}

int Run(std::vector<std::string> a_arguments, ToolContext& a_context)
{
    CommandLine line("Folds market data into candles and looks after stored series.", "kalvento");
    line.RequireCommand();
    line.SetVersion("kalvento 0.1.0");
    Command app = line.GetProgram();
    app.AddFlag("--quiet,-q", a_context.quiet, "No notes and no progress on standard error; errors remain");
    app.SetFooter(ExitCodesHelp());
    for (const auto& add : {AddCandlesCommand, AddAdjustCommand, AddOperationsCommand, AddCheckCommand,
                            AddExplainCommand, AddGenerateCommand, AddLiveCommand, AddLoadCommand,
                            AddProveCommand, AddSeriesCommand, AddShowCommand, AddWatchCommand})
        add(app, a_context);

    switch (line.Parse(std::move(a_arguments), a_context.out, a_context.err)) {
    case CommandLine::EParsed:
        return a_context.exitCode;
    case CommandLine::EToldUser:
        return EExitOk;
    case CommandLine::ERefused:
        break;
    }
    return EExitUsage;
}

} // namespace

int RunTool(const std::vector<std::string>& a_arguments, ToolContext& a_context)
{
    try {
        RaiseToolErrors([&] { a_context.exitCode = Run(a_arguments, a_context); });
        a_context.out.flush();
    } catch (const OutputClosed&) {
        a_context.exitCode = EExitOk;
    } catch (const ToolError& failure) {
        a_context.exitCode = Report(a_context, failure.GetExitCode(), failure.what());
    } catch (const std::bad_alloc&) {
        a_context.exitCode = Report(a_context, EExitFailure, "not enough memory");
    } catch (const std::exception& failure) {
        // Texts of the library are in its own code page; those of the system and of plain ASCII stay what they are.
        const std::string_view text = failure.what();
        const bool isUtf8 = CodePage::WideToUtf8(CodePage::Utf8ToWide(text)) == text;
        a_context.exitCode =
            Report(a_context, EExitFailure, isUtf8 ? std::string(text) : CodePage::Cp1250ToUtf8(text));
    }
    return a_context.exitCode;
}

std::string ExitCodesHelp()
{
    return "Exit codes: 0 done, 1 the machine refused (disk, memory, database), 2 the command line can't be meant,\n"
           "3 the input can't be taken, 4 an input file can't be opened, 5 a check answers no.";
}

} // namespace kalvento::tool
