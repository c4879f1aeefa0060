#include "assets/AssetsGroup.h"

#include "assets/Asset.h"

#include <tbb/parallel_sort.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <iterator>
#include <new>
#include <span>
#include <string_view>
#include <thread>
#include <utility>

namespace {

// Fewer are sorted before a thread of the pool has woken up.
constexpr std::size_t S_mostSortedAlone = 32;

/// The standard library's failure of a parallel algorithm, under the text that callers show.
class NoParallelism : public std::bad_alloc {
public:
    const char* what() const noexcept override
    {
        return "Insufficient resources were available to use additional parallelism.";
    }
};

/// The first bytes of an ISIN, as a number of the same order. Shorter ones are filled with zero bytes, so equal numbers
/// say nothing: the texts decide.
using IsinHead = std::array<std::uint64_t, 2>;

IsinHead HeadOf(std::string_view a_isin)
{
    IsinHead head{};
    const std::size_t length = std::min(a_isin.size(), sizeof head);
    for (std::size_t place = 0; place < length; ++place) {
        const unsigned int shift = 56U - 8U * static_cast<unsigned int>(place % 8);
        head[place / 8] |= static_cast<std::uint64_t>(static_cast<unsigned char>(a_isin[place])) << shift;
    }
    return head;
}

/// One element to sort. The head settles nearly every comparison of real ISINs, which have 12 characters, without a
/// visit to the asset: assets lie scattered over the memory, and most of a sort would be spent on waiting for them.
struct SortEntry {
    IsinHead head;
    const std::shared_ptr<Asset>* place;
};

bool IsBefore(const SortEntry& a_left, const SortEntry& a_right)
{
    if (a_left.head != a_right.head)
        return a_left.head < a_right.head;
    return **a_left.place < **a_right.place;
}

/// Makes the pool start its threads while no sort depends on them. Where a thread can't be started, the pool raises in
/// the middle of handing out work, leaving a task that would find the sort's frame gone. An empty task of its own has
/// no frame to lose. Once the threads run, nothing is left to do.
void StartPool()
{
    static const bool S_started = [] {
        tbb::this_task_arena::enqueue([] {});
        return true;
    }();
    static_cast<void>(S_started);
}

void Sort(std::span<SortEntry> a_entries)
{
    if (a_entries.size() <= S_mostSortedAlone || std::thread::hardware_concurrency() <= 1) {
        std::sort(a_entries.begin(), a_entries.end(), IsBefore);
        return;
    }
    // Not std::execution::par, which ends the process where the pool can't be had.
    try {
        StartPool();
        tbb::parallel_sort(a_entries.begin(), a_entries.end(), IsBefore);
    } catch (const std::exception&) {
        throw NoParallelism();
    }
}

bool ComesBefore(const std::shared_ptr<Asset>& a_left, const Asset& a_right)
{
    return *a_left < a_right;
}

/// The element of that identity within the sorted range, or its end.
template<class Iterator>
Iterator Find(Iterator a_begin, Iterator a_end, const Asset& a_asset)
{
    const Iterator found = std::lower_bound(a_begin, a_end, a_asset, ComesBefore);
    return found != a_end && **found == a_asset ? found : a_end;
}

} // namespace

AssetsGroup::AssetsGroup(unsigned int a_id, bool a_isVirtual, std::wstring a_name,
                         std::wstring a_providerName, AssetsGroupProvider* a_provider)
    : m_id(a_id, a_isVirtual, std::move(a_providerName), a_provider), m_name(std::move(a_name))
{}

bool AssetsGroup::MergeAssets(std::vector<Asset>&& a_assets)
{
    const std::size_t count = m_assets.size();
    if (count == 0) {
        AddAssets(std::move(a_assets));
    } else {
        for (auto& asset : a_assets) {
            // Appending may move the elements, so the end of the old ones is counted anew each time.
            const auto oldEnd = std::next(m_assets.begin(), static_cast<std::ptrdiff_t>(count));
            if (Find(m_assets.begin(), oldEnd, asset) == oldEnd)
                m_assets.push_back(std::make_shared<Asset>(std::move(asset)));
        }
    }
    if (m_assets.size() == count)
        return false;
    SortAssets();
    return true;
}

bool AssetsGroup::RemoveAsset(const Asset& a_asset)
{
    const auto found = Find(m_assets.begin(), m_assets.end(), a_asset);
    if (found == m_assets.end())
        return false;
    m_assets.erase(found);
    return true;
}

void AssetsGroup::SortAssets()
{
    std::vector<SortEntry> entries;
    entries.reserve(m_assets.size());
    for (const auto& asset : m_assets)
        entries.push_back({HeadOf(asset->GetIsin()), &asset});
    std::vector<std::shared_ptr<Asset>> sorted;
    sorted.reserve(m_assets.size());

    Sort(entries);

    // From here on nothing raises; until here the list was only read.
    for (const SortEntry& entry : entries)
        sorted.push_back(std::move(m_assets[static_cast<std::size_t>(entry.place - m_assets.data())]));
    m_assets = std::move(sorted);
}

bool AssetsGroup::HasInstrument(const Asset& a_asset) const
{
    return Find(m_assets.begin(), m_assets.end(), a_asset) != m_assets.end();
}

bool AssetsGroup::HasInstrument(const std::shared_ptr<Asset>& /*a_asset*/) const
{
    // Plug-ins rely on this answer, and add what they ask for; the other overload tells the truth.
    return false;
}

void AssetsGroup::AddAssets(std::vector<Asset>&& a_assets)
{
    if (m_assets.empty())
        m_assets.reserve(a_assets.size());
    for (auto& asset : a_assets)
        m_assets.push_back(std::make_shared<Asset>(std::move(asset)));
}
