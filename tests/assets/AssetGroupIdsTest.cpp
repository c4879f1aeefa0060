#include "assets/Asset2GroupId.h"
#include "assets/AssetUtils.h"
#include "assets/AssetsGroup.h"
#include "assets/AssetsGroupId.h"
#include "contract_kit/TestMediator.h"
#include "contract_kit/TestProvider.h"
#include "support/StoredForm.h"

namespace {

class AssetGroupIdsTest : public testing::Test {
protected:
    AssetGroupIdsTest() { mediator.providers = {&alpha, &beta}; }

    template<class Type>
    static Type StoreAndRead(const Type& a_value)
    {
        Settings stored;
        EXPECT_TRUE(stored.ConvertFromString(StoredText(a_value)));
        return Type(stored);
    }

    TestProvider alpha{L"Giełda"};
    TestProvider beta{L"Zapas"};
    TestMediator mediator;
};

TEST_F(AssetGroupIdsTest, NumberAndProviderObjectMakeTheIdentity)
{
    const AssetsGroupId group(7, false, L"Giełda", &alpha);
    EXPECT_TRUE(group == AssetsGroupId(7, true, L"inna nazwa", &alpha));
    EXPECT_FALSE(group == AssetsGroupId(7, false, L"Giełda", &beta));
    EXPECT_FALSE(group == AssetsGroupId(8, false, L"Giełda", &alpha));

    const AssetsGroup left(7, false, L"a", L"Giełda", &alpha);
    const AssetsGroup right(7, false, L"a", L"Zapas", &beta);
    EXPECT_FALSE(left == right);
    EXPECT_FALSE(left < right || right < left);
    EXPECT_TRUE(left < AssetsGroup(8, false, L"", L"", nullptr));
}

TEST_F(AssetGroupIdsTest, AGroupIsFoundAgainByTheNameOfItsProvider)
{
    const AssetsGroupId again = StoreAndRead(AssetsGroupId(0xFFFFFFFF, false, L"Giełda", &alpha));
    EXPECT_EQ(again.GetId(), 0xFFFFFFFF);
    EXPECT_EQ(again.GetProvider(), static_cast<AssetsGroupProvider*>(&alpha));
    EXPECT_EQ(again.GetProviderName(), L"Giełda");
    EXPECT_FALSE(again.IsVirtual());

    // A provider that the host lacks leaves its name; none at all leaves nothing.
    const AssetsGroupId gone = StoreAndRead(AssetsGroupId(3, false, L"Nieznany", &alpha));
    EXPECT_EQ(gone.GetProvider(), nullptr);
    EXPECT_EQ(gone.GetProviderName(), L"Nieznany");
    const AssetsGroupId unserved = StoreAndRead(AssetsGroupId(3, false, L"Giełda", nullptr));
    EXPECT_EQ(unserved.GetId(), 3U);
    EXPECT_EQ(unserved.GetProviderName(), L"");
}

TEST_F(AssetGroupIdsTest, AVirtualGroupLeavesNoTrace)
{
    EXPECT_EQ(StoredText(AssetsGroupId(7, true, L"Giełda", &alpha)), Settings().ConvertToString());
}

TEST_F(AssetGroupIdsTest, APairKeepsItsGroup)
{
    const Asset asset(&alpha, "KGH", "KGHM", "GPW", "PLKGHM000017");
    const Asset2GroupId alone = StoreAndRead(Asset2GroupId(asset));
    EXPECT_TRUE(alone.GetAsset() == asset);
    EXPECT_FALSE(alone.GetAssetGroupId());

    const Asset2GroupId grouped =
        StoreAndRead(Asset2GroupId(asset, AssetsGroupId(7, false, L"Giełda", &alpha)));
    ASSERT_TRUE(grouped.GetAssetGroupId());
    EXPECT_TRUE(*grouped.GetAssetGroupId() == AssetsGroupId(7, false, L"", &alpha));
    EXPECT_TRUE(alone == grouped); // the group is no part of the identity

    const Asset2GroupId fromVirtual =
        StoreAndRead(Asset2GroupId(asset, AssetsGroupId(7, true, L"Giełda", &alpha)));
    ASSERT_TRUE(fromVirtual.GetAssetGroupId());
    EXPECT_TRUE(*fromVirtual.GetAssetGroupId() == AssetsGroupId(0, false, L"", nullptr));
}

// ISIN and number of the group, -1 for none; those of one asset in the order of the numbers.
using Entries = std::vector<std::pair<std::string, int>>;

Entries EntriesOf(const std::vector<Asset2GroupId>& a_list)
{
    Entries entries;
    for (const auto& entry : a_list)
        entries.emplace_back(entry.GetAsset().GetIsin(),
                             entry.GetAssetGroupId() ? static_cast<int>(entry.GetAssetGroupId()->GetId())
                                                     : -1);
    return entries;
}

TEST_F(AssetGroupIdsTest, AnAssetThatStandsAloneWinsOverItsGroups)
{
    for (unsigned int seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto randomAssets = [&] {
            std::vector<Asset> assets;
            for (std::size_t count = random() % 20; count > 0; --count)
                assets.emplace_back(&alpha, "", "", "", "PL" + std::to_string(random() % 25));
            return assets;
        };
        const std::vector<Asset> alone = randomAssets();
        Entries expected;
        for (const Asset& asset : alone)
            expected.emplace_back(asset.GetIsin(), -1);

        alpha.groups.clear();
        std::vector<AssetsGroupId> ids;
        for (unsigned int id = 0; id < 4; ++id) {
            const bool isUnserved = random() % 4 == 0;
            const bool isUnknown = random() % 4 == 0;
            ids.emplace_back(id, false, L"Giełda", isUnserved ? nullptr : &alpha);
            AssetsGroup group(id, false, L"", L"Giełda", &alpha);
            for (const Asset& asset : randomAssets()) {
                group.AddAsset(std::make_shared<Asset>(asset));
                if (!isUnserved && !isUnknown && std::find(alone.begin(), alone.end(), asset) == alone.end())
                    expected.emplace_back(asset.GetIsin(), static_cast<int>(id));
            }
            if (!isUnknown)
                alpha.groups.emplace(id, group);
        }

        const auto list = AssetUtils::GetSortedAssets2GroupIdContainer(alone, ids);
        EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
        Entries entries = EntriesOf(list);
        std::sort(entries.begin(), entries.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(entries, expected);
    }
}

} // namespace
