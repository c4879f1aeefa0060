#include "settings/SettingsForm.h"

#include "platform/CodePage.h"
#include "settings/SettingsChildren.h"
#include "settings/TextEscapes.h"

#include <fmt/format.h>
#include <pugixml.hpp>

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kalvento::internal {

namespace {

// The two element names that aren't keys, and the attributes.
constexpr const char* S_unnamedElement = "item";
constexpr const char* S_escapedKeyElement = "var";
constexpr const char* S_keyAttribute = "key";
constexpr const char* S_versionAttribute = "version";
constexpr const char* S_valueAttribute = "value";
constexpr const char* S_escapedAttribute = "escaped";

constexpr std::string_view S_byteOrderMark = "\xEF\xBB\xBF";

/// What is wrong with a text, and at which of its bytes.
class FormError : public std::runtime_error {
public:
    FormError(std::size_t a_place, const std::string& a_message)
        : std::runtime_error(a_message), m_place(a_place)
    {}
    std::size_t GetPlace() const { return m_place; }

private:
    std::size_t m_place;
};

bool IsLetter(char a_character)
{
    return (a_character >= 'a' && a_character <= 'z') || (a_character >= 'A' && a_character <= 'Z');
}

// A key that is written as an element's name. Names that begin with "xml" belong to the standard.
bool IsPlainKey(std::string_view a_key)
{
    if (a_key.empty() || a_key == S_unnamedElement || a_key == S_escapedKeyElement)
        return false;
    if (!IsLetter(a_key.front()) && a_key.front() != '_')
        return false;
    const auto lower = [](char a_character) {
        return static_cast<char>(static_cast<unsigned char>(a_character) | 0x20U);
    };
    if (a_key.size() >= 3 && lower(a_key[0]) == 'x' && lower(a_key[1]) == 'm' && lower(a_key[2]) == 'l')
        return false;
    return std::all_of(a_key.begin(), a_key.end(), [](char a_character) {
        return IsLetter(a_character) || (a_character >= '0' && a_character <= '9') || a_character == '_' ||
               a_character == '-' || a_character == '.';
    });
}

// --- Writing

pugi::xml_node AppendElement(pugi::xml_node a_parent, std::string_view a_key, bool a_asciiOnly)
{
    if (IsPlainKey(a_key))
        return a_parent.append_child(std::string(a_key).c_str());
    pugi::xml_node element = a_parent.append_child(S_escapedKeyElement);
    const std::wstring key = TextEscapes::Escape(CodePage::Cp1250ToWide(a_key), a_asciiOnly);
    element.append_attribute(S_keyAttribute) = CodePage::WideToUtf8(key).c_str();
    return element;
}

void WriteValue(pugi::xml_node a_element, const std::wstring& a_value, bool a_hasChildren, bool a_asciiOnly)
{
    if (a_value.empty())
        return;
    const bool escaped = TextEscapes::Needed(a_value, a_asciiOnly);
    if (escaped)
        a_element.append_attribute(S_escapedAttribute) = true;
    const std::string text =
        CodePage::WideToUtf8(escaped ? TextEscapes::Escape(a_value, a_asciiOnly) : a_value);
    // Text among child elements would be torn apart by the indentation.
    if (a_hasChildren)
        a_element.append_attribute(S_valueAttribute) = text.c_str();
    else
        a_element.append_child(pugi::node_pcdata).set_value(text.c_str());
}

class StringWriter : public pugi::xml_writer {
public:
    void write(const void* a_data, std::size_t a_size) override
    {
        m_text.append(static_cast<const char*>(a_data), a_size);
    }
    std::string&& Take() { return std::move(m_text); }

private:
    std::string m_text;
};

// --- Reading

// The characters of XML 1.0, production 2.
bool IsXmlCharacter(std::uint32_t a_code)
{
    return a_code == 0x9 || a_code == 0xA || a_code == 0xD || (a_code >= 0x20 && a_code <= 0xD7FF) ||
           (a_code >= 0xE000 && a_code <= 0xFFFD) || (a_code >= 0x10000 && a_code <= 0x10FFFF);
}

// A reference like "&#10;" or "&#xA;" must name a character that XML has: the parser would cut the text at a zero.
void CheckReference(std::string_view a_text, std::size_t a_place)
{
    std::string_view digits = a_text.substr(a_place + 2, 16);
    const int base = digits.starts_with('x') ? 16 : 10;
    if (base == 16)
        digits.remove_prefix(1);
    std::uint32_t code = 0;
    const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, base);
    if (error != std::errc() || stop == digits.data() + digits.size() || *stop != ';' ||
        !IsXmlCharacter(code))
        throw FormError(a_place, "odwołanie do znaku, którego nie ma w XML"_cp1250);
}

// What the parser doesn't check, and what would let a small file take much memory.
void CheckBytes(std::string_view a_text)
{
    if (a_text.size() > SettingsForm::S_mostBytes)
        throw FormError(0, "tekst dłuższy niż 64 MiB"_cp1250);
    if (const std::size_t place = CodePage::FindMalformedUtf8(a_text); place < a_text.size())
        throw FormError(place, "bajt spoza UTF-8"_cp1250);
    std::size_t elements = 0;
    for (std::size_t place = 0; place < a_text.size(); ++place) {
        const char character = a_text[place];
        if (!IsXmlCharacter(static_cast<unsigned char>(character)))
            throw FormError(place, "znak sterujący, którego nie ma w XML"_cp1250);
        const char next = place + 1 < a_text.size() ? a_text[place + 1] : '\0';
        if (character == '&' && next == '#')
            CheckReference(a_text, place);
        // Comments and the like are counted with them: they take as much memory.
        if (character == '<' && next != '/' && ++elements > SettingsForm::S_mostNodes)
            throw FormError(place, "więcej niż 2000000 elementów"_cp1250);
    }
}

const char* DescribeStatus(pugi::xml_parse_status a_status)
{
    constexpr std::pair<pugi::xml_parse_status, const char*> texts[] = {
        {pugi::status_end_element_mismatch, "znacznik zamykający nie pasuje do otwierającego"_cp1250},
        {pugi::status_bad_start_element, "błędny znacznik otwierający"_cp1250},
        {pugi::status_bad_end_element, "błędny znacznik zamykający"_cp1250},
        {pugi::status_bad_attribute, "błędny atrybut"_cp1250},
        {pugi::status_bad_pcdata, "błędny tekst"_cp1250},
        {pugi::status_bad_cdata, "niezamknięta sekcja CDATA"_cp1250},
        {pugi::status_bad_comment, "niezamknięty komentarz"_cp1250},
        {pugi::status_bad_pi, "błędna instrukcja przetwarzania"_cp1250},
        {pugi::status_bad_doctype, "błędna deklaracja DOCTYPE"_cp1250},
        {pugi::status_out_of_memory, "za mało pamięci"_cp1250}};
    for (const auto& [status, text] : texts)
        if (status == a_status)
            return text;
    return "błędny znacznik"_cp1250;
}

std::size_t PlaceOf(pugi::xml_node a_node)
{
    return static_cast<std::size_t>(std::max<std::ptrdiff_t>(a_node.offset_debug(), 0));
}

bool IsElement(pugi::xml_node a_node)
{
    return a_node.type() == pugi::node_element;
}

std::wstring Unescape(pugi::xml_node a_element, std::string_view a_text)
{
    auto text = TextEscapes::Unescape(CodePage::Utf8ToWide(a_text));
    if (!text)
        throw FormError(PlaceOf(a_element), R"(po \ dozwolone są: \ n r t s x{liczba szesnastkowa})"_cp1250);
    return *std::move(text);
}

struct Attributes {
    std::optional<std::string_view> key;
    std::optional<std::string_view> value;
    std::int32_t version = 0;
    bool escaped = false;
};

Attributes ReadAttributes(pugi::xml_node a_element)
{
    const std::size_t place = PlaceOf(a_element);
    Attributes attributes;
    std::vector<std::string_view> seen;
    for (const pugi::xml_attribute& attribute : a_element.attributes()) {
        const std::string_view name = attribute.name();
        const std::string_view text = attribute.value();
        if (std::find(seen.begin(), seen.end(), name) != seen.end())
            throw FormError(place, "powtórzony atrybut"_cp1250);
        if (name == S_keyAttribute) {
            attributes.key = text;
        } else if (name == S_valueAttribute) {
            attributes.value = text;
        } else if (name == S_versionAttribute) {
            const char* const end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, attributes.version);
            if (error != std::errc() || stop != end)
                throw FormError(place, "atrybut version nie jest liczbą 32-bitową"_cp1250);
        } else if (name == S_escapedAttribute) {
            attributes.escaped = text == "true";
            if (!attributes.escaped && text != "false")
                throw FormError(place, "atrybut escaped musi być true albo false"_cp1250);
        } else {
            throw FormError(place, "nieznany atrybut; dozwolone: key, value, version, escaped"_cp1250);
        }
        seen.push_back(name);
    }
    return attributes;
}

// Text and CDATA of an element without the blanks and line ends at both ends, which belong to the layout.
std::string ReadText(pugi::xml_node a_element)
{
    std::string text;
    for (const pugi::xml_node& part : a_element.children()) {
        if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata)
            text += part.value();
    }
    constexpr const char* blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

std::string NarrowKey(pugi::xml_node a_element, const std::wstring& a_key)
{
    if (!CodePage::FitsCp1250(a_key))
        throw FormError(PlaceOf(a_element), "nazwa zawiera znak spoza CP1250"_cp1250);
    return CodePage::WideToCp1250(a_key);
}

// Empty for an element without a key.
std::optional<std::string> ReadKey(pugi::xml_node a_element, const Attributes& a_attributes)
{
    const std::string_view name = a_element.name();
    const bool written = name == S_escapedKeyElement;
    if (written != a_attributes.key.has_value())
        throw FormError(PlaceOf(a_element), "atrybut key musi stać w elemencie var i tylko w nim"_cp1250);
    if (written)
        return NarrowKey(a_element, Unescape(a_element, *a_attributes.key));
    if (name == S_unnamedElement)
        return std::nullopt;
    return NarrowKey(a_element, CodePage::Utf8ToWide(name));
}

void ReadValue(pugi::xml_node a_element, const Attributes& a_attributes, Settings& a_node)
{
    std::string text = ReadText(a_element);
    const bool hasChildren = std::any_of(a_element.begin(), a_element.end(),
                                         [](const pugi::xml_node& a_part) { return IsElement(a_part); });
    if (!text.empty() && (hasChildren || a_attributes.value))
        throw FormError(PlaceOf(a_element),
                        "tekst obok elementów albo atrybutu value; wartość ma stać w atrybucie value"_cp1250);
    if (a_attributes.value)
        text = *a_attributes.value;
    if (text.empty())
        return;
    std::wstring value = a_attributes.escaped ? Unescape(a_element, text) : CodePage::Utf8ToWide(text);
    // The text reads the same as narrow or wide; narrow takes a quarter of the memory.
    if (CodePage::FitsCp1250(value))
        a_node = CodePage::WideToCp1250(value);
    else
        a_node = std::move(value);
}

pugi::xml_node FindRoot(const pugi::xml_document& a_document, std::string_view a_rootName)
{
    pugi::xml_node root;
    for (const pugi::xml_node& part : a_document.children()) {
        if (!IsElement(part))
            throw FormError(PlaceOf(part), "tekst poza elementem głównym"_cp1250);
        if (root)
            throw FormError(PlaceOf(part), "drugi element główny"_cp1250);
        root = part;
    }
    if (!root)
        throw FormError(0, "brak elementu głównego"_cp1250);
    const auto key = ReadKey(root, ReadAttributes(root));
    if (key != a_rootName)
        throw FormError(PlaceOf(root),
                        fmt::format(fmt::runtime("element główny nie nazywa się \"{}\""_cp1250), a_rootName));
    return root;
}

void ReadTree(pugi::xml_node a_root, Settings& a_tree)
{
    struct Pair {
        pugi::xml_node element;
        Settings* node;
        std::size_t level;
    };
    std::vector<Pair> open{{a_root, &a_tree, 1}};
    while (!open.empty()) {
        const auto [element, node, level] = open.back();
        open.pop_back();
        if (level > SettingsForm::S_mostLevels)
            throw FormError(PlaceOf(element), "więcej niż 1000 poziomów"_cp1250);
        const Attributes attributes = ReadAttributes(element);
        node->m_version = attributes.version;
        ReadValue(element, attributes, *node);

        std::vector<pugi::xml_node> unnamed;
        for (const pugi::xml_node& child : element.children()) {
            if (!IsElement(child))
                continue;
            const auto key = ReadKey(child, ReadAttributes(child));
            if (!key) {
                unnamed.push_back(child);
                continue;
            }
            if (std::as_const(*node)[*key].Exists())
                throw FormError(PlaceOf(child), "powtórzona nazwa w jednym elemencie"_cp1250);
            open.push_back({child, &(*node)[*key], level + 1});
        }
        // Only now, when no later child moves them.
        for (std::size_t place = 0; place < unnamed.size(); ++place)
            node->AddUnnamed();
        for (std::size_t place = 0; place < unnamed.size(); ++place)
            open.push_back({unnamed[place], &SettingsForm::UnnamedOf(*node, place), level + 1});
    }
}

std::string DescribePlace(std::string_view a_text, std::size_t a_place)
{
    const std::string_view before = a_text.substr(0, a_place);
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::string_view inLine = before.substr(before.rfind('\n') + 1);
    const auto column =
        std::count_if(inLine.begin(), inLine.end(),
                      [](char a_byte) { return (static_cast<unsigned char>(a_byte) & 0xC0U) != 0x80; }) +
        1;
    return fmt::format("wiersz {}, kolumna {}", line, column);
}

} // namespace

Settings& SettingsForm::UnnamedOf(Settings& a_node, std::size_t a_place)
{
    return a_node.m_children->unnamed[a_place];
}

SettingsForm::Written SettingsForm::Write(const Settings& a_tree, std::string_view a_rootName,
                                          ELayout a_layout)
{
    struct Pair {
        const Settings* node;
        pugi::xml_node element;
        std::size_t level;
    };
    const bool asciiOnly = a_layout == ELayoutAsciiLine;
    pugi::xml_document document;
    std::size_t nodes = 1;
    std::vector<Pair> open{{&a_tree, AppendElement(document, a_rootName, asciiOnly), 1}};
    while (!open.empty()) {
        const auto [node, element, level] = open.back();
        open.pop_back();
        if (level > S_mostLevels)
            return {{}, "więcej niż 1000 poziomów"_cp1250};
        const Settings::Children* const children = node->m_children.get();
        const std::size_t count = children != nullptr ? children->named.size() + children->unnamed.size() : 0;
        nodes += count;
        if (nodes > S_mostNodes)
            return {{}, "więcej niż 2000000 elementów"_cp1250};

        pugi::xml_node target = element;
        if (node->m_version != 0)
            target.append_attribute(S_versionAttribute) = node->m_version;
        WriteValue(target, *node, count != 0, asciiOnly);
        if (count == 0)
            continue;
        for (const auto& child : children->named)
            open.push_back({&child->node, AppendElement(target, child->key, asciiOnly), level + 1});
        for (const Settings& child : children->unnamed)
            open.push_back({&child, target.append_child(S_unnamedElement), level + 1});
    }

    StringWriter writer;
    if (a_layout == ELayoutFile) {
        pugi::xml_node declaration = document.prepend_child(pugi::node_declaration);
        declaration.append_attribute("version") = "1.0";
        declaration.append_attribute("encoding") = "UTF-8";
        document.save(writer, "    ", pugi::format_indent, pugi::encoding_utf8);
    } else {
        document.save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    }
    std::string text = writer.Take();
    if (text.size() > S_mostBytes)
        return {{}, "tekst dłuższy niż 64 MiB"_cp1250};
    return {std::move(text), {}};
}

std::string SettingsForm::Read(std::string_view a_text, std::string_view a_rootName, Settings& a_tree)
{
    if (a_text.starts_with(S_byteOrderMark))
        a_text.remove_prefix(S_byteOrderMark.size());
    try {
        CheckBytes(a_text);
        pugi::xml_document document;
        const pugi::xml_parse_result result = document.load_buffer(a_text.data(), a_text.size(),
                                                                   pugi::parse_fragment | pugi::parse_cdata |
                                                                       pugi::parse_escapes | pugi::parse_eol,
                                                                   pugi::encoding_utf8);
        if (!result)
            throw FormError(static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)),
                            DescribeStatus(result.status));
        ReadTree(FindRoot(document, a_rootName), a_tree);
        return {};
    } catch (const FormError& error) {
        return fmt::format("{}: {}", DescribePlace(a_text, std::min(error.GetPlace(), a_text.size())),
                           error.what());
    }
}

} // namespace kalvento::internal
