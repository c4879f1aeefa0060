#pragma once

#include "series/DataSheetItemBase.h"

/// Takes an order's entry off its page of the orders sheet.
class KALVENTO_API DeleteSheetPage : public DataSheetItemBase {
public:
    DeleteSheetPage(std::string_view a_orderKey, std::size_t a_orderId, ESheetPage a_sheetPage,
                    double a_userValue)
        : DataSheetItemBase(a_orderKey, a_orderId, a_sheetPage), m_userValue(a_userValue)
    {}

    /// The value entered by the user.
    double GetUserValue() const { return m_userValue; }

private:
    double m_userValue;
};
