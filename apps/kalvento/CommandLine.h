#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

/// The command line of a program: options, commands and their help. Only the source of this header knows the parser,
/// since a file that includes it takes longer to compile than most commands.
namespace kalvento::tool {

/// Refuses the value of an option from within a function that takes it: the program ends with help on the usage.
[[noreturn]] void RefuseOption(const std::string& a_option, const std::string& a_reason);

/// An option while it is set up. Copies name the same option; it belongs to its command.
class CommandOption {
public:
    explicit CommandOption(CLI::Option* a_option) : m_option(a_option) {}

    CommandOption& Required();
    /// The help's word for the value.
    CommandOption& TypeName(const std::string& a_name);
    /// The texts accepted.
    CommandOption& OneOf(const std::vector<std::string>& a_texts);
    /// The numbers accepted, both ends included.
    template<typename Number>
    CommandOption& Between(Number a_least, Number a_greatest);
    /// The character that separates several values in one argument.
    CommandOption& Separator(char a_sign);
    /// Each value has its own option before it.
    CommandOption& OneValueEach();
    /// The help shows the value that the variable has now.
    CommandOption& ShowDefault();
    /// The help shows this as the value without the option; nothing is set.
    CommandOption& DefaultText(const std::string& a_text);

private:
    CLI::Option* m_option;
};

/// A command with its options, or the program itself. Copies name the same one; it belongs to its CommandLine. Names of
/// options are given together, "--output,-o"; a name without dashes takes its place on the line. Targets must outlive
/// the parse and keep their value where the option isn't given.
class Command {
public:
    explicit Command(CLI::App* a_command) : m_command(a_command) {}

    Command AddCommand(const std::string& a_name, const std::string& a_help) const;
    /// The same command; options added through the returned one appear under that heading in the help.
    Command Under(const std::string& a_heading) const;

    /// For texts, lists of texts, and numbers, optional ones too.
    template<typename Value>
    CommandOption AddOption(const std::string& a_names, Value& a_target, const std::string& a_help) const;
    /// The function is called with the text, once the whole line is read.
    CommandOption AddOption(const std::string& a_names, std::function<void(const std::string&)> a_function,
                            const std::string& a_help) const;
    CommandOption AddList(const std::string& a_names,
                          std::function<void(const std::vector<std::string>&)> a_function,
                          const std::string& a_help) const;
    /// One of several words, each with its value.
    template<typename Value, typename Target>
    CommandOption AddChoice(const std::string& a_names, Target& a_target,
                            std::initializer_list<std::pair<const char*, Value>> a_choices,
                            const std::string& a_help) const
    {
        const std::vector<std::pair<const char*, Value>> choices(a_choices);
        std::vector<std::string> words;
        for (const auto& [word, value] : choices)
            words.emplace_back(word);
        return AddOption(
                   a_names,
                   std::function<void(const std::string&)>([choices, &a_target](const std::string& a_word) {
                       for (const auto& [word, value] : choices)
                           if (a_word == word)
                               a_target = value;
                   }),
                   a_help)
            .OneOf(words);
    }
    CommandOption AddFlag(const std::string& a_names, bool& a_target, const std::string& a_help) const;
    CommandOption AddFlag(const std::string& a_names, std::function<void()> a_function,
                          const std::string& a_help) const;

    /// The text below the options in the help.
    void SetFooter(const std::string& a_text) const;
    /// Called when the line is read and names this command.
    void OnRun(std::function<void()> a_function) const;

private:
    CommandOption Place(CLI::Option* a_option) const;

    CLI::App* m_command;
    std::string m_heading; // empty: the usual one
};

/// The command line of one run. One thread.
class CommandLine {
public:
    CommandLine(const std::string& a_help, const std::string& a_program);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// The program's own options. Where commands are added, one of them must be named; options may follow it.
    Command GetProgram() const { return Command(m_app.get()); }
    void SetVersion(const std::string& a_text);
    void RequireCommand();

    /// What became of the parsing.
    enum EOutcome : std::uint8_t {
        EParsed,   ///< All is set, and the command that was named has run.
        EToldUser, ///< Help or the version was asked for and written to a_out.
        ERefused   ///< The line makes no sense; a_err says what is wrong.
    };
    /// What a command raises passes through.
    EOutcome Parse(std::vector<std::string> a_arguments, std::ostream& a_out, std::ostream& a_err);

private:
    std::unique_ptr<CLI::App> m_app;
};

} // namespace kalvento::tool
