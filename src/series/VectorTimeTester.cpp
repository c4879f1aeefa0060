#include "series/VectorTimeTester.h"

#include "platform/CodePage.h"
#include "time/DateTimeTools.h"
#include "velo/Refuse.h"

#include <algorithm>
#include <cmath>

using kalvento::internal::Refuse;

bool VectorTimeTester::CheckIntegrity(const std::vector<NDateTime>& a_times, const NDateTime* a_day)
{
    constexpr const char* place = "VectorTimeTester::CheckIntegrity";
    if (a_times.size() < 2)
        return true;

    const auto isEarlier = [](const NDateTime& a_previous, const NDateTime& a_time) {
        return a_time < a_previous;
    };
    if (std::ranges::adjacent_find(a_times, isEarlier) != a_times.end())
        return Refuse(place, __LINE__, "Dane nie są integralne - wymieszanie"_cp1250);

    if (!a_day)
        return true;
    const NDateTime day = DateTimeTools::GetDate(*a_day);
    if (DateTimeTools::GetDate(a_times.front()) != day)
        return Refuse(place, __LINE__, "Dane nie są integralne - pierwsza data nie pokrywa się"_cp1250);
    if (DateTimeTools::GetDate(a_times.back()) != day)
        return Refuse(place, __LINE__, "Dane nie są integralne - ostatnia data nie pokrywa się"_cp1250);
    return true;
}

bool VectorTimeTester::ChangeRange(const std::vector<NDateTime>& a_times, NDateTime a_from, NDateTime a_to)
{
    // Whole days stay doubles here: a day number from a stored block may fit no integer.
    const double firstDay = std::trunc(a_from.ToDouble());
    const double lastDay = std::trunc(a_to.ToDouble());
    return std::ranges::none_of(a_times, [firstDay, lastDay](const NDateTime& a_time) {
        const double day = std::trunc(a_time.ToDouble());
        return day >= firstDay && day <= lastDay;
    });
}
