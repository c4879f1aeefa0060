#pragma once

#include "platform/Export.h"
#include "platform/IMessageTarget.h"

#include <cstddef>
#include <shared_mutex>
#include <vector>

namespace kalvento::internal {

/// Which window a handle stands for. The bits of a handle are a generation, from bit 24 on, and a slot's number plus one:
/// a slot that is used again has the next generation, so the handle of a window that has gone is never a window again,
/// nor are null and the small numbers. The window thread alone changes the table, so it reads without a lock.
class KALVENTO_API HandleTable {
public:
    /// The one of the process, for all libraries in it. Never destroyed.
    static HandleTable& OfProcess();

    /// A new handle for a_target, which is not owned and lives until Remove. On the window thread, otherwise
    /// std::logic_error; the 16,777,216th window at one time raises std::length_error.
    HWND Add(IMessageTarget& a_target);
    /// From now on a_window is no window; where it is none already, nothing happens. On the window thread, otherwise
    /// std::logic_error.
    void Remove(HWND a_window);

    /// Null for a handle that is no window. Only on the window thread, which is not checked.
    IMessageTarget* Find(HWND a_window) const { return TargetOf(a_window); }
    /// Safe from any thread. Elsewhere than on the window thread the answer may be old when it arrives.
    bool IsWindow(HWND a_window) const;
    /// Every window's handle, by slot. On the window thread, otherwise std::logic_error.
    std::vector<HWND> GetAll() const;

private:
    static constexpr unsigned int S_slotBits = 24;
    static constexpr std::uintptr_t S_slotMask = (std::uintptr_t{1} << S_slotBits) - 1;
    static_assert(sizeof(std::uintptr_t) == 8, "a shorter generation would soon come round again");

    struct Slot {
        std::uintptr_t handle;  // the present window's, or the next one's while there is none
        IMessageTarget* target; // null while there is none
    };

    IMessageTarget* TargetOf(HWND a_window) const
    {
        const auto handle = reinterpret_cast<std::uintptr_t>(a_window);
        const std::size_t place = (handle & S_slotMask) - 1; // beyond every slot where the bits are 0
        if (place >= m_slots.size())
            return nullptr;
        const Slot& slot = m_slots[place];
        return slot.handle == handle ? slot.target : nullptr;
    }

    mutable std::shared_mutex
        m_mutex; // held exclusively to write, shared to read elsewhere than on the window thread
    std::vector<Slot> m_slots;
    std::vector<std::size_t> m_free; // places in m_slots; the window thread's alone
};

} // namespace kalvento::internal
