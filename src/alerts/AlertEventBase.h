#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

static_assert(std::endian::native == std::endian::little, "Alert event records are little-endian");

/// The header that every alert event record begins with, 7 bytes. A plain record: it travels byte for byte, and copying
/// it copies its bytes. The library fills the constant parts and neither sends nor receives.
#pragma pack(push, 1)
class AlertEventBase {
public:
    static constexpr std::uint8_t S_startByte = 3;
    using TypeCode = std::array<char, 2>;

    constexpr AlertEventBase() = default;

    std::uint8_t m_start = S_startByte;
    TypeCode m_typeCode{'0', '0'}; ///< Two ASCII digits.
    std::uint32_t m_length = 0;    ///< Bytes after the header; only AlertEventCloudInfo sets it by itself.

protected:
    constexpr AlertEventBase(TypeCode a_typeCode, std::uint32_t a_length)
        : m_typeCode(a_typeCode), m_length(a_length)
    {}
};
#pragma pack(pop)

static_assert(sizeof(AlertEventBase) == 7 && std::is_trivially_copyable_v<AlertEventBase>);
