#include "assets/FeedCode.h"

#include "velo/CharIntConverter.h"
#include "velo/String.h"

namespace kalvento::internal {

unsigned int PackFeedCode(std::string_view a_code)
{
    // The text for a missing code is longer than any code, so it must not reach the packing.
    if (a_code == VeloTools::String::NullString() || a_code.empty())
        return 0;
    return VeloTools::CharIntConverter::ToInt(a_code);
}

} // namespace kalvento::internal
