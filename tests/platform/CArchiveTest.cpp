#include "platform/CArchive.h"
#include "support/ArchiveTools.h"

#include <gmock/gmock.h>

// Serial classes stand in the global namespace, as those of the plug-ins do.

/// A row of a list: a number and the next row, so that objects nest.
class ArchiveTestRow : public CObject {
    DECLARE_SERIAL(ArchiveTestRow)

    void Serialize(CArchive& a_archive) override
    {
        if (a_archive.IsStoring()) {
            a_archive << m_number;
            a_archive.WriteObject(m_next.get());
        } else {
            a_archive >> m_number;
            m_next = a_archive.ReadObject(ArchiveTestRow::GetThisClass());
        }
    }

    std::int32_t m_number = 0;
    std::unique_ptr<CObject> m_next;
};
IMPLEMENT_SERIAL(ArchiveTestRow, CObject, 7)

/// A row with one more field.
class ArchiveTestWideRow : public ArchiveTestRow {
    DECLARE_SERIAL(ArchiveTestWideRow)

    void Serialize(CArchive& a_archive) override
    {
        ArchiveTestRow::Serialize(a_archive);
        if (a_archive.IsStoring())
            a_archive << m_weight;
        else
            a_archive >> m_weight;
    }

    double m_weight = 0.0;
};
IMPLEMENT_SERIAL(ArchiveTestWideRow, ArchiveTestRow, 1)

namespace {

Bytes FromHex(const std::string& a_hex)
{
    Bytes bytes;
    for (std::size_t place = 0; place + 1 < a_hex.size(); place += 3)
        bytes.push_back(static_cast<std::byte>(std::stoi(a_hex.substr(place, 2), nullptr, 16)));
    return bytes;
}

std::unique_ptr<CObject> ReadRow(CArchive& a_archive)
{
    return a_archive.ReadObject(ArchiveTestRow::GetThisClass());
}

/// a_depth rows, one inside of the other.
std::unique_ptr<CObject> MakeRows(unsigned int a_depth)
{
    std::unique_ptr<CObject> row;
    for (unsigned int made = 0; made < a_depth; ++made) {
        auto outer = std::make_unique<ArchiveTestRow>();
        outer->m_number = static_cast<std::int32_t>(a_depth - made);
        outer->m_next = std::move(row);
        row = std::move(outer);
    }
    return row;
}

TEST(CArchiveTest, NumbersStandLittleEndianWithoutPadding)
{
    const Bytes bytes = Stored([](CArchive& a_archive) {
        a_archive << std::uint8_t{1} << std::uint16_t{0x0203} << std::int32_t{-2} << 0x0102030405060708ULL
                  << 1.0;
    });
    EXPECT_EQ(bytes, FromHex("01 03 02 fe ff ff ff 08 07 06 05 04 03 02 01 00 00 00 00 00 00 f0 3f "));
}

TEST(CArchiveTest, BuffersOfAnySizeGiveTheSameStream)
{
    // Runs below, at and above each buffer size, mixed with single numbers.
    for (const int storeSize : {1, 2, 7, 8, 4096, 0, -1}) {
        for (const int loadSize : {1, 3, 8, 4096}) {
            SCOPED_TRACE(testing::Message() << storeSize << " to " << loadSize);
            const Bytes bytes = Stored(
                [](CArchive& a_archive) {
                    for (std::uint8_t run = 0; run < 20; ++run) {
                        const std::string text(run, static_cast<char>('a' + run));
                        a_archive << run;
                        a_archive.Write(text.data(), text.size());
                        a_archive << std::uint64_t{run};
                    }
                },
                storeSize);

            CMemFile file(bytes);
            CArchive archive(&file, CArchive::load, loadSize);
            for (std::uint8_t run = 0; run < 20; ++run) {
                std::uint8_t size = 0;
                archive >> size;
                std::string text(size, '\0');
                archive.Read(text.data(), text.size());
                std::uint64_t number = 0;
                archive >> number;
                EXPECT_EQ(text, std::string(run, static_cast<char>('a' + run)));
                EXPECT_EQ(number, run);
            }
            EXPECT_EQ(archive.GetBytesLeft(), 0U);
        }
    }
}

TEST(CArchiveTest, WrongDirectionAndClosedArchivesAreRefused)
{
    const Bytes block = FromHex("01 ");
    std::uint32_t number = 99;
    EXPECT_EQ(CauseOf(block, [&](CArchive& a_archive) { a_archive >> number; }),
              CArchiveException::endOfFile);
    EXPECT_EQ(number, 99U) << "a short read takes nothing";
    EXPECT_EQ(CauseOf({}, [](CArchive& a_archive) { a_archive << 1; }), CArchiveException::readOnly);
    EXPECT_EQ(CauseOf(block,
                      [&](CArchive& a_archive) {
                          a_archive.Close();
                          a_archive >> number;
                      }),
              CArchiveException::genericException);
    CMemFile file;
    CArchive storing(&file, CArchive::store);
    EXPECT_THROW(storing >> number, CArchiveException);
    CMemFile borrowed(block);
    EXPECT_THROW(borrowed.Write("x", 1), std::logic_error);
}

TEST(CArchiveTest, ObjectRecordHasTheseBytes)
{
    ArchiveTestRow row;
    row.m_number = 0x01020304;
    EXPECT_EQ(Stored([&row](CArchive& a_archive) { a_archive.WriteObject(&row); }),
              FromHex("ff ff 07 00 0e 00 41 72 63 68 69 76 65 54 65 73 74 52 6f 77 04 03 02 01 00 00 "));
    EXPECT_EQ(Stored([](CArchive& a_archive) { a_archive.WriteObject(nullptr); }), FromHex("00 00 "));
}

TEST(CArchiveTest, ObjectsComeBackAsTheirOwnClass)
{
    ArchiveTestWideRow outer;
    outer.m_number = 1;
    outer.m_weight = 2.5;
    outer.m_next = MakeRows(2);
    const Bytes bytes = Stored([&outer](CArchive& a_archive) { a_archive.WriteObject(&outer); });

    CMemFile file(bytes);
    CArchive archive(&file, CArchive::load);
    const std::unique_ptr<CObject> read = archive.ReadObject(ArchiveTestRow::GetThisClass());
    ASSERT_EQ(read->GetRuntimeClass(), ArchiveTestWideRow::GetThisClass());
    EXPECT_EQ(static_cast<const ArchiveTestWideRow&>(*read).m_weight, 2.5);
    // What was read writes the same bytes again.
    EXPECT_EQ(Stored([&read](CArchive& a_archive) { a_archive.WriteObject(read.get()); }), bytes);
}

TEST(CArchiveTest, ARecordCutAtAnyByteIsRefused)
{
    const auto rows = MakeRows(3);
    const Bytes bytes = Stored([&rows](CArchive& a_archive) { a_archive.WriteObject(rows.get()); });
    ExpectEachCutRefused(bytes, ReadRow);
}

TEST(CArchiveTest, RecordsThatNobodyKnowsAreRefused)
{
    const std::tuple<const char*, const char*, CArchiveException::Cause> cases[] = {
        {"another tag", "01 80 07 00 ", CArchiveException::badIndex},
        {"no name", "ff ff 07 00 00 00 ", CArchiveException::badClass},
        {"unknown class", "ff ff 07 00 01 00 58 ", CArchiveException::badClass},
        {"a class that doesn't travel", "ff ff ff ff 07 00 43 4f 62 6a 65 63 74 ",
         CArchiveException::badClass},
        {"newer schema", "ff ff 08 00 0e 00 41 72 63 68 69 76 65 54 65 73 74 52 6f 77 04 03 02 01 00 00 ",
         CArchiveException::badSchema},
        {"name longer than the rest", "ff ff 07 00 ff ff 41 72 ", CArchiveException::endOfFile},
    };
    for (const auto& [what, bytes, cause] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(CauseOf(FromHex(bytes), ReadRow), cause);
    }
    // Known, but not what the reader asked for.
    const Bytes bytes =
        Stored([](CArchive& a_archive) { a_archive.WriteObject(std::make_unique<ArchiveTestRow>().get()); });
    EXPECT_EQ(
        CauseOf(bytes, [](CArchive& a_archive) { a_archive.ReadObject(ArchiveTestWideRow::GetThisClass()); }),
        CArchiveException::badClass);
}

TEST(CArchiveTest, NestingEndsAtTheLimit)
{
    const auto recordOf = [](unsigned int a_depth) {
        return Stored([rows = MakeRows(a_depth)](CArchive& a_archive) { a_archive.WriteObject(rows.get()); });
    };
    EXPECT_EQ(CauseOf(recordOf(CArchive::S_deepestObject + 1), ReadRow), CArchiveException::badIndex);
    // The limit counts levels, not objects: the archive goes on afterwards.
    Bytes twice = recordOf(CArchive::S_deepestObject);
    const Bytes once = twice;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(CauseOf(twice,
                      [](CArchive& a_archive) {
                          ReadRow(a_archive);
                          ReadRow(a_archive);
                      }),
              CArchiveException::none);
}

TEST(CArchiveTest, LengthOfATextHasTheseBytes)
{
    const std::tuple<std::uint64_t, const char*> cases[] = {
        {0, "00 "},
        {0xFF, "ff ff 00 "},
        {0xFFFE, "ff ff ff fe ff 00 00 "}, // not in 16 bits: there it says that the text is wide
        {0xFFFFFFFF, "ff ff ff ff ff ff ff ff ff ff ff 00 00 00 00 "},
    };
    for (const auto& [length, narrow] : cases) {
        SCOPED_TRACE(length);
        EXPECT_EQ(Stored([length = length](CArchive& a_archive) {
                      AfxWriteStringLength(a_archive, length, false);
                  }),
                  FromHex(narrow));
        EXPECT_EQ(
            Stored([length = length](CArchive& a_archive) { AfxWriteStringLength(a_archive, length, true); }),
            FromHex(std::string("ff fe ff ") + narrow));
    }
}

TEST(CArchiveTest, LengthOfATextIsReadAsItWasWrittenAndNeverBeyondTheRest)
{
    for (const std::uint64_t length : {0U, 1U, 254U, 255U, 256U, 0xFFFDU, 0xFFFEU, 0xFFFFU, 0x10000U}) {
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(testing::Message() << length << ' ' << wide);
            Bytes bytes = Stored([&](CArchive& a_archive) { AfxWriteStringLength(a_archive, length, wide); });
            bytes.resize(bytes.size() + length * (wide ? 2 : 1));
            const auto read = [&](CArchive& a_archive) {
                int characterSize = 0;
                EXPECT_EQ(AfxReadStringLength(a_archive, characterSize), length);
                EXPECT_EQ(characterSize, wide ? 2 : 1);
            };
            EXPECT_EQ(CauseOf(bytes, read), CArchiveException::none);
            if (length > 0) {
                bytes.pop_back();
                EXPECT_EQ(CauseOf(bytes, read), CArchiveException::badIndex);
            }
        }
    }
    int characterSize = 0;
    EXPECT_EQ(CauseOf(FromHex("ff fe ff ff fe ff 01 41 41 "),
                      [&](CArchive& a_archive) { AfxReadStringLength(a_archive, characterSize); }),
              CArchiveException::badIndex);
}

} // namespace
