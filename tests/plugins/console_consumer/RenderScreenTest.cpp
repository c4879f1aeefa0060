#include "console_consumer/RenderScreen.h"
#include "platform/WidePath.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

namespace {

void AddCandle(History& a_candles, const NDateTime& a_time, double a_open, double a_step, double a_volume)
{
    EXPECT_TRUE(a_candles.AddData({a_time,
                                   {{Price, a_open + a_step / 2},
                                    {Volume, a_volume},
                                    {IntervalOpen, a_open},
                                    {IntervalMax, a_open + a_step},
                                    {IntervalMin, a_open - a_step}}}));
}

ScreenModel MakeModel()
{
    History candles(std::set<ESeriesId>{Price, Volume, IntervalOpen, IntervalMax, IntervalMin},
                    EIntervalMinute, 1);
    for (unsigned int minute = 0; minute < 50; ++minute)
        AddCandle(candles, NDateTime(2021, 3, 4, 10, minute, 59, 0), 99.0 + minute % 7, 1.0, 1000.0);
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

/// The text of a screen; below each row, how its cells look: a letter for ink, bold and reversed, nothing for the plain.
std::string Drawn(const ScreenCells& a_cells)
{
    std::string drawn;
    for (int row = 0; row < a_cells.GetHeight(); ++row) {
        std::string looks;
        for (int column = 0; column < a_cells.GetWidth(); ++column) {
            const ScreenCell cell = a_cells.At(column, row);
            const int look = cell.ink + (cell.bold ? 5 : 0) + (cell.reversed ? 10 : 0);
            looks += look == 0 ? ' ' : static_cast<char>('a' + look);
        }
        looks.erase(looks.find_last_not_of(' ') + 1);
        drawn +=
            WidePath::ToPath(a_cells.GetLine(row)).native() + "|\n" + (looks.empty() ? "" : looks + '\n');
    }
    return drawn;
}

void AddDay(ScreenModel& a_model)
{
    for (unsigned int minute = 0; minute < 9; ++minute)
        AddCandle(a_model.data.candles, NDateTime(2021, 3, 5, 9, minute, 30, 0), 99.0, 0.0, 10.0);
}

} // namespace

// The pictures of screens.txt, cell for cell; KALVENTO_WRITE_TRANSCRIPTS=1 writes what is drawn instead.
TEST(RenderScreenTest, ScreensLookAsTheyStandThere)
{
    struct Screen {
        const char* name;
        int width;
        int height;
        void (*change)(ScreenModel&);
    };
    const auto nothing = [](ScreenModel&) {};
    const Screen screens[] = {
        {"all there is room for", 200, 60, nothing},
        {"a terminal of the usual size", 80, 24, nothing},
        {"narrow", 50, 30, nothing},
        {"small", 40, 12, nothing},
        {"a name that would move the cursor or shift a line", 80, 24,
         [](ScreenModel& a_model) { a_model.symbol = L"A\x1B[2J\n\x4E2D\x0301"; }},
        {"volumes of any size, apart from prices", 80, 24,
         [](ScreenModel& a_model) {
             a_model.data.decimals = 5;
             a_model.data.offers->SetQSellIfChanged({0.084135, 12345.6, 456.7891, 1234567.0, 3e9});
         }},
        {"candles that rise, without colour", 80, 24, [](ScreenModel& a_model) { a_model.inColour = false; }},
        {"candles that fall, without colour", 80, 24,
         [](ScreenModel& a_model) {
             a_model.inColour = false;
             for (double& close : a_model.data.candles.find(Price)->second)
                 close -= 1.0;
         }},
        {"a new day, named below its first candle", 80, 24, AddDay},
        {"a new day in the table", 80, 24, [](ScreenModel& a_model) {
             AddDay(a_model);
             a_model.asTable = true;
         }}};
    std::string drawn;
    for (const Screen& screen : screens) {
        ScreenModel model = MakeModel();
        screen.change(model);
        drawn += std::string("== ") + screen.name + '\n';
        drawn += Drawn(RenderScreen(model, screen.width, screen.height));
    }
    if (std::getenv("KALVENTO_WRITE_TRANSCRIPTS") != nullptr)
        std::ofstream(KALVENTO_SCREENS) << drawn;
    EXPECT_EQ(drawn, TemporaryFolder::ReadFile(KALVENTO_SCREENS));
}

TEST(RenderScreenTest, ItSaysThatThereIsNoBook)
{
    ScreenModel model = MakeModel();
    model.data.offers.reset();
    for (const auto& [width, height] : {std::pair(80, 24), std::pair(40, 12)})
        EXPECT_NE(Drawn(RenderScreen(model, width, height)).find("brak arkusza zleceń"), std::string::npos)
            << width;
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
