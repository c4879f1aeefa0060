#include "series/SettableVariables.h"
#include "series/CurrentState.h"
#include "series/Offers.h"
#include "series/Series.h"

#include "SeriesTestTools.h"
#include "platform/CodePage.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

namespace {

using kalvento::tests::AllOf;
using kalvento::tests::At;
using kalvento::tests::RaisedText;

const std::set<ESeriesId> S_ids{Price, Volume, Reference, Bid1};

/// The rules, told once more without states in the middle of a container: what is known, and what of it is new.
struct PlainVariables {
    struct Value {
        double number = 0.0;
        bool isKnown = false;
        bool isNew = false;
    };
    std::map<ESeriesId, Value> values;

    void Set(ESeriesId a_id, double a_number)
    {
        if (values.contains(a_id))
            values[a_id] = {a_number, true, true};
    }
    void SetIfChanged(ESeriesId a_id, double a_number)
    {
        if (values.contains(a_id) && (!values[a_id].isKnown || values[a_id].number != a_number))
            Set(a_id, a_number);
    }
    void Forget(ESeriesId a_id)
    {
        if (values.contains(a_id))
            values[a_id].isKnown = values[a_id].isNew = false;
    }
    void Seen()
    {
        for (auto& [id, value] : values)
            value.isNew = false;
    }
    void Merge(const PlainVariables& a_later)
    {
        for (const auto& [id, later] : a_later.values) {
            if (!later.isKnown)
                Forget(id);
            else if (later.isNew)
                Set(id, later.number);
        }
    }
};

void ExpectSame(const PlainVariables& a_plain, const SettableVariables& a_variables)
{
    ASSERT_EQ(a_variables.SeriesCount(), a_plain.values.size());
    auto plain = a_plain.values.begin();
    for (const auto& [id, value] : a_variables) {
        SCOPED_TRACE(id);
        EXPECT_EQ(id, plain->first);
        EXPECT_TRUE(value.value == plain->second.number ||
                    (std::isnan(value.value) && std::isnan(plain->second.number)));
        EXPECT_EQ(value.state, plain->second.isKnown ? (plain->second.isNew ? 1 : 2) : 0);
        ++plain;
    }
}

TEST(SettableVariablesTest, AnyRunOfCallsFollowsThePlainRules)
{
    std::mt19937 random(20210304);
    const std::set<ESeriesId> shapes[] = {S_ids, {Price, Reference, Ask1}};
    SettableVariables variables[] = {SettableVariables(shapes[0]), SettableVariables(shapes[1])};
    PlainVariables plain[2];
    for (std::size_t side = 0; side < 2; ++side)
        for (const ESeriesId id : shapes[side])
            plain[side].values[id];

    const ESeriesId ids[] = {Price, Volume, Reference, Bid1, Ask1, Open};
    const double numbers[] = {0.0, -0.0, 1.0, std::nan("")}; // a NaN is no value's equal: always a change
    for (int step = 0; step < 20000; ++step) {
        const std::size_t side = random() % 2;
        const ESeriesId id = ids[random() % 6];
        const double number = numbers[random() % 4];
        const auto call = random() % 120;
        if (call < 30) {
            variables[side].SetData(id, number);
            plain[side].Set(id, number);
        } else if (call < 70) {
            variables[side].SetDataIfChanged(id, number);
            plain[side].SetIfChanged(id, number);
        } else if (call < 90) {
            variables[side].ResetDataSeries(id);
            plain[side].Forget(id);
        } else if (call < 100) {
            variables[side].ClearUsageChangedValue();
            plain[side].Seen();
        } else if (call < 119) {
            variables[side].MergeChangesValues(variables[1 - side]);
            plain[side].Merge(plain[1 - side]);
        } else {
            variables[side].ResetAllSeries();
            for (const ESeriesId held : shapes[side])
                plain[side].Forget(held);
        }
        SCOPED_TRACE(step);
        ExpectSame(plain[side], variables[side]);
        if (testing::Test::HasFailure())
            return;
    }
}

TEST(SettableVariablesTest, TheTimeIsMergedLikeASeries)
{
    for (const int state : {0, 1, 2}) {
        SCOPED_TRACE(state);
        SettableVariables later(S_ids);
        if (state != 0)
            later.SetTime(At(10, 0));
        if (state == 2)
            later.ClearUsageChangedValue();
        later.SetGeneratedTime(At(11, 0));

        SettableVariables target(S_ids);
        target.SetTime(At(9, 0));
        target.ClearUsageChangedValue();
        target.MergeChangesValues(later);
        target.MergeChangesValues(later); // once more changes nothing
        EXPECT_EQ(target.GetTime().state, state);
        EXPECT_EQ(target.GetTime().value, state == 1 ? At(10, 0) : At(9, 0));
        EXPECT_TRUE(target.GetGeneratedTime().IsEmpty());
    }
}

TEST(SettableVariablesTest, ValidityAsksForASeriesAndABearableTime)
{
    SettableVariables variables(S_ids);
    EXPECT_TRUE(variables.IsValid()) << "nothing needs to be set";
    variables.SetTime(NDateTime(2021, 2, 30));
    EXPECT_TRUE(variables.IsAnySeriesSetOrChanged());
    EXPECT_FALSE(variables.IsAnyDataSeriesSetOrChanged() || variables.IsValid());
    variables.ResetAllSeries();
    EXPECT_TRUE(variables.IsValid()) << "a time that isn't set doesn't count";
    variables.Clear();
    EXPECT_FALSE(variables.IsValid());

    const std::string text = RaisedText<KalventoException>([] { CurrentState state{std::set<DSProp>()}; });
    EXPECT_NE(text.find("SettableVariables::SettableVariables\t"), std::string::npos);
    EXPECT_NE(text.find("zbiór serii jest pusty: a_series"_cp1250), std::string::npos);
    EXPECT_THROW(Offers{std::set<ESeriesId>()}, KalventoException);
}

TEST(SettableVariablesTest, IndicatorsShareAnIdentifierAndTheFirstIsMeant)
{
    CurrentState state(std::set<DSProp>{DSProp(Indicator, EAggrTypeLast, L"b", EPrecision2),
                                        DSProp(Indicator, EAggrTypeLast, L"a", EPrecision2), DSProp(Price)});
    ASSERT_EQ(state.SeriesCount(), 3U);
    state.SetData(Indicator, 4.0);
    EXPECT_EQ(state.begin()->first, Price);
    EXPECT_EQ((state.begin() + 1)->second.value, 4.0);
    EXPECT_FALSE((state.begin() + 2)->second.IsSet());
}

TEST(OffersTest, EachSetterFillsItsOwnLine)
{
    void (Offers::*const setters[])(const std::vector<double>&) = {
        &Offers::SetBuyIfChanged,   &Offers::SetSellIfChanged, &Offers::SetQBuyIfChanged,
        &Offers::SetQSellIfChanged, &Offers::SetNBuyIfChanged, &Offers::SetNSellIfChanged};
    for (unsigned int line = 0; line < 6; ++line) {
        SCOPED_TRACE(line);
        const auto set = setters[line];
        const unsigned int firstId = 20 + 5 * line;
        Offers offers;
        (offers.*set)({1, 2, 3, 4, 5, 6, 7});
        for (const auto& [id, value] : offers) {
            const bool isOfLine = id >= firstId && id < firstId + 5;
            EXPECT_EQ(value.state, isOfLine ? 1 : 0) << id;
            EXPECT_EQ(value.value, isOfLine ? id - firstId + 1.0 : 0.0) << id;
        }
        offers.ClearUsageChangedValue();
        (offers.*set)({1, 9});
        const auto first = offers.find(static_cast<ESeriesId>(firstId));
        EXPECT_EQ(first->second.state, 2) << "an equal value is no change";
        EXPECT_EQ((first + 1)->second.value, 9.0);
        EXPECT_EQ((first + 2)->second.value, 3.0) << "deeper levels keep what they held";
    }
}

TEST(OffersTest, SeriesAndTheirDefaultsCoverTheBook)
{
    ASSERT_EQ(Offers::DefaultDSProp.size(), 30U);
    auto property = Offers::DefaultDSProp.begin();
    for (const ESeriesId id : Offers::Series) {
        SCOPED_TRACE(id);
        EXPECT_TRUE(VeloTools::Series::CheckIfCSorOffersContainsGivenSeries(std::set<ESeriesId>(), id));
        // The defaults of the book are those of the series one by one.
        EXPECT_EQ(AllOf(*property), AllOf(DSProp(id)));
        ++property;
    }
}

} // namespace
