#include "alerts/AlertEvent.h"
#include "alerts/AlertEventCloudInfo.h"
#include "alerts/AlertEventGenerate.h"
#include "support/Testing.h"

namespace {

template<class Record>
std::vector<int> BytesOf(const Record& a_record)
{
    const auto bytes = std::bit_cast<std::array<unsigned char, sizeof(Record)>>(a_record);
    return {bytes.begin(), bytes.end()};
}

std::vector<int> WithZeros(std::vector<int> a_bytes, std::size_t a_size)
{
    a_bytes.resize(a_size);
    return a_bytes;
}

TEST(AlertEventTest, FieldsLieAtTheirOffsets)
{
    AlertEvent event(0x11223344, 0xAABBCCDD55667788);
    event.m_length = 0x01020304;
    event.m_reserved = 0x0A0B0C0D;
    EXPECT_EQ(BytesOf(event), (std::vector<int>{0x03, 0x30, 0x30, 0x04, 0x03, 0x02, 0x01, 0x0D, 0x0C, 0x0B,
                                                0x0A, 0x44, 0x33, 0x22, 0x11, 0x88, 0x77, 0x66, 0x55}))
        << "the values are cut to 32 bits";

    AlertEventCloudInfo info;
    info.m_payload64 = 0x0102030405060708;
    info.m_payload32 = 0x090A0B0C;
    info.m_payload8 = 0x0D;
    EXPECT_EQ(BytesOf(info), (std::vector<int>{0x03, 0x31, 0x30, 0x0D, 0, 0,    0,    8,    7,    6,
                                               5,    4,    3,    2,    1, 0x0C, 0x0B, 0x0A, 0x09, 0x0D}));

    AlertEventGenerate alert;
    alert.m_payload.front() = 1;
    alert.m_payload.back() = 2;
    std::vector<int> expected = WithZeros({0x03, 0x30, 0x30, 0, 0, 0, 0, 1}, 48);
    expected.back() = 2;
    EXPECT_EQ(BytesOf(alert), expected);
    EXPECT_EQ(BytesOf(AlertEventBase()), WithZeros({0x03, 0x30, 0x30}, 7));
    EXPECT_EQ(BytesOf(AlertEvent()), WithZeros({0x03, 0x30, 0x30}, 19));
}

} // namespace
