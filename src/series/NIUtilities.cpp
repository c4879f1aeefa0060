#include "series/NIUtilities.h"

namespace {

bool IsBetween(ESeriesId a_seriesId, ESeriesId a_first, ESeriesId a_last)
{
    return a_seriesId >= a_first && a_seriesId <= a_last;
}

bool IsOfferPrice(ESeriesId a_seriesId)
{
    return IsBetween(a_seriesId, Bid1, Ask5);
}

} // namespace

bool NIUtilities::AllowToRoundDownForUIPresentation(ESeriesId a_seriesId)
{
    return a_seriesId != Price && !IsBetween(a_seriesId, Tko, Reference) && a_seriesId != StaticMin &&
           a_seriesId != StaticMax && !IsOfferPrice(a_seriesId) && a_seriesId != DynamicMin &&
           a_seriesId != DynamicMax;
}

bool NIUtilities::ForceMinPrecisionForSeries(ESeriesId a_seriesId)
{
    return a_seriesId != Tko && !IsOfferPrice(a_seriesId);
}

bool NIUtilities::PreventSettingConstantPrecision(ESeriesId a_seriesId)
{
    return IsBetween(a_seriesId, Volume, Lop) || IsBetween(a_seriesId, Turnover, VolumeTotal) ||
           IsBetween(a_seriesId, BidVolume1, AskOrders5) || a_seriesId == Two;
}
