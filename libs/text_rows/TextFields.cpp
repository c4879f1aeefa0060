#include "text_rows/TextFields.h"

#include <algorithm>
#include <utility>

namespace kalvento::rows {

std::string LowerCase(std::string_view a_text)
{
    std::string lower(a_text);
    for (char& sign : lower)
        sign = sign >= 'A' && sign <= 'Z' ? static_cast<char>(sign - 'A' + 'a') : sign;
    return lower;
}

std::string Quote(std::string_view a_text)
{
    constexpr std::size_t limit = 60;
    std::string quoted = "\"";
    for (const char sign : a_text.substr(0, limit)) {
        const auto byte = static_cast<unsigned char>(sign);
        if (byte < 0x20 || byte == 0x7F) {
            constexpr std::string_view digits = "0123456789abcdef";
            quoted += "\\x";
            quoted += digits[byte >> 4U];
            quoted += digits[byte & 0xFU];
        } else {
            quoted += sign;
        }
    }
    return quoted + (a_text.size() > limit ? "...\"" : "\"");
}

bool SplitLine(std::string_view a_line, char a_delimiter, std::vector<Field>& a_fields)
{
    a_fields.clear();
    std::size_t place = 0;
    for (;;) {
        Field field;
        field.column = place + 1;
        while (a_delimiter != ' ' && place < a_line.size() && a_line[place] == ' ')
            ++place;
        if (place < a_line.size() && a_line[place] == '"') {
            for (++place;; ++place) {
                if (place == a_line.size()) {
                    a_fields.push_back(std::move(field));
                    return false;
                }
                if (a_line[place] == '"') {
                    if (place + 1 == a_line.size() || a_line[place + 1] != '"')
                        break;
                    ++place;
                }
                field.text += a_line[place];
            }
            ++place;
        }
        const std::size_t end = std::min(a_line.find(a_delimiter, place), a_line.size());
        field.text += a_line.substr(place, end - place);
        while (a_delimiter != ' ' && field.text.ends_with(' '))
            field.text.pop_back();
        a_fields.push_back(std::move(field));
        if (end == a_line.size())
            return true;
        place = end + 1;
    }
}

} // namespace kalvento::rows
