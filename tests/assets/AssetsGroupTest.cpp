#include "assets/AssetsGroup.h"

#include "assets/Asset.h"
#include "support/Testing.h"

#include <sys/resource.h>

#include <new>

#if defined(__SANITIZE_THREAD__)
// The pool's library is not instrumented, so the sanitizer doesn't see how it hands work from thread to thread and
// takes every range that another thread sorts for a race, also with the end of the list later on. A long history keeps
// the stacks by which it knows them. What runs beside the pool is still watched.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() // NOLINT
{
    return "race:/oneapi/tbb/\nrace:AssetsGroup::~AssetsGroup\n";
}
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options() // NOLINT
{
    return "history_size=7";
}
#endif

namespace {

AssetsGroup MakeGroup(unsigned int a_id = 1, AssetsGroupProvider* a_provider = nullptr)
{
    return {a_id, false, L"Grupa", L"Dostawca", a_provider};
}

Asset MakeAsset(std::string a_isin, std::string a_shortName = "x")
{
    return {nullptr, std::move(a_shortName), "", "GPW", std::move(a_isin)};
}

/// ISINs that are hard on a sort: shared heads, one the head of another, zero bytes, bytes above 0x7F, and many alike.
std::string RandomIsin(std::mt19937& a_random, unsigned int a_variety)
{
    static constexpr std::string_view S_letters("\0AB\x7F\x80\xFF", 6);
    std::string isin = a_random() % 2 == 0 ? "PL" : "PLKGHM0000";
    isin += std::to_string(a_random() % a_variety);
    if (a_random() % 4 == 0)
        isin += std::string(a_random() % 8, S_letters[a_random() % S_letters.size()]);
    return isin;
}

std::vector<Asset> RandomAssets(std::mt19937& a_random, std::size_t a_count, unsigned int a_variety)
{
    std::vector<Asset> assets;
    for (std::size_t place = 0; place < a_count; ++place)
        assets.push_back(MakeAsset(RandomIsin(a_random, a_variety), std::to_string(a_random())));
    return assets;
}

/// ISIN and short name of each, in the order of the group. Equal ISINs have no order of their own, so theirs is by
/// name.
std::vector<std::string> ContentOf(const std::vector<Asset>& a_assets)
{
    std::vector<std::string> content;
    for (const Asset& asset : a_assets)
        content.push_back(asset.GetIsin() + '|' + asset.GetShortName());
    std::sort(content.begin(), content.end());
    return content;
}

std::vector<Asset> AssetsOf(const AssetsGroup& a_group)
{
    std::vector<Asset> assets;
    for (const auto& asset : a_group)
        assets.push_back(*asset);
    return assets;
}

bool IsSorted(const AssetsGroup& a_group)
{
    return std::is_sorted(a_group.begin(), a_group.end(),
                          [](const auto& a_left, const auto& a_right) { return *a_left < *a_right; });
}

TEST(AssetsGroupTest, SortsAnyNumberOfAssetsAndLosesNone)
{
    std::mt19937 random(1);
    for (const std::size_t count : {0U, 1U, 2U, 32U, 33U, 500U, 501U, 20000U}) {
        SCOPED_TRACE(count);
        AssetsGroup group = MakeGroup();
        std::vector<const Asset*> added;
        for (auto& asset : RandomAssets(random, count, 5000)) {
            group.AddAsset(std::make_shared<Asset>(std::move(asset)));
            added.push_back((group.end() - 1)->get());
        }
        group.SortAssets();
        EXPECT_TRUE(IsSorted(group));
        std::vector<const Asset*> sorted;
        for (const auto& asset : group)
            sorted.push_back(asset.get());
        std::sort(sorted.begin(), sorted.end());
        std::sort(added.begin(), added.end());
        EXPECT_EQ(sorted, added);
    }
}

// The model keeps a list and searches it from end to end.
TEST(AssetsGroupTest, MergesAsAPlainListDoes)
{
    for (unsigned int seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        AssetsGroup group = MakeGroup();
        std::vector<Asset> model;
        for (int step = 0; step < 8; ++step) {
            auto incoming =
                RandomAssets(random, random() % 80, 1 + static_cast<unsigned int>(random() % 120));
            const std::vector<Asset> before = model;
            for (const Asset& asset : incoming)
                if (std::find(before.begin(), before.end(), asset) == before.end())
                    model.push_back(asset);
            const std::vector<std::shared_ptr<Asset>> objects(group.begin(), group.end());

            EXPECT_EQ(group.MergeAssets(std::move(incoming)), model.size() != before.size());
            EXPECT_TRUE(IsSorted(group));
            if (model.size() == before.size()) {
                EXPECT_TRUE(std::equal(group.begin(), group.end(), objects.begin(), objects.end()));
            }

            ASSERT_EQ(ContentOf(AssetsOf(group)), ContentOf(model));

            const Asset wanted = MakeAsset(RandomIsin(random, 120));
            const auto found = std::find(model.begin(), model.end(), wanted);
            ASSERT_EQ(group.HasInstrument(wanted), found != model.end());
            const std::size_t count = group.GetAssetsCount();
            ASSERT_EQ(group.RemoveAsset(wanted), found != model.end());
            ASSERT_EQ(group.GetAssetsCount(), count - (found != model.end() ? 1 : 0));
            model = AssetsOf(group); // of equal ones any may have gone
        }
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // their own memory would pass the limit
/// Lets the process have the memory that it has and no more, so that no thread gets a stack.
void ForbidNewThreads()
{
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit limit{pages * 4096 + (rlim_t{3} << 20U), RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
}

// In a process of its own: the pool must not have been started by another test.
TEST(AssetsGroupDeathTest, WithoutThreadsTheListStaysAndTheFailureIsTold)
{
    if (std::thread::hardware_concurrency() <= 1)
        GTEST_SKIP() << "no pool on a machine of one thread";
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    const auto sortWithoutThreads = [] {
        std::mt19937 random(7);
        AssetsGroup group = MakeGroup();
        for (auto& asset : RandomAssets(random, 5000, 100000))
            group.AddAsset(std::make_shared<Asset>(std::move(asset)));
        const std::vector<std::shared_ptr<Asset>> before(group.begin(), group.end());
        ForbidNewThreads();
        try {
            group.SortAssets();
            std::fputs("sorted", stderr);
        } catch (const std::bad_alloc& error) {
            std::fputs(error.what(), stderr);
        }
        const bool kept = std::equal(before.begin(), before.end(), group.begin(), group.end());

        // With memory at hand again the same list sorts.
        const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
        setrlimit(RLIMIT_AS, &unlimited);
        group.SortAssets();
        std::exit(kept && IsSorted(group) ? 0 : 1);
    };
    EXPECT_EXIT(sortWithoutThreads(), testing::ExitedWithCode(0),
                "Insufficient resources were available to use additional parallelism\\.");
}
#endif

} // namespace
