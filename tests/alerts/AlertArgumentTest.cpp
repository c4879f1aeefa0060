#include "alerts/AlertArgumentDescription.h"

#include "platform/CodePage.h"
#include "support/ArchiveTools.h"
#include "support/RaisedText.h"
#include "support/StoredForm.h"
#include "time/KalventoException.h"

namespace {

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
    return Stored([&](CArchive& a_archive) { a_argument.SerializeToArchive(a_archive); });
}

CArchiveException::Cause Load(const Bytes& a_bytes, AlertArgumentDescription& a_argument)
{
    return CauseOf(a_bytes, [&](CArchive& a_archive) { a_argument.UnserializeFromArchive(a_archive); });
}

Bytes B(const std::string& a_text)
{
    const auto* const bytes = reinterpret_cast<const std::byte*>(a_text.data());
    return {bytes, bytes + a_text.size()};
}

std::string Zeros(std::size_t a_count)
{
    return std::string(a_count, '\0');
}

TEST(AlertArgumentSourceChartTest, StoredForm)
{
    ExpectStoredAs(
        MakeChart(),
        "<settings><parameters><interval>3</interval><isin>PLPKO0000016</isin>"
        "<multiplicity>5</multiplicity><session_count>3</session_count></parameters>"
        "<indicators><item><type>-4</type><request>4294967295</request>"
        "<script_info escaped=\"true\">\\x{15B}rednia &lt; 5 &amp; \"x\"</script_info>"
        "<parameters><item>14</item><item>-0.5</item><item>0.1</item><item>inf</item>"
        "<item>1e-300</item></parameters><series_mapping><new_series_id>2216829733</new_series_id>"
        "<base_pointer_index>18446744073709551615</base_pointer_index>"
        "<base_pointer_output_series_index>2</base_pointer_output_series_index></series_mapping></item>"
        "<item><type>0</type><request>0</request><script_info/><parameters/></item></indicators>"
        "<windowId>-9223372036854775808</windowId></settings>");
    Chart bare = MakeChart();
    bare.indicators.clear();
    bare.windowId.reset();
    ExpectStoredAs(bare, "<settings><parameters><interval>3</interval><isin>PLPKO0000016</isin>"
                         "<multiplicity>5</multiplicity><session_count>3</session_count></parameters>"
                         "<indicators/></settings>");
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
        const std::string text = kalvento::tests::RaisedText<KalventoException>([&] { Chart{tree}; });
        EXPECT_TRUE(text.starts_with("AlertArgumentSourceChart::ChartParameters::ChartParameters\t"));
        EXPECT_TRUE(text.ends_with(message));
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
    EXPECT_EQ(Store(AlertArgumentDescription()), B(Zeros(8) + "\xFF\xFE\xFF\0\xFF\xFE\xFF\0"s + Zeros(22)));
    const AlertArgumentDescription argument("PL1", DSProp(Price), L"Zł", L"\U0001F4C8");
    const std::string tree = StoredText(DSProp(Price));
    ASSERT_LT(tree.size(), 0x10000U);
    const std::string treeLength{static_cast<char>(tree.size() & 0xFFU),
                                 static_cast<char>(tree.size() >> 8U)};
    EXPECT_EQ(Store(argument),
              B("\3\0\0\0\0\0\0\0PL1\xFF\xFE\xFF\2Z\0\x42\1"s + "\xFF\xFE\xFF\2\x3D\xD8\xC8\xDC" + Zeros(20) +
                "\1" + treeLength + Zeros(6) + tree + Zeros(1)));
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
        ASSERT_EQ(Load(Store(argument), read), CArchiveException::none);
        EXPECT_EQ(Store(read), Store(argument));
        EXPECT_EQ(read.GetArgumentName(), argument.GetArgumentName());
        if (!read.GetSourceChart()) {
            EXPECT_EQ(read.GetSourceChartWindowId(), 77) << "not part of the form";
        }
    }
}

TEST(AlertArgumentDescriptionTest, AStreamCutAtAnyByteIsRefusedAndChangesNothing)
{
    AlertArgumentDescription target("kept", DSProp(Price), L"kept", L"kept");
    const Bytes before = Store(target);
    ExpectEachCutRefused(Store(MakeArgument()),
                         [&](CArchive& a_archive) { target.UnserializeFromArchive(a_archive); },
                         {CArchiveException::endOfFile, CArchiveException::badIndex});
    EXPECT_EQ(Store(target), before);
}

TEST(AlertArgumentDescriptionTest, MalformedStreamsAreRefused)
{
    using namespace std::string_literals;
    const std::string head = Zeros(8) + "\xFF\xFE\xFF\0\xFF\xFE\xFF\0"s + Zeros(20);
    AlertArgumentDescription target;
    EXPECT_NE(Load(B(head + "\2\0"s), target), CArchiveException::none) << "neither present nor absent";
    EXPECT_NE(Load(B("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFFx"s), target), CArchiveException::none)
        << "a length beyond all bytes";
    for (const std::string& tree : {"no tree"s, ""s}) {
        const Bytes bytes = B(head + "\1" + static_cast<char>(tree.size()) + Zeros(7) + tree + '\0');
        EXPECT_EQ(kalvento::tests::RaisedText<std::runtime_error>([&] { Load(bytes, target); }),
                  "Nie można utworzyć setingsów."_cp1250);
    }
    // A chart that could never be drawn.
    EXPECT_THROW(
        Load(Store(AlertArgumentDescription("x", DSProp(Price), L"", L"", 0, 0, 0, Chart())), target),
        KalventoException);
}

} // namespace
