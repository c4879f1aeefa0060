#pragma once

#include "assets/Asset.h"
#include "orders/EOrderSide.h"
#include "platform/Export.h"
#include "series/ESeriesId.h"

#include <cstdint>
#include <optional>

/// An order made ready from what the user clicked, before a module shows or sends it. A value type: copies are
/// independent, one thread at a time.
class KALVENTO_API OrderData {
public:
    /// How the order's price is meant. Modules exchange the numbers: append, never renumber.
    enum EOrderType : std::uint32_t {
        EOrderTypeNone = 0,    ///< Not decided yet.
        EOrderTypeLimit = 1,   ///< With the price in the value.
        EOrderTypeCode100 = 2, ///< Without a price, from the price code -100.0.
        EOrderTypeCode20 = 3   ///< Without a price, from the price code -20.0.
    };

    /// A buy order with nothing set.
    OrderData() = default;
    explicit OrderData(const Asset& a_asset) : m_asset(a_asset) {}
    explicit OrderData(EOrderSide a_side) : m_side(a_side) {}
    OrderData(const Asset& a_asset, EOrderSide a_side) : m_asset(a_asset), m_side(a_side) {}

    const std::optional<Asset>& GetAsset() const { return m_asset; }
    EOrderSide GetOrderSide() const { return m_side; }
    EOrderType GetOrderType() const { return m_type; }
    /// The level of the book that the order came from.
    std::optional<ESeriesId> GetSelectedOffer() const { return m_selectedOffer; }
    /// Only carried here, from the module that prepares to the one that shows.
    bool GetForceSetValues() const { return m_forceSetValues; }
    /// The price.
    std::optional<double> GetValue() const { return m_value; }
    /// The number of units.
    std::optional<int> GetAmount() const { return m_amount; }

    void SetOrderSide(EOrderSide a_side) { m_side = a_side; }
    void SetOrderType(EOrderType a_type) { m_type = a_type; }
    void SetSelectedOffer(ESeriesId a_seriesId) { m_selectedOffer = a_seriesId; }
    void SetForceSetValues(bool a_force) { m_forceSetValues = a_force; }
    void SetValue(std::optional<double> a_value) { m_value = a_value; }
    /// Adds to the amount, 0 where none is set. A sum beyond the range of int stays at its end.
    void AddAmount(int a_amount);

    /// Removes asset, value and amount; side and type become 0 (the side isn't the default of a new object) and the
    /// force flag is cleared. The selected offer stays.
    void ClearUsedValues();

private:
    std::optional<Asset> m_asset;
    EOrderSide m_side = EOrderSideBuy;
    EOrderType m_type = EOrderTypeNone;
    std::optional<ESeriesId> m_selectedOffer;
    bool m_forceSetValues = false;
    std::optional<double> m_value;
    std::optional<int> m_amount;
};
