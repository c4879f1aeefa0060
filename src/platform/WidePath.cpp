#include "platform/WidePath.h"

#include "platform/CodePage.h"

namespace WidePath {

namespace {

// Python's "surrogateescape", PEP 383.
constexpr wchar_t S_escapeBase = 0xDC00;
constexpr wchar_t S_firstEscape = 0xDC80;
constexpr wchar_t S_lastEscape = 0xDCFF;

bool IsEscape(wchar_t a_character)
{
    return a_character >= S_firstEscape && a_character <= S_lastEscape;
}

} // namespace

std::filesystem::path ToPath(std::wstring_view a_path)
{
    std::string bytes;
    while (!a_path.empty()) {
        std::size_t plain = 0;
        while (plain < a_path.size() && !IsEscape(a_path[plain]))
            ++plain;
        bytes += CodePage::WideToUtf8(a_path.substr(0, plain));
        a_path.remove_prefix(plain);
        for (; !a_path.empty() && IsEscape(a_path.front()); a_path.remove_prefix(1))
            bytes += static_cast<char>(static_cast<unsigned char>(a_path.front() - S_escapeBase));
    }
    return {std::move(bytes)};
}

std::wstring ToWide(const std::filesystem::path& a_path)
{
    std::wstring wide;
    std::string_view rest = a_path.native();
    while (!rest.empty()) {
        const std::size_t good = CodePage::FindMalformedUtf8(rest);
        wide += CodePage::Utf8ToWide(rest.substr(0, good));
        rest.remove_prefix(good);
        if (!rest.empty()) {
            wide += static_cast<wchar_t>(S_escapeBase + static_cast<unsigned char>(rest.front()));
            rest.remove_prefix(1);
        }
    }
    return wide;
}

} // namespace WidePath
