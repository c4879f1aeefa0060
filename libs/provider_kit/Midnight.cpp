#include "provider_kit/Midnight.h"

namespace kalvento::internal {

NDateTime MidnightOf(const NDateTime& a_time)
{
    return a_time.GetMonth() == 0 ? a_time : NDateTime(a_time.GetYear(), a_time.GetMonth(), a_time.GetDay());
}

} // namespace kalvento::internal
