#include "host/CallRecords.h"

#include "platform/CodePage.h"
#include "platform/FileStamp.h"
#include "platform/FolderTools.h"
#include "platform/WidePath.h"
#include "settings/Settings.h"
#include "velo/Log.h"

#include <string_view>
#include <system_error>
#include <utility>

namespace kalvento::host {

namespace {

using kalvento::internal::FileStamp;
using kalvento::internal::HeldFile;

constexpr std::string_view S_extension = ".call";
constexpr std::string_view XML_FILE = "File";
constexpr std::string_view XML_STAMP = "Stamp";
constexpr std::string_view XML_PLUGIN = "Plugin";
constexpr std::string_view XML_PHASE = "Phase";
constexpr std::string_view XML_OVERDUE = "Overdue";

std::optional<CallRecords::Left> Parse(const HeldFile& a_file)
{
    Settings node;
    const std::string text = a_file.Read();
    if (text.empty() || !node.ConvertFromString(text))
        return std::nullopt;
    const Settings& read = node;
    CallRecords::Left left;
    left.record = a_file.GetPath();
    left.call.file = WidePath::ToPath(static_cast<std::wstring>(read[XML_FILE]));
    left.call.plugin = static_cast<std::wstring>(read[XML_PLUGIN]);
    left.call.phase = static_cast<std::wstring>(read[XML_PHASE]);
    left.stamp = static_cast<const std::string&>(read[XML_STAMP]);
    left.isOverdue = read[XML_OVERDUE];
    return left;
}

} // namespace

CallRecords::CallRecords(std::filesystem::path a_folder) : m_folder(std::move(a_folder))
{
    if (FolderTools::MakeFolder(m_folder, FolderTools::EForUserOnly) && FolderTools::IsUsersOwn(m_folder))
        m_file = HeldFile::Make(m_folder, S_extension);
    if (!m_file)
        VeloTools::Log::Instance().Write(
            "kalvento::host::CallRecords", __LINE__,
            CodePage::WideToCp1250(L"Nie można zapisywać wywołań wtyczek w folderze " +
                                   WidePath::ToWide(m_folder)));
}

CallRecords::~CallRecords()
{
    if (m_file)
        m_file->Remove();
}

void CallRecords::Write(const PluginCall& a_call, bool a_isOverdue) const
{
    if (!m_file)
        return;
    Settings node;
    node[XML_FILE] = WidePath::ToWide(a_call.file);
    node[XML_STAMP] = FileStamp(a_call.file).value_or("");
    node[XML_PLUGIN] = a_call.plugin;
    node[XML_PHASE] = a_call.phase;
    node[XML_OVERDUE] = a_isOverdue;
    m_file->Write(node.ConvertToString());
}

void CallRecords::Clear() const
{
    if (m_file)
        m_file->Write({});
}

std::vector<CallRecords::Left> CallRecords::FindLeft() const
{
    std::vector<Left> all;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(m_folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() != S_extension || (m_file && entry->path() == m_file->GetPath()))
            continue;
        auto file = HeldFile::Take(entry->path());
        if (!file)
            continue;
        if (auto left = Parse(*file))
            all.push_back(std::move(*left));
        else
            file->Remove();
    }
    return all;
}

void CallRecords::Forget(const Left& a_left)
{
    if (auto file = HeldFile::Take(a_left.record))
        file->Remove();
}

} // namespace kalvento::host
