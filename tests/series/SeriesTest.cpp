#include "series/Series.h"

#include "platform/CodePage.h"
#include "series/DSPropTools.h"
#include "series/NIUtilities.h"
#include "series/SeriesTable.h"
#include "series/SeriesTestTools.h"
#include "settings/Settings.h"
#include "support/Testing.h"

using namespace kalvento::internal;
using namespace kalvento::tests;
using namespace VeloTools::Series;

TEST(SeriesTest, PrecisionFollowsTheGroups)
{
    for (const SeriesInfo& series : SeriesTable()) {
        SCOPED_TRACE(series.enumerator);
        const bool isValue = IsValueSeries(series.id);
        const bool isVolume = IsVolumeSeries(series.id);
        EXPECT_FALSE(isValue && isVolume);
        if (isValue || isVolume) {
            EXPECT_EQ(isValue ? EPrecision2 : EPrecision0, series.precision);
        }
    }
    EXPECT_EQ(EPrecisionNone, DefaultPrecision(Indicator));
    EXPECT_EQ(L"Wskaźnik", DefaultLabel(Indicator));
    EXPECT_TRUE(DefaultLabel(ESeriesId(0x84222325U)).empty());
    for (const unsigned int refused : {1U, 55U, 56U, 0xFFFFFFFFU})
        EXPECT_EQ("NIepoprawna seria: a_seriesId",
                  RaisedText<std::invalid_argument>([refused] { DefaultPrecision(ESeriesId(refused)); }))
            << refused;
}

TEST(SeriesTest, EveryNameFindsItsOwnSeries)
{
    // One series must not be reachable by the name of another: a table read by such a name would swap its columns.
    for (const SeriesInfo& series : SeriesTable()) {
        SCOPED_TRACE(series.enumerator);
        EXPECT_EQ(&series, FindSeries(series.id));
        EXPECT_EQ(&series, FindSeriesByName(series.name));
        EXPECT_EQ(&series, FindSeriesByName(series.enumerator));
        EXPECT_EQ(series.key.empty() ? nullptr : &series, FindSeriesByName(series.key));
    }
    EXPECT_EQ(Price, FindSeriesByName("close")->id);
    EXPECT_EQ(nullptr, FindSeriesByName(""));
    EXPECT_EQ(nullptr, FindSeriesByName("HIGH"));
    EXPECT_EQ(nullptr, FindSeries(ESeriesId(0)));
    EXPECT_EQ(nullptr, FindSeries(ESeriesId(56)));
}

TEST(SeriesTest, ACandleIsReadFromItsOpenToItsClose)
{
    const std::vector<ESeriesId> stored{Lop, Price, Volume, IntervalMin, IntervalOpen, Price, IntervalMax};
    EXPECT_EQ((std::vector<std::size_t>{4, 6, 3, 1, 0, 2, 5}), ReadingOrder(stored));
    EXPECT_EQ((std::vector<std::size_t>{1, 0}), ReadingOrder(std::vector<ESeriesId>{Volume, Price}));
    EXPECT_TRUE(ReadingOrder({}).empty());
}

TEST(SeriesTest, OffersAreContainedInEverySet)
{
    const std::set<ESeriesId> ids{Price, Indicator};
    const std::set<DSProp> properties{DSProp(Price), DSProp(Indicator, EAggrTypeLast, L"RSI", EPrecision2)};
    for (unsigned int id = 0; id < 60; ++id) {
        const bool expected = (id >= 20 && id <= 49) || id == Price || id == Indicator;
        EXPECT_EQ(expected, CheckIfCSorOffersContainsGivenSeries(ids, ESeriesId(id))) << id;
        EXPECT_EQ(expected, CheckIfCSorOffersContainsGivenSeries(properties, ESeriesId(id))) << id;
    }
}

TEST(SeriesTest, GeneratedIdsAreStable)
{
    EXPECT_EQ(0x84222325U, GenerateId(""));
    EXPECT_EQ(0x84222325U, GenerateId(L""));
    // Published FNV-1a values of "a" (af63dc4c8601ec8c) and "foobar" (85944171f73967e8), cut to 32 bits.
    EXPECT_EQ(0x8601ec8cU, GenerateId("a"));
    EXPECT_EQ(0xf73967e8U, GenerateId("foobar"));
    using namespace std::string_view_literals;
    EXPECT_EQ(GenerateId("a\0b\0"sv), GenerateId(L"ab"));
    EXPECT_EQ(GenerateId("\x19\x01"sv), GenerateId(L"\u0119"));               // ę
    EXPECT_EQ(GenerateId("\x3d\xd8\x00\xde"sv), GenerateId(L"\U0001F600"sv)); // a pair of surrogates
    EXPECT_EQ(GenerateId("\x80"sv), GenerateId(std::string(1, '\x80')));
}

TEST(DSPropTest, OnlyIndicatorsAreToldApartByLabel)
{
    const DSProp upper(Indicator, EAggrTypeLast, L"A", EPrecision2);
    const DSProp lower(Indicator, EAggrTypeLast, L"a", EPrecision2);
    const DSProp shorter(Indicator, EAggrTypeLast, L"", EPrecision2);
    const DSProp renamed(Price, EAggrTypeLast, L"Cena", EPrecision4);
    const std::set<DSProp> set{lower, upper, shorter, DSProp(Price), renamed};
    ASSERT_EQ(4U, set.size());
    EXPECT_EQ(L"Kurs", set.begin()->GetLabel());
    EXPECT_EQ(L"a", set.rbegin()->GetLabel());
    EXPECT_EQ(DSProp(Price), renamed);
    EXPECT_FALSE(renamed.EqualsLabels(DSProp(Price)));
    EXPECT_TRUE(renamed < shorter);
}

TEST(DSPropTest, UpdatesReachOnlyTheirGroup)
{
    std::set<DSProp> series{DSProp(Price),    DSProp(Volume), DSProp(Lop),
                            DSProp(Turnover), DSProp(Two),    DSProp(DynamicMax)};
    DSPropTools::UpdateValuePrecision(EPrecision1, EPrecision4, series);
    DSPropTools::UpdateVolumesPrecision(EPrecision3, EPrecision5, series);
    for (const DSProp& property : series) {
        SCOPED_TRACE(property.GetSeriesID());
        const bool isValue = property.GetSeriesID() == Price || property.GetSeriesID() == DynamicMax;
        const bool isVolume = property.GetSeriesID() == Volume || property.GetSeriesID() == Two;
        const EPrecision untouched = property.GetSeriesID() == Turnover ? EPrecision2 : EPrecision0;
        EXPECT_EQ(isValue ? EPrecision1 : isVolume ? EPrecision3 : untouched, property.GetMinPrecision());
        EXPECT_EQ(isValue ? EPrecision4 : isVolume ? EPrecision5 : untouched, property.GetMaxPrecision());
    }
}

TEST(DSPropTest, SettingsGiveBackEverything)
{
    for (const DSProp& property :
         {DSProp(Indicator, EAggrTypeLast, L"Średnia <20> & \"x\"", EPrecisionNone, EPrecision5),
          DSProp(ESeriesId(0xFFFFFFFFU), EAggrTypeOhlcSum, L"", EPrecision3, EPrecisionNone),
          DSProp(ESeriesId(0))}) {
        SCOPED_TRACE(property.GetSeriesID());
        Settings settings;
        property.SerializeState(settings);
        EXPECT_EQ(AllOf(property), AllOf(DSProp(settings)));
    }
}

TEST(NIUtilitiesTest, RulesByNumber)
{
    const std::set<unsigned int> keptDigits{2,  5,  6,  7,  8,  9,  10, 11, 12, 13, 17, 18,
                                            20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 52, 53};
    for (unsigned int id = 0; id < 60; ++id) {
        SCOPED_TRACE(id);
        const auto series = ESeriesId(id);
        EXPECT_EQ(!keptDigits.contains(id), NIUtilities::AllowToRoundDownForUIPresentation(series));
        EXPECT_EQ(id != 5 && (id < 20 || id > 29), NIUtilities::ForceMinPrecisionForSeries(series));
        EXPECT_EQ(id == 3 || id == 4 || id == 14 || id == 15 || (id >= 30 && id <= 49) || id == 51,
                  NIUtilities::PreventSettingConstantPrecision(series));
    }
}
