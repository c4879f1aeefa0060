#include "orders/OrderData.h"

#include <algorithm>
#include <cstdint>
#include <limits>

OrderData::OrderData(const Asset& a_asset) : m_asset(a_asset) {}

OrderData::OrderData(EOrderSide a_side) : m_side(a_side) {}

OrderData::OrderData(const Asset& a_asset, EOrderSide a_side) : m_asset(a_asset), m_side(a_side) {}

void OrderData::AddAmount(int a_amount)
{
    const std::int64_t sum = std::int64_t{m_amount.value_or(0)} + a_amount;
    m_amount = static_cast<int>(
        std::clamp<std::int64_t>(sum, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

void OrderData::ClearUsedValues()
{
    m_asset.reset();
    m_side = EOrderSideNone;
    m_type = EOrderTypeNone;
    m_forceSetValues = false;
    m_value.reset();
    m_amount.reset();
}
