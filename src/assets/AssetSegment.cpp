#include "assets/AssetSegment.h"

#include "assets/FeedCode.h"

namespace AssetSegment {

namespace {

constexpr unsigned int Packed(char a_first, char a_second)
{
    return static_cast<unsigned int>(a_first) * 256U + static_cast<unsigned int>(a_second);
}

} // namespace

Value ToSegmentValue(std::string_view a_code)
{
    switch (kalvento::internal::PackFeedCode(a_code)) {
    case Packed('I', 'N'):
    case Packed('L', 'E'):
    case Packed('N', 'M'):
        return SegmentInstruments;
    case Packed('I', 'X'):
        return SegmentIndices;
    case Packed('D', 'N'):
        return SegmentDerivatives;
    default:
        return SegmentUnknown;
    }
}

} // namespace AssetSegment
