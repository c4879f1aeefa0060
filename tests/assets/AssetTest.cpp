#include "assets/Asset.h"

#include "assets/AssetParams.h"
#include "platform/CodePage.h"
#include "series/DSProp.h"
#include "settings/Settings.h"
#include "support/TestMediator.h"
#include "support/TestProvider.h"
#include "time/KalventoException.h"
#include "velo/Log.h"

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

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
    const Asset oneName(&alpha, "KGH", "KGH", "KGH", "PL1");
    struct Case {
        const char* name;
        Asset left;
        Asset right;
        bool equal;
    };
    const Case cases[] = {
        {"one name for all", oneName, Asset(oneName), true},
        {"other's long name is not read", oneName, Asset(&alpha, "KGH", "inna", "KGH", "PL1"), true},
        {"other's market is not read", oneName, Asset(&alpha, "KGH", "KGH", "GPW", "PL1"), true},
        {"other short name", oneName, Asset(&alpha, "KG", "KGH", "KGH", "PL1"), false},
        {"other ISIN", oneName, Asset(&alpha, "KGH", "KGH", "KGH", "PL2"), false},
        {"other provider", oneName, Asset(&beta, "KGH", "KGH", "KGH", "PL1"), false},
        {"own copy", sample, Asset(sample), false},
        {"own long name differs", Asset(&alpha, "KGH", "inna", "KGH", "PL1"), oneName, false},
        {"own market differs", Asset(&alpha, "KGH", "KGH", "GPW", "PL1"), oneName, false},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        EXPECT_EQ(entry.left.IsEqual(entry.right), entry.equal);
    }
}

TEST_F(AssetTest, SettingsKeepTheBytesAndFindTheProvider)
{
    Settings tree;
    sample.SerializeState(tree);
    Settings stored;
    ASSERT_TRUE(stored.ConvertFromString(tree.ConvertToString()));
    const Asset again(stored);
    EXPECT_EQ(again.GetProvider(), &alpha);
    EXPECT_EQ(FieldsOf(again), FieldsOf(sample));
    EXPECT_EQ(static_cast<std::wstring>(stored["Provider"]), alpha.GetName());
}

TEST_F(AssetTest, AProviderThatIsGoneLeavesTheAssetUnserved)
{
    Settings tree;
    sample.SerializeState(tree);
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
    // What else stands there does not matter.
    auto more = object;
    more["Version"] = 2;
    EXPECT_EQ(FieldsOf(Asset(boost::json::value(more))), "a|b|c|d");
}

TEST_F(AssetTest, HistorySeriesMustAllBeOffered)
{
    alpha.series = {DSProp(Open), DSProp(Price), DSProp(Indicator, EAggrTypeLast, L"b", EPrecision2),
                    DSProp(Indicator, EAggrTypeLast, L"a", EPrecision2)};
    alpha.alternativeSeries = {DSProp(Volume)};
    struct Case {
        std::set<ESeriesId> wanted;
        bool alternative;
        bool held;
    };
    const Case cases[] = {
        {{Price}, false, true},         {{Open, Price, Indicator}, false, true},
        {{Open, Volume}, false, false}, {{Volume}, true, true},
        {{Price}, true, false},
    };
    for (const Case& entry : cases)
        EXPECT_EQ(sample.HistoryRecordHasSeries(entry.wanted, entry.alternative), entry.held);
    EXPECT_TRUE(sample.RecordHasSeries(Indicator));
    EXPECT_FALSE(sample.RecordHasSeries(Volume));

    const int questions = alpha.seriesQuestions;
    EXPECT_TRUE(sample.HistoryRecordHasSeries({}, false));
    EXPECT_EQ(alpha.seriesQuestions, questions);
    EXPECT_FALSE(
        Asset(&beta, "", "", "", "").HistoryRecordHasSeries({Price}, false)); // offers nothing at all
    EXPECT_THROW(Asset(nullptr, "", "", "", "").HistoryRecordHasSeries({}, false), KalventoException);
}

TEST_F(AssetTest, QuestionsReachTheProviderUnderTheRightKey)
{
    alpha.params[sample.GetIsin()] = AssetParams(4U);
    alpha.sessionDate = NDateTime(2021, 3, 1);
    EXPECT_EQ(sample.GetParams().GetKindData(), 4U);
    EXPECT_EQ(sample.GetSessionDate()->GetDay(), 1U);
}

TEST_F(AssetTest, WithoutAProviderThereIsNoSessionDateButOneLine)
{
    std::vector<std::string> lines;
    const auto sink =
        VeloTools::Log::Instance().AddSink([&](std::string_view a_source, int, std::string_view a_message) {
            lines.push_back(std::string(a_source) + ": " + std::string(a_message));
        });
    EXPECT_FALSE(Asset(nullptr, "K%d", "b", "c", "d").GetSessionDate());
    VeloTools::Log::Instance().RemoveSink(sink);
    EXPECT_EQ(lines, std::vector<std::string>{"Asset::GetSessionDate: Walor: K%d nie posiada dostawcy"});
}

} // namespace
