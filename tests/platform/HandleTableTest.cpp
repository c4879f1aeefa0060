#include "platform/HandleTable.h"
#include "platform/WindowThread.h"
#include "support/Testing.h"

using namespace kalvento::internal;

namespace {

struct Nobody : IMessageTarget {
    LRESULT WindowProc(UINT, WPARAM, LPARAM) override { return 0; }
    bool PreTranslateMessage(MSG*) override { return false; }
    HWND GetParentHandle() const override { return nullptr; }
};

HWND Handle(std::uintptr_t a_bits)
{
    return std::bit_cast<HWND>(a_bits);
}

} // namespace

TEST(HandleTableTest, EqualsAPlainMapOfAllHandlesEverGiven)
{
    const WindowThread thread;
    HandleTable table;
    std::array<Nobody, 50> targets;
    std::map<HWND, IMessageTarget*> model; // null for those that have gone
    std::vector<HWND> given;
    std::size_t alive = 0;
    std::size_t most = 0;
    std::mt19937 random(1);
    const auto agree = [&](HWND a_window) {
        const auto known = model.find(a_window);
        IMessageTarget* const expected = known == model.end() ? nullptr : known->second;
        EXPECT_EQ(table.Find(a_window), expected) << a_window;
        EXPECT_EQ(table.IsWindow(a_window), expected != nullptr) << a_window;
    };

    for (int step = 0; step < 20'000; ++step) {
        if (given.empty() || random() % 2 == 0) {
            Nobody& target = targets[random() % targets.size()];
            given.push_back(table.Add(target));
            ASSERT_TRUE(model.emplace(given.back(), &target).second) << "a handle came again";
            most = std::max(most, ++alive);
            ASSERT_LE(reinterpret_cast<std::uintptr_t>(given.back()) & 0xFFFFFF, most)
                << "a free slot was passed over";
        } else {
            // Of the latest, so that many are alive; of all, so that many have gone.
            const std::size_t reach =
                random() % 4 == 0 ? given.size() : std::min<std::size_t>(given.size(), 20);
            const HWND gone = given[given.size() - 1 - random() % reach];
            table.Remove(gone);
            alive -= std::exchange(model[gone], nullptr) != nullptr ? 1 : 0;
        }
        agree(given[random() % given.size()]);
        agree(Handle(random() % 1000));
        agree(Handle(std::uintptr_t{random()} << 32 | random()));
    }
    std::set<HWND> living;
    for (const auto& [window, target] : model) {
        agree(window);
        if (target != nullptr)
            living.insert(window);
    }
    const std::vector<HWND> all = table.GetAll();
    EXPECT_EQ(std::set<HWND>(all.begin(), all.end()), living);
    EXPECT_EQ(all.size(), living.size());
}

TEST(HandleTableTest, OneThreadChangesItAndAllMayAsk)
{
    std::optional<WindowThread> thread(std::in_place);
    EXPECT_THROW(WindowThread(), std::logic_error);
    HandleTable table;
    Nobody target;
    const HWND window = table.Add(target);
    std::thread([&] {
        EXPECT_TRUE(table.IsWindow(window));
        EXPECT_THROW(table.Add(target), std::logic_error);
        EXPECT_THROW(table.Remove(window), std::logic_error);
    }).join();
    EXPECT_TRUE(table.IsWindow(window));
    thread.reset();
    EXPECT_THROW(table.Add(target), std::logic_error) << "there is no window thread";
}
