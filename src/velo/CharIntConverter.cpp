#include "velo/CharIntConverter.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <stdexcept>

namespace VeloTools::CharIntConverter {

namespace {

constexpr std::size_t S_mostCharacters = 4;

} // namespace

std::string ToString(unsigned int a_value)
{
    std::string code;
    for (; a_value != 0; a_value >>= 8U)
        code += static_cast<char>(static_cast<unsigned char>(a_value & 0xFFU));
    std::reverse(code.begin(), code.end());
    return code;
}

unsigned int ToInt(std::string_view a_code)
{
    if (a_code.size() > S_mostCharacters)
        throw std::length_error("przekroczono dozwolony rozmiar liczby"_cp1250);
    unsigned int value = 0;
    for (const char character : a_code)
        value = (value << 8U) | static_cast<unsigned int>(static_cast<signed char>(character));
    return value;
}

} // namespace VeloTools::CharIntConverter
