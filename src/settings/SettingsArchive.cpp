#include "settings/SettingsArchive.h"

#include "platform/CArchiveException.h"
#include "platform/CodePage.h"

#include <cstdint>
#include <stdexcept>

namespace {

constexpr std::uint8_t S_absent = 0;
constexpr std::uint8_t S_present = 1;

void CheckDirection(bool a_isRight)
{
    if (!a_isRight)
        throw std::runtime_error("Niepoprawny kierunek serializacji "_cp1250);
}

} // namespace

namespace SettingsArchive {

void WriteText(CArchive& a_archive, std::string_view a_text)
{
    a_archive << std::uint64_t{a_text.size()};
    a_archive.Write(a_text.data(), a_text.size());
}

std::string ReadText(CArchive& a_archive)
{
    std::uint64_t length = 0;
    a_archive >> length;
    const std::uint64_t left = a_archive.GetBytesLeft();
    if (length > left)
        throw CArchiveException(CArchiveException::badIndex,
                                "SettingsArchive::ReadText: długość tekstu "_cp1250 + std::to_string(length) +
                                    ", zostało bajtów: "_cp1250 + std::to_string(left));
    std::string text(static_cast<std::size_t>(length), '\0');
    a_archive.Read(text.data(), text.size());
    return text;
}

void WriteOptionalTree(CArchive& a_archive, const Settings* a_tree)
{
    CheckDirection(a_archive.IsStoring());
    if (a_tree == nullptr) {
        a_archive << S_absent;
        return;
    }
    const std::string text = a_tree->ConvertToString();
    if (text.empty())
        throw std::runtime_error("SettingsArchive::WriteOptionalTree: drzewo jest za duże"_cp1250);
    a_archive << S_present;
    WriteText(a_archive, text);
}

std::optional<Settings> ReadOptionalTree(CArchive& a_archive)
{
    CheckDirection(a_archive.IsLoading());
    std::uint8_t flag = S_absent;
    a_archive >> flag;
    if (flag == S_absent)
        return std::nullopt;
    if (flag != S_present)
        throw CArchiveException(CArchiveException::badIndex,
                                "SettingsArchive::ReadOptionalTree: znacznik obecności "_cp1250 +
                                    std::to_string(flag) + ", dozwolone: 0 i 1"_cp1250);
    std::optional<Settings> tree(std::in_place);
    if (!tree->ConvertFromString(ReadText(a_archive)))
        throw std::runtime_error("Nie można utworzyć setingsów."_cp1250);
    return tree;
}

} // namespace SettingsArchive
