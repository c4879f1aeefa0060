#include "provider_kit/InstrumentList.h"

#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "velo/Log.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

namespace kalvento::internal {

namespace {

// Unusable rows are better refused here, once, than at each subscription.
bool HasUsableRows(const StoreInstrument& a_instrument)
{
    const auto& series = a_instrument.series;
    return a_instrument.interval.IsValid() && (!a_instrument.live || a_instrument.interval.IsSingleTick()) &&
           std::ranges::find(series, Price, &DSProp::GetSeriesID) != series.end();
}

// What is saved of a group is its number, so that depends on the name alone and not on the other groups of the moment.
// FNV-1a, 32 bits; source: RFC 9923, "The FNV Non-Cryptographic Hash Algorithm". If a number is taken, the next one is
// used.
std::uint32_t TakeNumber(const std::wstring& a_name, std::set<std::uint32_t>& a_taken)
{
    std::uint32_t number = 0x811C9DC5U;
    for (const char sign : CodePage::WideToUtf8(a_name))
        number = (number ^ static_cast<unsigned char>(sign)) * 0x01000193U;
    while (number == 0 || !a_taken.insert(number).second)
        ++number;
    return number;
}

} // namespace

InstrumentList::InstrumentList(ProviderBase& a_provider, std::vector<StoreInstrument>&& a_instruments)
{
    std::map<std::wstring, std::vector<std::shared_ptr<Asset>>> groups;
    for (StoreInstrument& instrument : a_instruments) {
        const std::string isin = instrument.isin;
        const std::wstring fault = FindFault(instrument);
        if (!fault.empty()) {
            m_leftOut.push_back(L"Pominięto walor " + CodePage::Cp1250ToWide(isin) + L": " + fault);
            VeloTools::Log::Instance().Write(
                "InstrumentList::InstrumentList", __LINE__,
                "Dostawca "_cp1250 + CodePage::WideToCp1250(a_provider.GetName() + L": " + m_leftOut.back()));
            continue;
        }
        const auto asset = std::make_shared<Asset>(&a_provider, instrument.shortName, instrument.longName,
                                                   instrument.market, isin);
        for (const std::wstring& group : instrument.groups)
            groups[group].push_back(asset);
        m_assets.push_back(asset);
        m_entries.emplace(isin, Entry{std::move(instrument), asset});
    }
    std::ranges::sort(m_assets, [](const auto& a_left, const auto& a_right) { return *a_left < *a_right; });
    std::set<std::uint32_t> numbers;
    for (const auto& [name, members] : groups) {
        AssetsGroup group(TakeNumber(name, numbers), false, name, a_provider.GetName(), &a_provider);
        for (const auto& asset : members)
            group.AddAsset(asset);
        group.SortAssets();
        m_groups.push_back(std::move(group));
    }
}

const StoreInstrument* InstrumentList::Find(const std::string& a_isin) const
{
    const auto entry = m_entries.find(a_isin);
    return entry != m_entries.end() ? &entry->second.instrument : nullptr;
}

std::shared_ptr<Asset> InstrumentList::FindAsset(const std::string& a_isin) const
{
    const auto entry = m_entries.find(a_isin);
    return entry != m_entries.end() ? entry->second.asset : nullptr;
}

// Why it is left out; empty where it is served.
std::wstring InstrumentList::FindFault(const StoreInstrument& a_instrument) const
{
    if (!a_instrument.fault.empty())
        return a_instrument.fault;
    if (!IsServable(a_instrument.isin))
        return L"taki ISIN nie może być nazwą folderu";
    if (m_entries.contains(a_instrument.isin))
        return L"powtarza się";
    return HasUsableRows(a_instrument) ? std::wstring() : L"nie ma ceny albo ma niemożliwy interwał";
}

bool InstrumentList::IsServable(const std::string& a_isin)
{
    constexpr std::size_t longestName = 120; // in UTF-8 it may take twice as many bytes
    return !a_isin.empty() && a_isin.size() <= longestName && a_isin != "." && a_isin != ".." &&
           std::ranges::none_of(a_isin, [](char a_sign) {
               return a_sign == '/' || a_sign == '\\' || static_cast<unsigned char>(a_sign) < ' ';
           });
}

} // namespace kalvento::internal
