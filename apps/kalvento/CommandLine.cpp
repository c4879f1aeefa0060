#include "kalvento/CommandLine.h"

#include "platform/ShownText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <optional>
#include <sstream>

namespace kalvento::tool {

void RefuseOption(const std::string& a_option, const std::string& a_reason)
{
    throw CLI::ValidationError(a_option, a_reason);
}

CommandOption& CommandOption::Required()
{
    m_option->required();
    return *this;
}

CommandOption& CommandOption::TypeName(const std::string& a_name)
{
    m_option->type_name(a_name);
    return *this;
}

CommandOption& CommandOption::OneOf(const std::vector<std::string>& a_texts)
{
    m_option->check(CLI::IsMember(a_texts));
    return *this;
}

template<typename Number>
CommandOption& CommandOption::Between(Number a_least, Number a_greatest)
{
    m_option->check(CLI::Range(a_least, a_greatest));
    return *this;
}

template CommandOption& CommandOption::Between(int, int);
template CommandOption& CommandOption::Between(unsigned int, unsigned int);
template CommandOption& CommandOption::Between(std::size_t, std::size_t);

CommandOption& CommandOption::Separator(char a_sign)
{
    m_option->delimiter(a_sign);
    return *this;
}

CommandOption& CommandOption::OneValueEach()
{
    m_option->allow_extra_args(false);
    return *this;
}

CommandOption& CommandOption::ShowDefault()
{
    m_option->capture_default_str();
    return *this;
}

CommandOption& CommandOption::DefaultText(const std::string& a_text)
{
    m_option->default_str(a_text);
    return *this;
}

Command Command::AddCommand(const std::string& a_name, const std::string& a_help) const
{
    return Command(m_command->add_subcommand(a_name, a_help));
}

Command Command::Under(const std::string& a_heading) const
{
    Command command(*this);
    command.m_heading = a_heading;
    return command;
}

CommandOption Command::Place(CLI::Option* a_option) const
{
    if (!m_heading.empty())
        a_option->group(m_heading);
    return CommandOption(a_option);
}

template<typename Value>
CommandOption Command::AddOption(const std::string& a_names, Value& a_target, const std::string& a_help) const
{
    return Place(m_command->add_option(a_names, a_target, a_help));
}

template CommandOption Command::AddOption(const std::string&, std::string&, const std::string&) const;
template CommandOption Command::AddOption(const std::string&, std::vector<std::string>&,
                                          const std::string&) const;
template CommandOption Command::AddOption(const std::string&, std::uint32_t&, const std::string&) const;
template CommandOption Command::AddOption(const std::string&, std::uint64_t&, const std::string&) const;
template CommandOption Command::AddOption(const std::string&, std::optional<double>&,
                                          const std::string&) const;
template CommandOption Command::AddOption(const std::string&, std::optional<std::uint64_t>&,
                                          const std::string&) const;

CommandOption Command::AddOption(const std::string& a_names,
                                 std::function<void(const std::string&)> a_function,
                                 const std::string& a_help) const
{
    return Place(m_command->add_option_function<std::string>(a_names, std::move(a_function), a_help));
}

CommandOption Command::AddList(const std::string& a_names,
                               std::function<void(const std::vector<std::string>&)> a_function,
                               const std::string& a_help) const
{
    return Place(
        m_command->add_option_function<std::vector<std::string>>(a_names, std::move(a_function), a_help));
}

CommandOption Command::AddFlag(const std::string& a_names, bool& a_target, const std::string& a_help) const
{
    return Place(m_command->add_flag(a_names, a_target, a_help));
}

CommandOption Command::AddFlag(const std::string& a_names, std::function<void()> a_function,
                               const std::string& a_help) const
{
    return Place(m_command->add_flag_callback(a_names, std::move(a_function), a_help));
}

void Command::SetFooter(const std::string& a_text) const
{
    m_command->footer(a_text);
}

void Command::OnRun(std::function<void()> a_function) const
{
    m_command->callback(std::move(a_function));
}

CommandLine::CommandLine(const std::string& a_help, const std::string& a_program)
    : m_app(std::make_unique<CLI::App>(a_help, a_program))
{}

CommandLine::~CommandLine() = default;

void CommandLine::SetVersion(const std::string& a_text)
{
    m_app->set_version_flag("--version", a_text);
}

void CommandLine::RequireCommand()
{
    m_app->require_subcommand(1);
    m_app->fallthrough();
}

CommandLine::EOutcome CommandLine::Parse(std::vector<std::string> a_arguments, std::ostream& a_out,
                                         std::ostream& a_err)
{
    try {
        // The parser takes its arguments last one first.
        std::reverse(a_arguments.begin(), a_arguments.end());
        m_app->parse(std::move(a_arguments));
        return EParsed;
    } catch (const CLI::ParseError& failure) {
        // It repeats what was typed, which a script may have taken from the name of a file.
        std::ostringstream err;
        const bool isTold = m_app->exit(failure, a_out, err) == 0;
        a_err << internal::ShownText::Lines(err.str());
        return isTold ? EToldUser : ERefused;
    }
}

} // namespace kalvento::tool
