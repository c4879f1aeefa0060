#pragma once

#include "series/DataSheetItemBase.h"

/// One order on a page of the orders sheet.
class KALVENTO_API DataSheetItem : public DataSheetItemBase {
public:
    /// a_kind: the order's kind as the exchange names it; only "PEG", in capitals, means anything here, and the text is
    /// not kept. a_userValue: entered by the user; a_gpwValue: given by the exchange.
    DataSheetItem(std::string_view a_orderKey, std::size_t a_orderId, std::string_view a_kind,
                  ESheetPage a_sheetPage, double a_userValue, double a_gpwValue, double a_orderVolume)
        : DataSheetItemBase(a_orderKey, a_orderId, a_sheetPage),
          m_userValue(a_userValue),
          m_gpwValue(a_gpwValue),
          m_orderVolume(a_orderVolume),
          m_isPeg(a_kind == "PEG")
    {}

    double GetUserValue() const { return m_userValue; }
    double GetGpwValue() const { return m_gpwValue; }
    double GetOrderVolume() const { return m_orderVolume; }
    /// The order is pegged: its price follows the market.
    bool GetPEGValue() const { return m_isPeg; }

private:
    double m_userValue;
    double m_gpwValue;
    double m_orderVolume;
    bool m_isPeg;
};
