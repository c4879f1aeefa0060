#include "platform/ErrorText.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kalvento::internal {

namespace {

constexpr std::array<std::pair<std::errc, const char*>, 26> S_texts = {{
    {std::errc::no_such_file_or_directory, "nie ma takiego pliku ani folderu"_cp1250},
    {std::errc::permission_denied, "brak dostępu"_cp1250},
    {std::errc::operation_not_permitted, "operacja niedozwolona"_cp1250},
    {std::errc::no_space_on_device, "brak miejsca na dysku"_cp1250},
    {std::errc::file_too_large, "plik przekroczyłby największy dozwolony rozmiar"_cp1250},
    {std::errc::read_only_file_system, "system plików tylko do odczytu"_cp1250},
    {std::errc::io_error, "błąd odczytu lub zapisu urządzenia"_cp1250},
    {std::errc::file_exists, "plik już istnieje"_cp1250},
    {std::errc::not_a_directory, "to nie jest folder"_cp1250},
    {std::errc::is_a_directory, "to jest folder"_cp1250},
    {std::errc::directory_not_empty, "folder nie jest pusty"_cp1250},
    {std::errc::too_many_symbolic_link_levels, "dowiązania prowadzą w kółko"_cp1250},
    {std::errc::filename_too_long, "nazwa jest za długa"_cp1250},
    {std::errc::too_many_files_open, "otwarto zbyt wiele plików"_cp1250},
    {std::errc::too_many_files_open_in_system, "w systemie otwarto zbyt wiele plików"_cp1250},
    {std::errc::not_enough_memory, "brak pamięci"_cp1250},
    {std::errc::resource_unavailable_try_again, "zasób chwilowo niedostępny"_cp1250},
    {std::errc::device_or_resource_busy, "zasób jest zajęty"_cp1250},
    {std::errc::text_file_busy, "program jest właśnie wykonywany"_cp1250},
    {std::errc::cross_device_link, "inny system plików"_cp1250},
    {std::errc::not_supported, "operacja nieobsługiwana"_cp1250},
    {std::errc::executable_format_error, "to nie jest program dla tego systemu"_cp1250},
    {std::errc::broken_pipe, "odbiorca zakończył odczyt"_cp1250},
    {std::errc::interrupted, "przerwano sygnałem"_cp1250},
    {std::errc::invalid_argument, "niewłaściwy argument"_cp1250},
    {std::errc::bad_file_descriptor, "strumień jest zamknięty"_cp1250},
}};

} // namespace

std::string ErrorText(const std::error_code& a_error)
{
    const auto found = std::ranges::find_if(S_texts, [&a_error](const auto& a_text) {
        return a_error == std::make_error_condition(a_text.first);
    });
    return found != S_texts.end() ? found->second
                                  : std::string("błąd systemu nr "_cp1250) + std::to_string(a_error.value());
}

} // namespace kalvento::internal
