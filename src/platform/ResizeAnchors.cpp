#include "platform/ResizeAnchors.h"

#include "platform/CodePage.h"
#include "platform/NearestInt.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace kalvento::internal {

namespace {

std::int32_t Moved(std::int32_t a_edge, double a_share, std::int64_t a_growth)
{
    return NearestInt(std::int64_t{a_edge} + std::lround(a_share * static_cast<double>(a_growth)));
}

// One axis of FillTrackSizes.
void FillTrack(std::int32_t& a_leastTrack, std::int32_t& a_mostTrack, std::int32_t a_least,
               std::int32_t a_most, std::int64_t a_frame)
{
    if (a_least > 0)
        a_leastTrack = NearestInt(a_least + a_frame);
    if (a_most > 0)
        a_mostTrack = NearestInt(std::max(a_least, a_most) + a_frame);
}

} // namespace

void ResizeAnchors::SetResize(UINT a_id, const CRect& a_rectangle, const Shares& a_shares)
{
    for (const double share : {a_shares.left, a_shares.top, a_shares.right, a_shares.bottom})
        if (!(share >= 0.0 && share <= 1.0))
            throw std::invalid_argument("Udział spoza przedziału od 0 do 1: a_shares"_cp1250);

    const Control control{{a_id, a_rectangle}, a_shares};
    const auto same = std::ranges::find_if(
        m_controls, [a_id](const Control& a_other) { return a_other.initial.id == a_id; });
    if (same == m_controls.end())
        m_controls.push_back(control);
    else
        *same = control;
}

std::vector<ResizeAnchors::Placed> ResizeAnchors::Place(const CSize& a_client) const
{
    const std::int64_t growthX = std::int64_t{a_client.cx} - m_initial.cx;
    const std::int64_t growthY = std::int64_t{a_client.cy} - m_initial.cy;
    std::vector<Placed> placed;
    placed.reserve(m_controls.size());
    for (const auto& [initial, shares] : m_controls) {
        const CRect& from = initial.rectangle;
        CRect to{Moved(from.left, shares.left, growthX), Moved(from.top, shares.top, growthY),
                 Moved(from.right, shares.right, growthX), Moved(from.bottom, shares.bottom, growthY)};
        to.right = std::max(to.left, to.right);
        to.bottom = std::max(to.top, to.bottom);
        placed.push_back({initial.id, to});
    }
    return placed;
}

void ResizeAnchors::FillTrackSizes(MINMAXINFO& a_info, const CSize& a_frame) const
{
    FillTrack(a_info.ptMinTrackSize.x, a_info.ptMaxTrackSize.x, m_min.cx, m_max.cx, a_frame.cx);
    FillTrack(a_info.ptMinTrackSize.y, a_info.ptMaxTrackSize.y, m_min.cy, m_max.cy, a_frame.cy);
}

} // namespace kalvento::internal
