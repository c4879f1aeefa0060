#include "provider_kit/OperationsKeeper.h"

#include "StoreTestTools.h"
#include "platform/WidePath.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

using kalvento::internal::OperationsKeeper;

TEST(OperationsKeeperTest, TheFileServesWhileTheStoreCant)
{
    const TemporaryFolder folder;
    const auto path = folder / "DataOperation.xml";
    MemoryStore store;
    store.AddInstrument(TickMaker::Instrument("PLTEST000001"));
    OperationsKeeper keeper(store);
    std::wstring fault;
    const auto read = [&] { return keeper.Read("PLTEST000001", WidePath::ToWide(path), fault); };

    EXPECT_EQ(read().begin(), read().end());
    EXPECT_FALSE(std::filesystem::exists(path)) << "nothing to keep yet";

    HistoryOperations operations;
    ASSERT_TRUE(operations.Parse("3\n9,200102,7,0.9"));
    store.SetOperations("PLTEST000001", operations);
    EXPECT_TRUE(OperationsKeeper::AreEqual(read(), operations));
    EXPECT_EQ(fault, L"");
    store.Break();
    EXPECT_TRUE(OperationsKeeper::AreEqual(read(), operations));
    EXPECT_NE(fault, L"");
    store.Restore();
    store.SetOperations("PLTEST000001", HistoryOperations());
    EXPECT_TRUE(OperationsKeeper::AreEqual(read(), HistoryOperations()));
    store.Break();
    EXPECT_TRUE(OperationsKeeper::AreEqual(read(), HistoryOperations())) << "what was withdrawn stays so";
}
