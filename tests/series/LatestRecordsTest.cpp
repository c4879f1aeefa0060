#include "series/LatestRecords.h"

#include "SeriesTestTools.h"
#include "platform/CodePage.h"
#include "series/DataSheetItem.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

#include <gmock/gmock.h>

namespace {

using kalvento::tests::At;
using kalvento::tests::RaisedText;

// A batch keeps all that it brings, in its order; live rows go in front, and the list settles at one above the limit,
// or at the length of the batch where that is more.
TEST(LatestRecordsTest, AnyRunOfCallsFollowsAPlainList)
{
    std::mt19937 random(4);
    LatestRecords records;
    std::vector<double> model;
    bool isWhole = records.ReceivedAllRecords();
    for (int step = 0; step < 3000; ++step) {
        const auto type = static_cast<unsigned long>(random() % 20);
        if (random() % 200 < 100) {
            records.AddTransaction(At(9, 0), step, 1.0);
            const std::size_t most = std::max<std::size_t>(model.size(), LatestRecords::RecordsLimit + 1);
            model.insert(model.begin(), step);
            model.resize(std::min(model.size(), most));
        } else if (type < 16) {
            const unsigned long place = type < 14   ? 0
                                        : type < 15 ? 1 + 2 * (random() % 2)
                                                    : 2; // within, begins, ends
            records.SetTransaction(place, At(9, 0), step, 1.0);
            if (place % 2 == 1)
                model.clear();
            model.push_back(step);
            isWhole = place == 0 ? isWhole : place >= 2;
        } else {
            const unsigned long unknown = type == 16 ? ~0UL : type == 17 ? 0x100000001UL : 4UL;
            const std::string text =
                RaisedText<KalventoException>([&] { records.SetTransaction(unknown, At(9, 0), step, 1.0); });
            EXPECT_NE(text.find("Niepoprawny typ rekordu."_cp1250), std::string::npos);
        }
        std::vector<double> prices;
        for (const LatestRecords::LastRecord& record : records)
            prices.push_back(record.price);
        ASSERT_EQ(prices, model) << step;
        ASSERT_EQ(records.ReceivedAllRecords(), isWhole) << step;
    }
}

TEST(DataSheetItemTest, OnlyTheExactKindIsPegged)
{
    using namespace std::string_view_literals;
    for (const auto kind : {"PEG"sv, ""sv, "peg"sv, "PEGX"sv, "PEG\0"sv, "PE"sv})
        EXPECT_EQ(DataSheetItem("key", 1, kind, ESheetPageActive, 1.0, 2.0, 3.0).GetPEGValue(),
                  kind == "PEG"sv);
}

} // namespace
