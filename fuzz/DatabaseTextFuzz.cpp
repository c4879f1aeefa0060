// What a database, and whoever says where it is, hand in as text.
#include "platform/CodePage.h"
#include "provider_kit/DamagedData.h"
#include "sql_store/SqlAddress.h"
#include "sql_store/SqlRowForm.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

void Expect(bool a_holds)
{
    if (!a_holds)
        std::abort();
}

// Numbers that were read are written so that they read as the same again.
void ReadNumbers(const std::string& a_text)
{
    try {
        std::vector<double> values;
        SqlRowForm::ReadNumbers(a_text, values);
        std::vector<double> again;
        SqlRowForm::ReadNumbers(SqlRowForm::WriteNumbers(values), again);
        Expect(again.size() == values.size());
        for (std::size_t place = 0; place < values.size(); ++place)
            Expect(again[place] == values[place] || (std::isnan(again[place]) && std::isnan(values[place])));
    } catch (const DamagedData& damage) {
        Expect(CodePage::Cp1250ToWide(damage.what()).size() < 200);
    }
}

// What is handed on names the same place.
void ReadAddress(const std::string& a_text)
{
    try {
        const SqlAddress address(a_text);
        Expect(address.IsEmpty() ||
               SqlAddress(address.GetConnection()).GetConnection() == address.GetConnection());
        Expect(address.GetPatience().count() > 0);
    } catch (const std::invalid_argument&) {
        // No address.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    const std::string text(reinterpret_cast<const char*>(a_data), a_size);
    ReadNumbers(text);
    ReadNumbers('{' + text + '}');
    ReadAddress(text);
    Expect(CodePage::WideToCp1250(CodePage::Utf8ToWide(CodePage::Cp1250ToUtf8(text))) == text);
    return 0;
}
