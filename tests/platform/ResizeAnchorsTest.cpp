#include "platform/ResizeAnchors.h"
#include "support/Testing.h"

using namespace kalvento::internal;

TEST(ResizeAnchorsTest, NoSequenceOfSizesTearsControlsApart)
{
    std::mt19937 random(3);
    const auto upTo = [&random](std::int32_t a_most) {
        return static_cast<std::int32_t>(random() % static_cast<unsigned int>(a_most + 1));
    };
    for (int run = 0; run < 500; ++run) {
        // A row of controls from side to side, each edge shared by two.
        const CSize initial{10 + upTo(500), 10 + upTo(500)};
        std::vector<std::pair<std::int32_t, double>> edges = {{0, 0.0}};
        while (edges.size() < 5)
            edges.emplace_back(edges.back().first + upTo((initial.cx - edges.back().first) / 2),
                               edges.back().second + upTo(4) / 16.0);
        edges.emplace_back(initial.cx, 1.0);
        ResizeAnchors anchors;
        anchors.SetInitialSize(initial);
        std::vector<ResizeAnchors::Placed> told;
        for (std::size_t place = 1; place < edges.size(); ++place) {
            told.push_back(
                {static_cast<UINT>(place), {edges[place - 1].first, 0, edges[place].first, initial.cy}});
            anchors.SetResize(told.back().id, told.back().rectangle,
                              {.left = edges[place - 1].second, .right = edges[place].second, .bottom = 1.0});
        }

        const CSize grown{initial.cx + upTo(2000), initial.cy + upTo(2000)};
        const auto placed = anchors.Place(grown);
        ASSERT_EQ(placed.back().rectangle.right, grown.cx);
        for (std::size_t place = 0; place < placed.size(); ++place) {
            const CRect& now = placed[place].rectangle;
            ASSERT_EQ(now.left, place == 0 ? 0 : placed[place - 1].rectangle.right);
            ASSERT_GE(now.Width(), told[place].rectangle.Width()) << "shares rise from left to right";
            ASSERT_EQ(now.bottom, grown.cy);
        }
        for (const auto& [id, rectangle] : anchors.Place({upTo(10), upTo(10)}))
            ASSERT_TRUE(rectangle.Width() >= 0 && rectangle.Height() >= 0);
        ASSERT_EQ(anchors.Place(initial), told) << "back where they were";
    }
}

TEST(ResizeAnchorsTest, LimitsAndImpossibleNumbers)
{
    constexpr auto S_most = std::numeric_limits<std::int32_t>::max();
    ResizeAnchors anchors;
    anchors.SetMinSize({100, 0});
    anchors.SetMaxSize({50, S_most});
    MINMAXINFO info;
    info.ptMinTrackSize = {1, 2};
    info.ptMaxTrackSize = {3, 4};
    anchors.FillTrackSizes(info, {10, 20});
    EXPECT_EQ(info.ptMinTrackSize, (CPoint{110, 2}));
    EXPECT_EQ(info.ptMaxTrackSize, (CPoint{110, S_most}));

    for (const double share : {-0.1, 1.1, std::nan("")})
        EXPECT_THROW(anchors.SetResize(1, {}, {.right = share}), std::invalid_argument);
    anchors.SetResize(1, {}, {});
    anchors.SetResize(1, {0, 0, S_most, 0}, {.right = 1.0});
    EXPECT_EQ(anchors.Place({S_most, S_most}).front().rectangle.Width(), S_most);
}
