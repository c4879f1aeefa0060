#pragma once

#include "platform/Export.h"
#include "series/ESheetPage.h"

#include <cstddef>
#include <string>
#include <string_view>

/// What names one order on one page of the orders sheet. A value type: copies are independent, one thread at a time.
class KALVENTO_API DataSheetItemBase {
public:
    DataSheetItemBase(std::string_view a_orderKey, std::size_t a_orderId, ESheetPage a_sheetPage)
        : m_orderKey(a_orderKey), m_orderId(a_orderId), m_sheetPage(a_sheetPage)
    {}
    DataSheetItemBase(const DataSheetItemBase&) = default;
    DataSheetItemBase(DataSheetItemBase&&) = default;
    DataSheetItemBase& operator=(const DataSheetItemBase&) = default;
    DataSheetItemBase& operator=(DataSheetItemBase&&) = default;
    virtual ~DataSheetItemBase() = default;

    const std::string& GetOrderKey() const { return m_orderKey; }
    std::size_t GetOrderId() const { return m_orderId; }
    ESheetPage GetSheetPage() const { return m_sheetPage; }

private:
    std::string m_orderKey;
    std::size_t m_orderId;
    ESheetPage m_sheetPage;
};
