#include "alerts/AlertArgumentDescription.h"

#include "platform/CArchive.h"
#include "platform/CArchiveException.h"
#include "platform/CMemFile.h"
#include "platform/CodePage.h"
#include "settings/Settings.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

namespace {

using Bytes = std::vector<std::byte>;
using Chart = AlertArgumentSourceChart;

Chart::ChartParameters Parameters(EInterval a_interval, const std::string& a_isin,
                                  unsigned int a_multiplicity)
{
    Chart::ChartParameters parameters;
    parameters.interval = a_interval;
    parameters.isin = a_isin;
    parameters.multiplicity = a_multiplicity;
    parameters.sessionCount = 3;
    return parameters;
}

Chart MakeChart()
{
    Chart chart;
    chart.parameters = Parameters(EIntervalMinute, "PLPKO0000016", 5);
    Chart::Indicator average;
    average.type = -4;
    average.request = 0xFFFFFFFF;
    average.parameters = {14.0, -0.5, 0.1, std::numeric_limits<double>::infinity(), 1e-300};
    average.scriptInfo = L"średnia < 5 & \"x\"";
    average.seriesMapping.emplace(static_cast<ESeriesId>(0x84222325), ~0ULL, 2ULL);
    chart.indicators = {average, Chart::Indicator()};
    chart.windowId = std::numeric_limits<long long>::min();
    return chart;
}

AlertArgumentDescription MakeArgument()
{
    return {"PLPKO0000016",
            DSProp(Indicator, EAggrTypeLast, L"Średnia", EPrecision2, EPrecision4),
            L"Kurs żółty \U0001F4C8",
            L"opis",
            -7,
            ~0ULL,
            1ULL << 40U,
            MakeChart()};
}

Bytes Store(const AlertArgumentDescription& a_argument)
{
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    a_argument.SerializeToArchive(archive);
    archive.Close();
    return file.Detach();
}

void Load(const Bytes& a_bytes, AlertArgumentDescription& a_argument)
{
    CMemFile file(a_bytes);
    CArchive archive(&file, CArchive::load);
    a_argument.UnserializeFromArchive(archive);
}

std::string TextOf(const Chart& a_chart)
{
    Settings tree;
    a_chart.SerializeState(tree);
    return tree.ConvertToString();
}

Bytes operator+(Bytes a_left, const Bytes& a_right)
{
    a_left.insert(a_left.end(), a_right.begin(), a_right.end());
    return a_left;
}

Bytes B(const std::string& a_text)
{
    const auto* const bytes = reinterpret_cast<const std::byte*>(a_text.data());
    return {bytes, bytes + a_text.size()};
}

Bytes Zeros(std::size_t a_count)
{
    return Bytes(a_count);
}

TEST(AlertArgumentSourceChartTest, WhatIsWrittenIsReadAgain)
{
    Settings tree;
    MakeChart().SerializeState(tree);
    const Chart read(tree);
    EXPECT_EQ(TextOf(read), TextOf(MakeChart()));
    EXPECT_EQ(read.indicators[0].parameters, MakeChart().indicators[0].parameters);

    Chart bare = MakeChart();
    bare.indicators.clear();
    bare.windowId.reset();
    Settings bareTree;
    bare.SerializeState(bareTree);
    EXPECT_TRUE(static_cast<const Settings&>(bareTree)["indicators"].Exists());
    EXPECT_FALSE(static_cast<const Settings&>(bareTree)["windowId"].Exists());
    EXPECT_TRUE(Chart(bareTree).indicators.empty());
}

TEST(AlertArgumentSourceChartTest, KeysStandWhereOtherProgramsLookForThem)
{
    Settings tree;
    MakeChart().SerializeState(tree);
    const Settings& stored = tree;
    EXPECT_EQ(static_cast<unsigned int>(stored["parameters"]["interval"]), 3U);
    EXPECT_EQ(static_cast<const std::string&>(stored["parameters"]["isin"]), "PLPKO0000016");
    EXPECT_EQ(static_cast<unsigned int>(stored["parameters"]["multiplicity"]), 5U);
    EXPECT_EQ(static_cast<unsigned int>(stored["parameters"]["session_count"]), 3U);
    EXPECT_EQ(static_cast<long long>(stored["windowId"]), *MakeChart().windowId);
    ASSERT_EQ(stored["indicators"].GetUnnamedVariablesCount(), 2U);
    EXPECT_FALSE((*(stored["indicators"].begin_unnamed() + 1))["series_mapping"].Exists());
    const Settings& indicator = *stored["indicators"].begin_unnamed();
    EXPECT_EQ(static_cast<int>(indicator["type"]), -4);
    EXPECT_EQ(static_cast<unsigned int>(indicator["request"]), 0xFFFFFFFFU);
    EXPECT_EQ(static_cast<const std::string&>(indicator["script_info"]), "średnia < 5 & \"x\""_cp1250);
    EXPECT_EQ(static_cast<double>(*indicator["parameters"].begin_unnamed()), 14.0);
    EXPECT_EQ(static_cast<unsigned int>(indicator["series_mapping"]["new_series_id"]), 0x84222325U);
    EXPECT_EQ(static_cast<unsigned long long>(indicator["series_mapping"]["base_pointer_index"]), ~0ULL);
    EXPECT_EQ(static_cast<int>(indicator["series_mapping"]["base_pointer_output_series_index"]), 2);
}

TEST(AlertArgumentSourceChartTest, ReadingChecksWhatWritingLetsThrough)
{
    // The first failing test names the message.
    const std::tuple<const char*, Chart::ChartParameters> cases[] = {
        {"Isin symbolu dla wykresu jest pusty"_cp1250, Parameters(EIntervalEmpty, "", 0)},
        {"Isin symbolu dla wykresu jest pusty"_cp1250, Parameters(EIntervalMinute, " \t\r\n\v\f", 5)},
        {"Interwał wykresu jest niepoprawny"_cp1250, Parameters(EIntervalEmpty, "x", 0)},
        {"Krotność interwału wykresu jest niepoprawna"_cp1250, Parameters(EIntervalMinute, "x", 0)},
    };
    for (const auto& [message, parameters] : cases) {
        SCOPED_TRACE(message);
        Chart chart = MakeChart();
        chart.parameters = parameters;
        Settings tree;
        chart.SerializeState(tree);
        try {
            const Chart read(tree);
            FAIL();
        } catch (const KalventoException& failure) {
            const std::string text = failure.what();
            EXPECT_TRUE(text.starts_with("AlertArgumentSourceChart::ChartParameters::ChartParameters\t"));
            EXPECT_TRUE(text.ends_with(message));
        }
    }
}

TEST(AlertArgumentDescriptionTest, TheChartsIntervalIsAddedToTheName)
{
    EXPECT_EQ(MakeArgument().GetArgumentName(), L"Kurs żółty \U0001F4C8 (5 min.)");
    const AlertArgumentDescription fromEmpty("x", DSProp(Price), nullptr, nullptr, 0, 0, 0, Chart());
    EXPECT_EQ(fromEmpty.GetArgumentName(), L" (Pusty)");
    EXPECT_EQ(AlertArgumentDescription("x", DSProp(Price), L"Kurs", L"").GetArgumentName(), L"Kurs");
}

TEST(AlertArgumentDescriptionTest, WhatIsWatchedAndWhere)
{
    EXPECT_EQ(AlertArgumentDescription().FindActualPointerSeries(), 0U);
    EXPECT_EQ(MakeArgument().FindActualPointerSeries(), Price) << "indicators are watched on the price";
    EXPECT_EQ(AlertArgumentDescription("x", DSProp(Volume), L"", L"").FindActualPointerSeries(), Volume);
    EXPECT_FALSE(AlertArgumentDescription(" \t ").IsValid());
    EXPECT_TRUE(AlertArgumentDescription(" x").IsValid());

    const AlertArgumentDescription plain("x");
    const AlertArgumentDescription charted = MakeArgument();
    const AlertArgumentDescription unknownWindow("x", DSProp(Price), L"", L"", 0, 0, 0, Chart());
    for (const auto* argument : {&plain, &charted, &unknownWindow})
        argument->SetNoChartWindowId(5);
    EXPECT_EQ(plain.GetSourceChartWindowId(), 5);
    EXPECT_EQ(charted.GetSourceChartWindowId(), *MakeChart().windowId);
    EXPECT_EQ(unknownWindow.GetSourceChartWindowId(), 0);
}

TEST(AlertArgumentDescriptionTest, ArchiveFormHasTheseBytes)
{
    using namespace std::string_literals;
    EXPECT_EQ(Store(AlertArgumentDescription()),
              Zeros(8) + B("\xFF\xFE\xFF\0"s) + B("\xFF\xFE\xFF\0"s) + Zeros(22));

    const AlertArgumentDescription argument("PL1", DSProp(Price), L"Zł", L"\U0001F4C8");
    Settings series;
    DSProp(Price).SerializeState(series);
    const std::string tree = series.ConvertToString();
    ASSERT_LT(tree.size(), 0x10000U);
    const std::string treeLength{static_cast<char>(tree.size() & 0xFFU),
                                 static_cast<char>(tree.size() >> 8U)};
    EXPECT_EQ(Store(argument), B("\3\0\0\0\0\0\0\0PL1"s) + B("\xFF\xFE\xFF\2Z\0\x42\1"s) +
                                   B("\xFF\xFE\xFF\2\x3D\xD8\xC8\xDC"s) + Zeros(20) + B("\1" + treeLength) +
                                   Zeros(6) + B(tree) + Zeros(1));
}

TEST(AlertArgumentDescriptionTest, WhatIsStoredIsLoadedAgain)
{
    const AlertArgumentDescription arguments[] = {
        AlertArgumentDescription(), AlertArgumentDescription(std::string("a\0b", 3)),
        AlertArgumentDescription("x", DSProp(Volume), std::wstring(70000, L'ż').c_str(),
                                 std::wstring(255, L'a').c_str()),
        MakeArgument()};
    for (const AlertArgumentDescription& argument : arguments) {
        SCOPED_TRACE(argument.GetISIN());
        argument.SetNoChartWindowId(1);
        AlertArgumentDescription read = MakeArgument(); // nothing of it may shine through
        read.SetNoChartWindowId(77);
        Load(Store(argument), read);
        EXPECT_EQ(Store(read), Store(argument));
        EXPECT_EQ(read.GetArgumentName(), argument.GetArgumentName());
        if (!read.GetSourceChart()) {
            EXPECT_EQ(read.GetSourceChartWindowId(), 77) << "not part of the form";
        }
    }
}

TEST(AlertArgumentDescriptionTest, AStreamCutAtAnyByteIsRefusedAndChangesNothing)
{
    const Bytes whole = Store(MakeArgument());
    AlertArgumentDescription target("kept", DSProp(Price), L"kept", L"kept");
    const Bytes before = Store(target);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_THROW(Load(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)), target),
                     CArchiveException);
    }
    EXPECT_EQ(Store(target), before);
}

TEST(AlertArgumentDescriptionTest, MalformedStreamsAreRefused)
{
    using namespace std::string_literals;
    const Bytes head = Zeros(8) + B("\xFF\xFE\xFF\0\xFF\xFE\xFF\0"s) + Zeros(20);
    AlertArgumentDescription target;
    EXPECT_THROW(Load(head + B("\2\0"s), target), CArchiveException) << "neither present nor absent";
    EXPECT_THROW(Load(B("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFFx"s), target), CArchiveException)
        << "a length beyond all bytes";
    for (const std::string& tree : {"no tree"s, ""s}) {
        try {
            Load(head + B("\1"s + static_cast<char>(tree.size())) + Zeros(7) + B(tree + '\0'), target);
            ADD_FAILURE() << tree;
        } catch (const std::runtime_error& failure) {
            EXPECT_EQ(std::string(failure.what()), "Nie można utworzyć setingsów."_cp1250);
        }
    }
    // A chart that could never be drawn.
    EXPECT_THROW(
        Load(Store(AlertArgumentDescription("x", DSProp(Price), L"", L"", 0, 0, 0, Chart())), target),
        KalventoException);
}

} // namespace
