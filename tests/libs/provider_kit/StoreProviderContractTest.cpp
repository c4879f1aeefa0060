#include "contract_kit/ProviderContract.h"

#include "StoreTestTools.h"

namespace {

class StoreSubject : public ProviderSubject {
public:
    StoreSubject()
    {
        for (const char* isin : {"PLTEST000001", "PLTEST000002"})
            m_quotes.AddTicks(isin, 3 * TickMaker::S_rowsPerDay);
        m_quotes.Connect();
    }
    ProviderBase& Provider() override { return m_quotes.provider; }
    bool MakeLiveData(const Asset& a_asset) override
    {
        const std::lock_guard lock(m_mutex); // the rows are numbered
        m_quotes.AddTicks(a_asset.GetIsin(), 1);
        return true;
    }

private:
    std::mutex m_mutex;
    StoreQuotes m_quotes;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Stores, ProviderContract,
                         testing::Values(ProviderContractCase{
                             "Memory", [] { return std::make_unique<StoreSubject>(); }}),
                         [](const auto& a_info) { return std::string(a_info.param.name); });
