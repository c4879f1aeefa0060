#include "assets/ChosenAssetsAndAssetsGroups.h"

#include "support/ArchiveTools.h"

namespace {

std::unique_ptr<ChosenAssetsAndAssetsGroups> MakeSelection()
{
    AssetsGroup group(7, true, L"Grupa", L"Dostawca", nullptr);
    group.AddAsset(std::make_shared<Asset>(nullptr, "c", "c", "GPW", "PL3"));
    return std::make_unique<ChosenAssetsAndAssetsGroups>(
        std::vector<Asset>{{nullptr, "a", "a", "GPW", "PL1"}, {nullptr, "b", "b", "GPW", "PL2"}},
        std::vector<AssetsGroup>{group});
}

Bytes Store(ChosenAssetsAndAssetsGroups& a_selection)
{
    return Stored([&](CArchive& a_archive) { a_selection.Serialize(a_archive); });
}

void Load(CArchive& a_archive)
{
    ChosenAssetsAndAssetsGroups().Serialize(a_archive);
}

CArchiveException::Cause FailureOf(const Bytes& a_bytes)
{
    return CauseOf(a_bytes, Load);
}

Bytes BytesOf(const std::vector<std::uint64_t>& a_numbers)
{
    Bytes bytes;
    for (const std::uint64_t number : a_numbers)
        for (unsigned int shift = 0; shift < 64; shift += 8)
            bytes.push_back(static_cast<std::byte>(number >> shift & 0xFFU));
    return bytes;
}

std::uint64_t AddressOf(const void* a_element)
{
    return std::bit_cast<std::uintptr_t>(a_element);
}

TEST(ChosenAssetsAndAssetsGroupsTest, CountsThenAddressesPassTheSelectionOn)
{
    const auto source = MakeSelection();
    const Bytes bytes = Store(*source);
    EXPECT_EQ(bytes, BytesOf({2, 1, AddressOf(&source->GetAssets()[0]), AddressOf(&source->GetAssets()[1]),
                              AddressOf(source->GetAssetsGroup().data())}));

    const auto target = MakeSelection(); // what was there goes
    ASSERT_EQ(CauseOf(bytes, [&](CArchive& a_archive) { target->Serialize(a_archive); }),
              CArchiveException::none);
    ASSERT_EQ(target->GetAssets().size(), 2U);
    EXPECT_EQ(target->GetAssets()[1].GetIsin(), "PL2");
    ASSERT_EQ(target->GetAssetsGroup().size(), 1U);
    EXPECT_EQ(target->GetAssetsGroup()[0].GetName(), L"Grupa");
    EXPECT_EQ(*target->GetAssetsGroup()[0].begin(), *source->GetAssetsGroup()[0].begin());
}

TEST(ChosenAssetsAndAssetsGroupsTest, TravelsByTheNameOfItsClass)
{
    const auto source = MakeSelection();
    const Bytes bytes = Stored([&](CArchive& a_archive) { a_archive.WriteObject(source.get()); });
    CMemFile file(bytes);
    CArchive loading(&file, CArchive::load);
    const auto object = loading.ReadObject();
    const auto* const target = dynamic_cast<const ChosenAssetsAndAssetsGroups*>(object.get());
    ASSERT_NE(target, nullptr);
    EXPECT_STREQ(target->GetRuntimeClass()->m_lpszClassName, "ChosenAssetsAndAssetsGroups");
    EXPECT_EQ(target->GetAssets().size(), 2U);
}

TEST(ChosenAssetsAndAssetsGroupsTest, OnlyElementsOfALivingSelectionAreFollowed)
{
    auto source = MakeSelection();
    const std::uint64_t asset = AddressOf(source->GetAssets().data());
    const std::uint64_t group = AddressOf(source->GetAssetsGroup().data());
    EXPECT_EQ(FailureOf(BytesOf({1, 0, asset})), CArchiveException::badIndex); // was not stored
    const Bytes bytes = Store(*source);

    EXPECT_EQ(FailureOf(BytesOf({1, 1, asset, group})), CArchiveException::none);
    EXPECT_EQ(FailureOf(BytesOf({3, 2, 0, asset, 0, 0, group})),
              CArchiveException::none); // null addresses are skipped
    for (const std::uint64_t address : {std::uint64_t{1}, asset + 1, asset - sizeof(Asset),
                                        asset + 2 * sizeof(Asset), group, ~std::uint64_t{0}})
        EXPECT_EQ(FailureOf(BytesOf({1, 0, address})), CArchiveException::badIndex) << address - asset;
    EXPECT_EQ(FailureOf(BytesOf({0, 1, asset})), CArchiveException::badIndex);

    source.reset();
    EXPECT_EQ(FailureOf(bytes), CArchiveException::badIndex);
}

TEST(ChosenAssetsAndAssetsGroupsTest, AShortArchiveEndsInItsException)
{
    ExpectEachCutRefused(Store(*MakeSelection()), Load);
    // A count that no memory holds is only a count.
    EXPECT_EQ(FailureOf(BytesOf({~std::uint64_t{0}, ~std::uint64_t{0}, 0, 0})), CArchiveException::endOfFile);
}

} // namespace
