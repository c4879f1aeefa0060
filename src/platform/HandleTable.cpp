#include "platform/HandleTable.h"

#include "platform/CodePage.h"
#include "platform/WindowThread.h"

#include <bit>
#include <mutex>
#include <stdexcept>

namespace kalvento::internal {

HandleTable& HandleTable::OfProcess()
{
    // Threads of plug-ins may still post while static objects die.
    static auto* const S_table = new HandleTable;
    return *S_table;
}

HWND HandleTable::Add(IMessageTarget& a_target)
{
    WindowThread::Require("HandleTable::Add");
    if (m_free.empty()) {
        const std::size_t place = m_slots.size();
        if (place >= S_slotMask)
            throw std::length_error("Za dużo okien: HandleTable::Add"_cp1250);
        if (m_free.capacity() <= place)
            m_free.reserve(2 * place + 16); // room for every slot, so that Remove can't fail
        const std::unique_lock lock(m_mutex);
        m_slots.push_back({std::uintptr_t{1} << S_slotBits | (place + 1), nullptr});
        m_free.push_back(place);
    }
    const std::unique_lock lock(m_mutex);
    Slot& slot = m_slots[m_free.back()];
    m_free.pop_back();
    slot.target = &a_target;
    return std::bit_cast<HWND>(slot.handle);
}

void HandleTable::Remove(HWND a_window)
{
    WindowThread::Require("HandleTable::Remove");
    if (TargetOf(a_window) == nullptr)
        return;
    const std::size_t place = (reinterpret_cast<std::uintptr_t>(a_window) & S_slotMask) - 1;
    const std::unique_lock lock(m_mutex);
    m_slots[place].target = nullptr;
    m_slots[place].handle += std::uintptr_t{1} << S_slotBits;
    m_free.push_back(place);
}

bool HandleTable::IsWindow(HWND a_window) const
{
    if (WindowThread::IsCurrent())
        return TargetOf(a_window) != nullptr;
    const std::shared_lock lock(m_mutex);
    return TargetOf(a_window) != nullptr;
}

std::vector<HWND> HandleTable::GetAll() const
{
    WindowThread::Require("HandleTable::GetAll");
    std::vector<HWND> all;
    for (const Slot& slot : m_slots)
        if (slot.target != nullptr)
            all.push_back(std::bit_cast<HWND>(slot.handle));
    return all;
}

} // namespace kalvento::internal
