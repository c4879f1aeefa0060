#include "velo/UniqueMessage.h"

#include "platform/CodePage.h"

#include <map>
#include <mutex>
#include <stdexcept>

namespace {

constexpr std::size_t S_firstNumber = 0xC000;
constexpr std::size_t S_lastNumber = 0xFFFF;

unsigned int NumberOf(const std::wstring& a_name)
{
    struct Registry {
        std::mutex mutex;
        std::map<std::wstring, unsigned int> numbers;
    };
    // Never destroyed: static objects of other libraries may be made after ours die.
    static Registry& registry = *new Registry;

    const std::lock_guard lock(registry.mutex);
    const auto found = registry.numbers.find(a_name);
    if (found != registry.numbers.end())
        return found->second;
    const std::size_t number = S_firstNumber + registry.numbers.size();
    if (number > S_lastNumber)
        throw std::length_error("Za dużo nazw komunikatów: a_name"_cp1250);
    return registry.numbers.emplace(a_name, static_cast<unsigned int>(number)).first->second;
}

} // namespace

UniqueMessage::UniqueMessage(const std::wstring& a_name) : m_number(NumberOf(a_name)) {}
