#include "host/TrialText.h"

#include "platform/WidePath.h"

#include <algorithm>

namespace kalvento::host {

namespace {

constexpr std::string_view XML_PROGRAM = "Program";
constexpr std::string_view XML_NAME = "Name";
constexpr std::string_view XML_PLUGIN = "Plugin";
constexpr std::string_view XML_OPTIONS = "Options";
constexpr std::string_view XML_NODE = "Node";
constexpr std::string_view XML_PHASE = "Phase";
constexpr std::string_view XML_STATE = "State";
constexpr std::string_view XML_REASON = "Reason";
constexpr std::string_view XML_VERSION = "Version";

// A tree's text is one line.
std::string Line(const Settings& a_node)
{
    return a_node.ConvertToString() + '\n';
}

} // namespace

std::string TrialTaskText(const TrialTask& a_task)
{
    Settings node;
    node[XML_PROGRAM] = WidePath::ToWide(a_task.program);
    node[XML_NAME] = a_task.name;
    node[XML_PLUGIN] = WidePath::ToWide(a_task.plugin);
    for (const auto& [plugin, options] : a_task.options.pluginOptions) {
        Settings& entry = node[XML_OPTIONS].AddUnnamed();
        entry[XML_NAME] = plugin;
        entry[XML_NODE] = options;
    }
    return node.ConvertToString();
}

std::optional<TrialTask> ReadTrialTask(std::string_view a_text)
{
    Settings read;
    if (!read.ConvertFromString(a_text))
        return std::nullopt;
    const Settings& node = read;
    TrialTask task;
    task.program = WidePath::ToPath(static_cast<std::wstring>(node[XML_PROGRAM]));
    task.name = static_cast<std::wstring>(node[XML_NAME]);
    task.plugin = WidePath::ToPath(static_cast<std::wstring>(node[XML_PLUGIN]));
    const Settings& options = node[XML_OPTIONS];
    for (auto entry = options.begin_unnamed(); entry != options.end_unnamed(); ++entry) {
        const std::string& plugin = (*entry)[XML_NAME];
        task.options.pluginOptions[plugin] = (*entry)[XML_NODE];
    }
    return task;
}

std::string TrialCallText(const PluginCall& a_call)
{
    Settings node;
    node[XML_NAME] = a_call.plugin;
    node[XML_PHASE] = a_call.phase;
    return Line(node);
}

std::string TrialReportText(const PluginReport& a_report)
{
    Settings node;
    node[XML_STATE] = static_cast<unsigned int>(a_report.state);
    node[XML_PHASE] = a_report.phase;
    node[XML_REASON] = a_report.reason;
    node[XML_NAME] = a_report.name;
    node[XML_VERSION] = a_report.version;
    return Line(node);
}

TrialAnswer ReadTrialAnswer(std::string_view a_text)
{
    TrialAnswer answer;
    // What follows the last line end was cut off.
    for (std::size_t end = a_text.find('\n'); end != std::string_view::npos; end = a_text.find('\n')) {
        Settings read;
        const bool isRead = read.ConvertFromString(a_text.substr(0, end));
        a_text.remove_prefix(end + 1);
        if (!isRead)
            continue;
        const Settings& node = read;
        answer.plugin = static_cast<std::wstring>(node[XML_NAME]);
        answer.phase = static_cast<std::wstring>(node[XML_PHASE]);
        if (!node[XML_STATE].Exists())
            continue;
        PluginReport& report = answer.report.emplace();
        const unsigned int state = node[XML_STATE];
        report.state = state <= EPluginStateFailed ? static_cast<EPluginState>(state) : EPluginStateFailed;
        report.phase = answer.phase;
        report.reason = static_cast<std::wstring>(node[XML_REASON]);
        report.name = answer.plugin;
        report.version = static_cast<std::wstring>(node[XML_VERSION]);
    }
    return answer;
}

} // namespace kalvento::host
