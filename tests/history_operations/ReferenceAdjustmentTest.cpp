#include "history_operations/HistoryOperations.h"
#include "series/History.h"
#include "support/MarketData.h"
#include "support/Testing.h"
#include "time/DateTimeTools.h"

namespace {

// Columns of a CSV file by their names, as texts.
std::map<std::string, std::vector<std::string>> ReadTable(const std::filesystem::path& a_path)
{
    std::map<std::string, std::vector<std::string>> columns;
    std::ifstream file(a_path);
    std::string line;
    std::string field;
    std::vector<std::string> names;
    std::getline(file, line);
    for (std::istringstream header(line); std::getline(header, field, ',');)
        names.push_back(field);
    while (std::getline(file, line)) {
        std::istringstream row(line);
        for (std::size_t column = 0; column < names.size() && std::getline(row, field, ','); ++column)
            columns[names[column]].push_back(field);
    }
    return columns;
}

std::vector<double> Numbers(const std::vector<std::string>& a_texts)
{
    std::vector<double> numbers;
    numbers.reserve(a_texts.size());
    for (const std::string& text : a_texts)
        numbers.push_back(std::stod(text));
    return numbers;
}

class ReferenceAdjustmentTest : public testing::Test {
protected:
    struct Share {
        const char* history;
        const char* operations;
    };
    static constexpr Share S_shares[] = {{"orcl_2000.csv", "operations_orcl.txt"},
                                         {"aig_2008_2009.csv", "operations_aig.txt"},
                                         {"ibm_2008_2009.csv", "operations_ibm.txt"},
                                         {"aapl_2014.csv", "operations_aapl.txt"},
                                         {"msft_2014.csv", "operations_msft.txt"}};
    struct Column {
        ESeriesId id;
        std::string name;
    };
    inline static const std::vector<Column> S_columns = {{Price, "close"},
                                                         {Volume, "volume"},
                                                         {IntervalOpen, "open"},
                                                         {IntervalMax, "high"},
                                                         {IntervalMin, "low"}};

    void Adjust(const Share& a_share)
    {
        m_table = ReadTable(m_folder / a_share.history);
        std::vector<NDateTime> dates;
        for (const std::string& date : m_table["date"])
            dates.push_back(DateTimeTools::ParseDateIso8601(date));
        DataSeriesSet::Columns columns;
        for (const Column& column : S_columns)
            columns.emplace_back(column.id, Numbers(m_table[column.name]));
        m_history = History(EIntervalDay, 1, std::move(dates), std::move(columns));

        std::ifstream file(m_folder / a_share.operations, std::ios::binary);
        HistoryOperations operations;
        ASSERT_TRUE(operations.Parse(std::string(std::istreambuf_iterator<char>(file), {})));
        m_history.ApplyDataOperations(operations);
        ASSERT_TRUE(m_history.IsValid());
        ASSERT_GE(m_history.GetRecordsCount(), 252U);
    }

    const std::filesystem::path m_folder = MarketData::Path("daily");
    std::map<std::string, std::vector<std::string>> m_table;
    History m_history{EIntervalDay, 1};
};

// One part in 10^12 for the arithmetic, and what is lost where the reference stands rounded to ten significant digits.
double Tolerance(double a_reference)
{
    const double lastDigit = std::pow(10.0, std::floor(std::log10(a_reference)) - 9.0);
    return 1e-12 * a_reference + 0.5 * lastDigit;
}

} // namespace

// Histories of real shares with splits, a reverse split and dividends, and what their source made of them by itself.
TEST_F(ReferenceAdjustmentTest, RealHistoriesComeOutAsTheirSourceAdjustedThem)
{
    for (const Share& share : S_shares) {
        Adjust(share);
        for (const Column& column : S_columns) {
            SCOPED_TRACE(share.history + (" " + column.name));
            const std::vector<double>& values = m_history.find(column.id)->second;
            const std::vector<double> expected = Numbers(m_table["ref_adj_" + column.name]);
            ASSERT_EQ(values.size(), expected.size());
            for (std::size_t row = 0; row < values.size(); ++row)
                ASSERT_NEAR(values[row], expected[row], Tolerance(expected[row])) << "row " << row;
        }
    }
}
