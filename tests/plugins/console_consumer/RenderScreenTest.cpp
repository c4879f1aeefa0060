#include "console_consumer/RenderScreen.h"
#include "support/Testing.h"

namespace {

ScreenModel MakeModel()
{
    History candles(std::set<ESeriesId>{Price, Volume, IntervalOpen, IntervalMax, IntervalMin},
                    EIntervalMinute, 1);
    for (unsigned int minute = 0; minute < 50; ++minute) {
        const double open = 99.0 + minute % 7;
        EXPECT_TRUE(candles.AddData({NDateTime(2021, 3, 4, 10, minute, 59, 0),
                                     {{Price, open + 0.5},
                                      {Volume, 1000.0},
                                      {IntervalOpen, open},
                                      {IntervalMax, open + 1},
                                      {IntervalMin, open - 1}}}));
    }
    ScreenModel model;
    model.symbol = L"PKO";
    model.name = L"Bank próbny";
    model.provider = L"Pliki";
    model.status = EConnectionStatusConnected;
    model.count = 2;
    model.data = {{EIntervalMinute, 1},
                  candles,
                  Offers(),
                  {},
                  99.53,
                  1,
                  98.0,
                  2,
                  true,
                  {},
                  NDateTime(2021, 3, 4, 10, 49, 59, 0),
                  99.0,
                  106.0,
                  98.0,
                  50000.0};
    model.data.offers->SetBuyIfChanged({99.52, 99.51, 99.50, 99.49, 99.48});
    model.data.offers->SetQBuyIfChanged({100, 200, 300, 400, 500});
    model.data.offers->SetSellIfChanged({99.54, 99.55, 99.56, 99.57, 99.58});
    model.data.offers->SetQSellIfChanged({1500, 20, 30, 40, 50});
    model.data.trades = {{NDateTime(2021, 3, 4, 10, 49, 59, 0), 99.53, 15.0}};
    return model;
}

std::wstring TextOf(const ScreenCells& a_cells)
{
    std::wstring text;
    for (int row = 0; row < a_cells.GetHeight(); ++row)
        text += a_cells.GetLine(row) + L'\n';
    return text;
}

bool Has(const ScreenCells& a_cells, const wchar_t* a_text)
{
    return TextOf(a_cells).find(a_text) != std::wstring::npos;
}

} // namespace

TEST(RenderScreenTest, EverySizeShowsWhatItHasRoomFor)
{
    struct Case {
        int width;
        int height;
        std::vector<const wchar_t*> shown;
    };
    const std::vector<Case> cases = {
        {200,
         60,
         {L"PKO", L"Bank próbny", L"99,53 ▲", L"+1,53 (+1,56%)", L"● połączony", L"kupno", L"sprzedaż",
          L"99,48", L"99,58", L"transakcje", L"10:49:59", L"zamkn.", L"█", L"1/2", L"q koniec"}},
        {80,
         24,
         {L"PKO", L"99,53 ▲", L"● połączony", L"kupno", L"99,48", L"99,58", L"transakcje", L"zamkn.", L"█"}},
        {50, 30, {L"99,53 ▲", L"kupno", L"99,48", L"zamkn.", L"█"}},
        {40, 12, {L"PKO", L"99,53 ▲", L"K 99,52 × 100", L"S 99,54 × 1500", L"█", L"q koniec"}}};
    for (const Case& screen : cases) {
        SCOPED_TRACE(testing::Message() << screen.width << " x " << screen.height);
        const ScreenCells cells = RenderScreen(MakeModel(), screen.width, screen.height);
        for (const wchar_t* text : screen.shown)
            EXPECT_TRUE(Has(cells, text)) << testing::PrintToString(std::wstring(text));
    }
}

TEST(RenderScreenTest, AnySizeAndAnyNumbersAreDrawn)
{
    ScreenModel model = MakeModel();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double huge = std::numeric_limits<double>::max();
    for (const double value : {nan, HUGE_VAL, -huge, huge, 0.0}) {
        for (auto& column : model.data.candles)
            column.second.back() = value;
        model.data.lastPrice = value;
        model.data.reference = value;
        model.data.offers->SetBuyIfChanged({value});
        model.data.offers->SetQBuyIfChanged({value});
        model.data.trades.front().price = value;
        for (int width = 1; width < 100; width += 3)
            for (int height = 1; height < 40; height += 3)
                for (const bool asTable : {false, true}) {
                    model.asTable = asTable;
                    const ScreenCells cells = RenderScreen(model, width, height);
                    ASSERT_EQ(cells.GetWidth(), width);
                    ASSERT_EQ(cells.GetHeight(), height);
                }
    }
}

// A name could else move the cursor or shift a line by a column.
TEST(RenderScreenTest, NoTextFromOutsideReachesTheTerminalUnseen)
{
    ScreenModel model = MakeModel();
    model.symbol = L"A\x1B[2J\n\x4E2D\x0301";
    const ScreenCells cells = RenderScreen(model, 80, 24);
    EXPECT_EQ(cells.GetLine(0).substr(0, 9), L" A?[2J???");
}

TEST(RenderScreenTest, BarsShowTheShareOfTheLargestVolume)
{
    const ScreenCells cells = RenderScreen(MakeModel(), 80, 24);
    const auto barOf = [&](int a_row) {
        int count = 0;
        for (int column = 46; column < 80; ++column)
            count += cells.At(column, a_row).reversed ? 1 : 0;
        return count;
    };
    EXPECT_EQ(barOf(3), 15 + 1) << "1500 of 1500, and 100";
    EXPECT_GT(barOf(7), barOf(4)) << "500 against 200";
}

TEST(RenderScreenTest, VolumesOfAnySizeStandApartFromPrices)
{
    ScreenModel model = MakeModel();
    model.data.decimals = 5;
    model.data.offers->SetQSellIfChanged({0.084135, 12345.6, 456.7891, 1234567.0, 3e9});
    const ScreenCells cells = RenderScreen(model, 80, 24);
    const std::vector<const wchar_t*> lines = {L"99,54000  0,0841", L"99,55000   12346", L"99,56000  456,79",
                                               L"99,57000  1,235M", L"99,58000      3G"};
    for (const wchar_t* line : lines)
        EXPECT_TRUE(Has(cells, line)) << testing::PrintToString(std::wstring(line));
}

TEST(RenderScreenTest, EveryShapeOfACandleIsToldWithoutColour)
{
    ScreenModel model = MakeModel();
    model.inColour = false;
    // Rows 2 to 14 and columns up to the axis: the candles. All of the model's rise.
    const auto has = [&](wchar_t a_sign) {
        const ScreenCells cells = RenderScreen(model, 80, 24);
        for (int row = 2; row < 13; ++row)
            if (cells.GetLine(row).substr(0, 35).find(a_sign) != std::wstring::npos)
                return true;
        return false;
    };
    EXPECT_TRUE(has(L'┃'));
    EXPECT_FALSE(has(L'█'));
    for (auto& [seriesId, column] : model.data.candles)
        if (seriesId == Price)
            for (double& close : column)
                close -= 1.0;
    EXPECT_FALSE(has(L'┃'));
    EXPECT_TRUE(has(L'█'));
}

TEST(RenderScreenTest, ANewDayIsNamedBelowItsFirstCandle)
{
    ScreenModel model = MakeModel();
    EXPECT_TRUE(model.data.candles.AddData(
        {NDateTime(2021, 3, 5, 9, 0, 30, 0),
         {{Price, 99.0}, {Volume, 10.0}, {IntervalOpen, 99.0}, {IntervalMax, 99.0}, {IntervalMin, 99.0}}}));
    for (unsigned int minute = 1; minute < 9; ++minute) {
        Record candle = model.data.candles.GetLastRecord();
        candle.SetTime(NDateTime(2021, 3, 5, 9, minute, 30, 0));
        EXPECT_TRUE(model.data.candles.AddData(candle));
    }
    EXPECT_TRUE(Has(RenderScreen(model, 80, 24), L"05.03"));
    model.asTable = true;
    for (const wchar_t* time : {L"05.03 09:08", L"04.03 10:49"})
        EXPECT_TRUE(Has(RenderScreen(model, 80, 24), time));
}
