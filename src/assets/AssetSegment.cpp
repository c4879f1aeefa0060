#include "assets/AssetSegment.h"

#include "assets/FeedCode.h"

namespace AssetSegment {

namespace {

constexpr unsigned int Packed(const char (&a_code)[3])
{
    return static_cast<unsigned int>(a_code[0]) * 256U + static_cast<unsigned int>(a_code[1]);
}

} // namespace

Value ToSegmentValue(std::string_view a_code)
{
    switch (kalvento::internal::PackFeedCode(a_code)) {
    case Packed("IN"):
    case Packed("LE"):
    case Packed("NM"):
        return SegmentInstruments;
    case Packed("IX"):
        return SegmentIndices;
    case Packed("DN"):
        return SegmentDerivatives;
    default:
        return SegmentUnknown;
    }
}

} // namespace AssetSegment
