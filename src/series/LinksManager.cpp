#include "series/LinksManager.h"

#include "series/SeriesTable.h"
#include "velo/String.h"

namespace {

std::map<ESeriesId, std::string> MakeSeriesLinks()
{
    std::map<ESeriesId, std::string> links;
    for (const kalvento::internal::SeriesInfo& series : kalvento::internal::SeriesTable())
        if (!series.key.empty())
            links.emplace(series.id, series.key);
    return links;
}

std::map<EAdditFields, std::string> MakeFieldLinks()
{
    return {{EAdditPrice, "kurs"},
            {EAdditVolume, "wolumen"},
            {EAdditMultiplier, "mnoznik"},
            {EAdditTime, "czas"},
            {EAdditNominal, "nominal"}};
}

template<class Id>
std::map<std::string, Id> Invert(const std::map<Id, std::string>& a_links)
{
    std::map<std::string, Id> inverse;
    for (const auto& [id, link] : a_links)
        inverse.emplace(link, id);
    return inverse;
}

template<class Id>
const std::string& FindLink(const std::map<Id, std::string>& a_links, Id a_id)
{
    const auto found = a_links.find(a_id);
    return found == a_links.end() ? VeloTools::String::EmptyString() : found->second;
}

} // namespace

const std::map<ESeriesId, std::string> LinksManager::m_seriesId2Links = MakeSeriesLinks();
const std::map<std::string, ESeriesId> LinksManager::m_links2SeriesId = Invert(m_seriesId2Links);
const std::map<EAdditFields, std::string> LinksManager::m_additionalId2links = MakeFieldLinks();
const std::map<std::string, EAdditFields> LinksManager::m_links2additionalId = Invert(m_additionalId2links);

const std::string& LinksManager::GetLink(ESeriesId a_seriesId) const
{
    return FindLink(m_seriesId2Links, a_seriesId);
}

const std::string& LinksManager::GetLink(EAdditFields a_field) const
{
    return FindLink(m_additionalId2links, a_field);
}

const std::string& LinksManager::GetLinkByUnknownTypeId(int a_id) const
{
    const std::string& seriesLink = GetLink(static_cast<ESeriesId>(a_id));
    return seriesLink.empty() ? GetLink(static_cast<EAdditFields>(a_id)) : seriesLink;
}

std::pair<bool, int> LinksManager::LinkExist(const std::string& a_link) const
{
    const std::string link = VeloTools::String::ToLower(a_link);
    if (const auto series = m_links2SeriesId.find(link); series != m_links2SeriesId.end())
        return {true, static_cast<int>(series->second)};
    if (const auto field = m_links2additionalId.find(link); field != m_links2additionalId.end())
        return {true, static_cast<int>(field->second)};
    return {false, -1};
}

ESeriesId LinksManager::FindSeriesIdByLink(const std::string& a_link) const
{
    const auto found = m_links2SeriesId.find(VeloTools::String::ToLower(a_link));
    return found == m_links2SeriesId.end() ? ESeriesId{} : found->second;
}
