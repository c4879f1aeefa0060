#include "time/MaxMultiplicity.h"

#include <array>

namespace kalvento::internal {

unsigned int GetMaxMultiplicity(EInterval a_interval)
{
    // By the numbers of EInterval.
    constexpr std::array<unsigned int, 9> limits = {1,  S_unlimitedMultiplicity, 59, 59, 24, 365, 51,
                                                    11, S_unlimitedMultiplicity};
    return a_interval < limits.size() ? limits[a_interval] : limits[EIntervalEmpty];
}

} // namespace kalvento::internal
