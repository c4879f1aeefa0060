#include "sql_store/SqlAddress.h"

#include "platform/CodePage.h"

#include <libpq-fe.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace {

using Options = std::map<std::string, std::string, std::less<>>;

Options ParseOptions(const std::string& a_connection)
{
    char* message = nullptr;
    const std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> parsed(
        PQconninfoParse(a_connection.c_str(), &message), &PQconninfoFree);
    if (message != nullptr)
        PQfreemem(message);
    // The library's message quotes pieces of the text, and a piece may be the password.
    if (!parsed)
        throw std::invalid_argument(
            "Zły opis połączenia z bazą; przyjmowane jest: host=KOMPUTER port=PORT dbname=BAZA user=KTO albo postgresql://KTO@KOMPUTER/BAZA"_cp1250);
    Options options;
    for (const PQconninfoOption* option = parsed.get(); option->keyword != nullptr; ++option) {
        if (option->val != nullptr)
            options[option->keyword] = option->val;
    }
    return options;
}

std::string Quoted(std::string_view a_value)
{
    std::string quoted = "'";
    for (const char sign : a_value) {
        if (sign == '\'' || sign == '\\')
            quoted += '\\';
        quoted += sign;
    }
    return quoted += '\'';
}

std::string ValueOr(const Options& a_options, std::string_view a_key, std::string_view a_absent)
{
    const auto found = a_options.find(a_key);
    return found == a_options.end() ? std::string(a_absent) : found->second;
}

} // namespace

GivenPassword::GivenPassword()
    : std::invalid_argument(
          "Hasło w opisie połączenia z bazą zobaczyliby inni (spis procesów, plik ustawień); należy je wpisać do pliku ~/.pgpass albo pliku wskazanego przez passfile="_cp1250)
{}

SqlAddress::SqlAddress(const std::string& a_connection)
{
    if (a_connection.find_first_not_of(" \t\r\n") == std::string::npos)
        return;
    Options options = ParseOptions(a_connection);
    if (options.contains("password") || options.contains("sslpassword"))
        throw GivenPassword();
    m_description = ValueOr(options, "dbname", ValueOr(options, "user", "?")) + " @ " +
                    ValueOr(options, "host", ValueOr(options, "hostaddr", "localhost"));

    const std::string patience = ValueOr(options, "connect_timeout", "");
    int seconds = 0;
    std::from_chars(patience.data(), patience.data() + patience.size(), seconds);
    if (seconds > 0)
        m_patience = std::chrono::seconds(std::min(seconds, 600));

    // What the user says wins: emplace leaves alone what is there.
    for (const auto& [key, value] :
         std::initializer_list<std::pair<const char*, const char*>>{{"application_name", "kalvento"},
                                                                    {"keepalives_idle", "10"},
                                                                    {"keepalives_interval", "3"},
                                                                    {"keepalives_count", "3"},
                                                                    {"tcp_user_timeout", "20000"}})
        options.emplace(key, value);
    for (const auto& [key, value] : options)
        m_connection += key + "=" + Quoted(value) + " ";
}
