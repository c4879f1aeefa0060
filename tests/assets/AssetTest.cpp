#include "assets/Asset.h"

#include "assets/AssetParams.h"
#include "contract_kit/TestMediator.h"
#include "contract_kit/TestProvider.h"
#include "platform/CodePage.h"
#include "series/DSProp.h"
#include "support/LogWatch.h"
#include "support/StoredForm.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

#include <boost/json.hpp>

namespace {

class AssetTest : public testing::Test {
protected:
    AssetTest() { mediator.providers = {&alpha, &beta}; }

    TestProvider alpha{
        L"Giełda \u0142\u20ac"}; // a letter and a sign that narrow and wide forms write differently
    TestProvider beta{L"Zapas"};
    TestMediator mediator;
    // Bytes of CP1250 that are no UTF-8, and a zero byte.
    Asset sample{&alpha, "K\xB3\xEAty", std::string("a\0b", 3), "GPW", "PLKETY000011"};
};

std::string FieldsOf(const Asset& a_asset)
{
    return a_asset.GetShortName() + '|' + a_asset.GetLongName() + '|' + a_asset.GetMarket() + '|' +
           a_asset.GetIsin();
}

TEST_F(AssetTest, IdentityAndOrderAreThoseOfTheTriple)
{
    TestProvider alphaTwin(alpha.GetName()); // another object of the same name is the same provider
    std::vector<Asset> assets;
    for (ProviderBase* provider : {static_cast<ProviderBase*>(&alpha), static_cast<ProviderBase*>(&alphaTwin),
                                   static_cast<ProviderBase*>(&beta), static_cast<ProviderBase*>(nullptr)})
        for (const char* market : {"", "GPW", "GP", "\xB3"})
            for (const char* isin : {"", "PL", "PL\x01", "US", "\xEA"})
                assets.emplace_back(provider, provider == &beta ? "x" : "y", market, market, isin);

    const auto identityOf = [](const Asset& a_asset) {
        // std::string orders its bytes as unsigned ones, which is the order asked for.
        return std::tuple(a_asset.GetIsin(), a_asset.GetMarket(),
                          a_asset.IsProviderSet() ? a_asset.GetProvider()->GetName() : std::wstring());
    };
    for (const Asset& left : assets) {
        for (const Asset& right : assets) {
            SCOPED_TRACE(FieldsOf(left) + " / " + FieldsOf(right));
            EXPECT_EQ(left == right, identityOf(left) == identityOf(right));
            EXPECT_EQ(left != right, identityOf(left) != identityOf(right));
            EXPECT_EQ(left < right, identityOf(left) < identityOf(right));
        }
    }
}

TEST_F(AssetTest, IsEqualHoldsLongNameAndMarketAgainstTheOtherShortName)
{
    const auto asset = [this](const char* a_short, const char* a_long, const char* a_market) {
        return Asset(&alpha, a_short, a_long, a_market, "PL1");
    };
    const Asset oneName = asset("KGH", "KGH", "KGH");
    EXPECT_TRUE(oneName.IsEqual(asset("KGH", "inna", "GPW"))) << "these two of the other are not read";
    EXPECT_FALSE(oneName.IsEqual(asset("KG", "KGH", "KGH")));
    EXPECT_FALSE(oneName.IsEqual(Asset(&alpha, "KGH", "KGH", "KGH", "PL2")));
    EXPECT_FALSE(oneName.IsEqual(Asset(&beta, "KGH", "KGH", "KGH", "PL1")));
    EXPECT_FALSE(asset("KGH", "inna", "KGH").IsEqual(oneName));
    EXPECT_FALSE(asset("KGH", "KGH", "GPW").IsEqual(oneName));
    EXPECT_FALSE(sample.IsEqual(sample));
}

TEST_F(AssetTest, SettingsKeepTheBytesAndFindTheProviderUnlessItIsGone)
{
    Settings tree;
    ASSERT_TRUE(tree.ConvertFromString(StoredText(sample)));
    EXPECT_EQ(static_cast<std::wstring>(tree["Provider"]), alpha.GetName());
    EXPECT_EQ(Asset(tree).GetProvider(), &alpha);
    EXPECT_EQ(FieldsOf(Asset(tree)), FieldsOf(sample));
    mediator.providers.clear();
    const Asset unserved(tree);
    EXPECT_FALSE(unserved.IsProviderSet());
    EXPECT_EQ(FieldsOf(unserved), FieldsOf(sample));

    // Its own forms say so, under all five keys.
    Settings again;
    unserved.SerializeState(again);
    EXPECT_TRUE(again["Provider"].Exists());
    EXPECT_EQ(static_cast<std::wstring>(again["Provider"]), L"");
    EXPECT_EQ(unserved.Serialize().at("Provider").as_string(), "");
    // An empty tree is an asset too.
    EXPECT_EQ(FieldsOf(Asset(Settings())), "|||");
}

TEST_F(AssetTest, JsonHasTheFiveKeysInTheirOrder)
{
    const Asset plain(&alpha, "KTY", "GRUPA \"KĘTY\"", "GPW", "PLKETY000011");
    EXPECT_EQ(boost::json::serialize(plain.Serialize()),
              "{\"Provider\":\"Gie\xC5\x82"
              "da \xC5\x82\xE2\x82\xAC\",\"ShortName\":\"KTY\",\"LongName\":\"GRUPA \\\"KĘTY\\\"\","
              "\"Market\":\"GPW\",\"Isin\":\"PLKETY000011\"}");
    const Asset again(boost::json::parse(boost::json::serialize(plain.Serialize())));
    EXPECT_EQ(again.GetProvider(), &alpha);
    EXPECT_EQ(FieldsOf(again), FieldsOf(plain));
    // The value itself carries any bytes, though a text of it need not be readable.
    EXPECT_EQ(FieldsOf(Asset(sample.Serialize())), FieldsOf(sample));
}

TEST_F(AssetTest, JsonOfAnotherShapeIsRefused)
{
    const auto object = Asset(&beta, "a", "b", "c", "d").Serialize().as_object();
    for (const char* notObject : {"null", "[]", "\"Isin\"", "5", "true"}) {
        SCOPED_TRACE(notObject);
        EXPECT_THROW(Asset{boost::json::parse(notObject)}, std::invalid_argument);
    }
    for (const auto& member : object) {
        SCOPED_TRACE(std::string(member.key()));
        auto without = object;
        without.erase(member.key());
        EXPECT_THROW(Asset{boost::json::value(without)}, std::out_of_range);
        for (const boost::json::value& other : {boost::json::value(nullptr), boost::json::value(1),
                                                boost::json::value(boost::json::array{"d"})}) {
            auto changed = object;
            changed[member.key()] = other;
            EXPECT_THROW(Asset{boost::json::value(changed)}, std::invalid_argument);
        }
    }
}

TEST_F(AssetTest, HistorySeriesMustAllBeOffered)
{
    alpha.series = {DSProp(Open), DSProp(Price), DSProp(Indicator, EAggrTypeLast, L"b", EPrecision2),
                    DSProp(Indicator, EAggrTypeLast, L"a", EPrecision2)};
    alpha.alternativeSeries = {DSProp(Volume)};
    EXPECT_TRUE(sample.HistoryRecordHasSeries({Open, Price, Indicator}, false));
    EXPECT_FALSE(sample.HistoryRecordHasSeries({Open, Volume}, false));
    EXPECT_TRUE(sample.HistoryRecordHasSeries({Volume}, true));
    EXPECT_FALSE(sample.HistoryRecordHasSeries({Price}, true));
    EXPECT_TRUE(sample.RecordHasSeries(Indicator));
    EXPECT_FALSE(sample.RecordHasSeries(Volume));

    const int questions = alpha.seriesQuestions;
    EXPECT_TRUE(sample.HistoryRecordHasSeries({}, false));
    EXPECT_EQ(alpha.seriesQuestions, questions);
    EXPECT_THROW(Asset(nullptr, "", "", "", "").HistoryRecordHasSeries({}, false), KalventoException);
}

TEST_F(AssetTest, WithoutAProviderThereIsNoSessionDateButOneLine)
{
    const LogWatch log;
    EXPECT_FALSE(Asset(nullptr, "K%d", "b", "c", "d").GetSessionDate());
    EXPECT_EQ(log.lines, std::vector<std::string>{"Asset::GetSessionDate: Walor: K%d nie posiada dostawcy"});
}

} // namespace
