#include "orders/OrderData.h"

#include "platform/NearestInt.h"

#include <cstdint>

void OrderData::AddAmount(int a_amount)
{
    m_amount = kalvento::internal::NearestInt(std::int64_t{m_amount.value_or(0)} + a_amount);
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
