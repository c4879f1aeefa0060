#include "platform/GdiObjects.h"

#include <cstdint>
#include <cstring>
#include <mutex>
#include <unordered_map>

namespace {

struct Register {
    std::mutex mutex;
    std::uintptr_t last = 0;
    std::unordered_map<HGDIOBJ, LOGFONTW> fonts;
};

Register& Objects()
{
    // Never destroyed: static objects may still delete their fonts while they die.
    static Register* const objects = new Register;
    return *objects;
}

} // namespace

HFONT CreateFontIndirectW(const LOGFONTW* a_font)
{
    Register& objects = Objects();
    const std::scoped_lock lock(objects.mutex);
    // A number, not an address: addresses come again.
    const auto handle = reinterpret_cast<HFONT>(++objects.last); // NOLINT(performance-no-int-to-ptr)
    objects.fonts.emplace(handle, *a_font);
    return handle;
}

bool DeleteObject(HGDIOBJ a_object)
{
    Register& objects = Objects();
    const std::scoped_lock lock(objects.mutex);
    return objects.fonts.erase(a_object) > 0;
}

int GetObjectW(HGDIOBJ a_object, int a_size, void* a_data)
{
    constexpr int size = sizeof(LOGFONTW);
    Register& objects = Objects();
    const std::scoped_lock lock(objects.mutex);
    const auto found = objects.fonts.find(a_object);
    if (found == objects.fonts.end() || a_size < size)
        return 0;
    std::memcpy(a_data, &found->second, size);
    return size;
}
