#include "assets/Asset.h"
#include "assets/AssetsGroup.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

// A whole market with its derivatives. A group of it is sorted when a provider has given its assets, and merged when
// the list of instruments changes: the user waits for the window that shows them.
constexpr std::size_t S_market = 50000;
constexpr std::size_t S_change = 5000; // instruments that a merge brings, half of them new

void Check(bool a_holds)
{
    if (!a_holds)
        std::abort();
}

Asset MakeAsset(std::size_t a_number)
{
    // ISINs of one country share their first letters, which is what makes them slow to compare.
    const std::string digits = std::to_string(a_number);
    const std::string name = "FW20Z" + digits;
    return {nullptr, name, name, "WSE", "PL0GF" + std::string(7 - digits.size(), '0') + digits};
}

std::vector<Asset> MakeAssets(std::size_t a_first, std::size_t a_count, std::size_t a_step)
{
    std::vector<Asset> assets;
    for (std::size_t place = 0; place < a_count; ++place)
        assets.push_back(MakeAsset(a_first + place * a_step));
    std::shuffle(assets.begin(), assets.end(), std::mt19937(1));
    return assets;
}

AssetsGroup MakeUnsorted()
{
    AssetsGroup group(1, false, L"", L"", nullptr);
    for (auto& asset : MakeAssets(0, S_market, 2))
        group.AddAsset(std::make_shared<Asset>(std::move(asset)));
    return group;
}

AssetsGroup MakeMarket()
{
    AssetsGroup group = MakeUnsorted();
    group.SortAssets();
    return group;
}

// Even numbers are in the market, odd ones are not.
std::vector<Asset> MakeChange()
{
    return MakeAssets(1000, S_change, 1);
}

using AssetList = std::vector<std::shared_ptr<Asset>>;

bool IsBefore(const std::shared_ptr<Asset>& a_left, const std::shared_ptr<Asset>& a_right)
{
    return *a_left < *a_right;
}

bool AreSame(const AssetsGroup& a_group, const AssetList& a_list)
{
    return std::equal(a_group.begin(), a_group.end(), a_list.begin(), a_list.end(),
                      [](const auto& a_left, const auto& a_right) { return *a_left == *a_right; });
}

/// What a merge would be that kept no order to search in.
void MergeByHash(AssetList& a_list, std::vector<Asset>&& a_assets)
{
    const auto identityOf = [](const Asset& a_asset) {
        return a_asset.GetIsin() + '\n' + a_asset.GetMarket();
    };
    std::unordered_set<std::string> known;
    known.reserve(a_list.size());
    for (const auto& asset : a_list)
        known.insert(identityOf(*asset));
    for (auto& asset : a_assets)
        if (!known.contains(identityOf(asset)))
            a_list.push_back(std::make_shared<Asset>(std::move(asset)));
    std::sort(a_list.begin(), a_list.end(), IsBefore);
}

void BM_SortMarket(benchmark::State& a_state)
{
    const AssetsGroup unsorted = MakeUnsorted();
    const AssetsGroup sorted = MakeMarket();
    Check(std::is_sorted(sorted.begin(), sorted.end(), IsBefore));
    for (auto _ : a_state) {
        AssetsGroup group = unsorted;
        group.SortAssets();
        benchmark::DoNotOptimize(group);
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(S_market));
}
BENCHMARK(BM_SortMarket)->UseRealTime();

// The same with the plain sort of the standard library.
void BM_SortMarketPlainly(benchmark::State& a_state)
{
    const AssetsGroup group = MakeUnsorted();
    const AssetList unsorted(group.begin(), group.end());
    for (auto _ : a_state) {
        AssetList list = unsorted;
        std::sort(list.begin(), list.end(), IsBefore);
        benchmark::DoNotOptimize(list);
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(S_market));
}
BENCHMARK(BM_SortMarketPlainly)->UseRealTime();

void BM_MergeIntoMarket(benchmark::State& a_state)
{
    const AssetsGroup market = MakeMarket();
    const std::vector<Asset> change = MakeChange();
    {
        AssetsGroup group = market;
        AssetList list(market.begin(), market.end());
        group.MergeAssets(std::vector<Asset>(change));
        MergeByHash(list, std::vector<Asset>(change));
        Check(AreSame(group, list) && list.size() == S_market + S_change / 2);
    }
    for (auto _ : a_state) {
        AssetsGroup group = market;
        group.MergeAssets(std::vector<Asset>(change));
        benchmark::DoNotOptimize(group);
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(S_change));
}
BENCHMARK(BM_MergeIntoMarket)->UseRealTime();

void BM_MergeIntoMarketByHash(benchmark::State& a_state)
{
    const AssetsGroup market = MakeMarket();
    const std::vector<Asset> change = MakeChange();
    for (auto _ : a_state) {
        AssetList list(market.begin(), market.end());
        MergeByHash(list, std::vector<Asset>(change));
        benchmark::DoNotOptimize(list);
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(S_change));
}
BENCHMARK(BM_MergeIntoMarketByHash)->UseRealTime();

// Whether each of the changed instruments is there, as a window asks that marks the known ones.
void BM_SearchMarket(benchmark::State& a_state)
{
    const AssetsGroup market = MakeMarket();
    const std::vector<Asset> wanted = MakeChange();
    for (auto _ : a_state) {
        std::size_t found = 0;
        for (const Asset& asset : wanted)
            found += market.HasInstrument(asset) ? 1U : 0U;
        Check(found == S_change / 2);
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(S_change));
}
BENCHMARK(BM_SearchMarket)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
