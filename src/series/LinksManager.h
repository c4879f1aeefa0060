#pragma once

#include "platform/Export.h"
#include "series/EAdditFields.h"
#include "series/ESeriesId.h"

#include <map>
#include <string>
#include <utility>

/// The text keys, called links, by which formulas, field lists and other programs name a series or an additional field,
/// and the way back. Three keys ("kurs", "wolumen", "czas") name a series and a field; the series wins.
///
/// All objects share their tables, which belong to the process, are filled before main and then only read, so any
/// thread may call. Static objects of other libraries may call; those of this library may not.
class KALVENTO_API LinksManager {
public:
    using const_iterator = std::map<ESeriesId, std::string>::const_iterator;

    /// The 49 series that have a link, by their numbers.
    const_iterator begin() const { return m_seriesId2Links.begin(); }
    const_iterator end() const { return m_seriesId2Links.end(); }
    /// The entry of a series, or end.
    const_iterator Find(ESeriesId a_seriesId) const { return m_seriesId2Links.find(a_seriesId); }

    /// The link, or VeloTools::String::EmptyString() where there is none.
    const std::string& GetLink(ESeriesId a_seriesId) const;
    const std::string& GetLink(EAdditFields a_field) const;
    /// For a number that may be either: a series first, then a field.
    const std::string& GetLinkByUnknownTypeId(int a_id) const;

    /// The number of the series or, failing that, of the field that a link names, in upper or lower case; false and -1
    /// where it names nothing.
    std::pair<bool, int> LinkExist(const std::string& a_link) const;
    /// The series that a link names, in upper or lower case; 0, which is no series, where it names none.
    ESeriesId FindSeriesIdByLink(const std::string& a_link) const;

private:
    static const std::map<ESeriesId, std::string> m_seriesId2Links;
    static const std::map<std::string, ESeriesId> m_links2SeriesId;
    static const std::map<EAdditFields, std::string> m_additionalId2links;
    static const std::map<std::string, EAdditFields> m_links2additionalId;
};
