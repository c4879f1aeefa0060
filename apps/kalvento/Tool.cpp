#include "kalvento/Tool.h"

#include "kalvento/Commands.h"
#include "kalvento/Note.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/WordFault.h"
#include "platform/CodePage.h"
#include "platform/Interruption.h"

#include <exception>
#include <new>
#include <ostream>
#include <string_view>

namespace kalvento::tool {

namespace {

// Takes no memory itself.
void ReportNoMemory(ToolContext& a_context) noexcept
{
    a_context.exitCode = EExitFailure;
    a_context.err << "kalvento: not enough memory\n";
}

void Report(ToolContext& a_context, EExitCode a_code, std::string_view a_message)
{
    a_context.exitCode = a_code;
    try {
        Note(a_context, a_message);
    } catch (const std::bad_alloc&) {
        ReportNoMemory(a_context);
    }
}

void ReportEnd(ToolContext& a_context, const internal::Interrupted& a_end)
{
    a_context.err << "kalvento: ended by " << a_end.what();
    if (a_context.rowsRead > 0)
        a_context.err << " after " << a_context.rowsRead << " rows";
    a_context.err << '\n';
    a_context.exitCode = EExitFailure;
    a_context.endedBy = a_end.GetSignal();
}

void ReportOther(ToolContext& a_context, const std::exception& a_failure)
{
    // Texts of the library are in its own code page; those of the system and of plain ASCII stay what they are.
    const std::string_view text = a_failure.what();
    try {
        const bool isUtf8 = CodePage::FindMalformedUtf8(text) == text.size();
        Report(a_context, EExitFailure, isUtf8 ? std::string(text) : CodePage::Cp1250ToUtf8(text));
    } catch (const std::bad_alloc&) {
        ReportNoMemory(a_context);
    }
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
        const internal::Interruption interruption;
        RaiseToolErrors([&] { a_context.exitCode = Run(a_arguments, a_context); });
        a_context.out.flush();
        CheckStandardOutput(a_context);
    } catch (const OutputClosed&) {
        a_context.exitCode = EExitOk;
    } catch (const internal::Interrupted& end) {
        ReportEnd(a_context, end);
    } catch (const ToolError& failure) {
        Report(a_context, failure.GetExitCode(), failure.what());
    } catch (const std::bad_alloc&) {
        ReportNoMemory(a_context);
    } catch (const std::exception& failure) {
        ReportOther(a_context, failure);
    }
    a_context.out.flush();
    return a_context.exitCode;
}

std::string ExitCodesHelp()
{
    return "Exit codes: 0 done, 1 the machine refused (disk, memory, database), 2 the command line can't be meant,\n"
           "3 the input can't be taken, 4 an input file can't be opened, 5 a check answers no.";
}

} // namespace kalvento::tool
