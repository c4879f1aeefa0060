#include "settings/Settings.h"

#include "platform/CodePage.h"
#include "settings/SettingsChildren.h"
#include "settings/ValueText.h"
#include "velo/String.h"

#include <cmath>
#include <utility>

namespace ValueText = kalvento::internal::ValueText;

namespace {

// From this many keys on, a walk over them costs more than a search tree.
constexpr std::size_t S_indexFrom = 16;

template<class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
template<class... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

} // namespace

Settings* Settings::Children::Find(std::string_view a_key) const
{
    if (!index.empty()) {
        const auto found = index.find(a_key);
        return found != index.end() ? found->second : nullptr;
    }
    for (const auto& child : named) {
        if (child->key == a_key)
            return &child->node;
    }
    return nullptr;
}

Settings& Settings::Children::Add(std::string_view a_key)
{
    auto added = std::make_unique<Named>();
    added->key = a_key;
    Named& child = *added;
    named.reserve(named.size() + 1 > named.capacity() ? 2 * named.size() + 1 : 0);
    if (!index.empty()) {
        index.emplace(child.key, &child.node);
    } else if (named.size() + 1 == S_indexFrom) {
        std::map<std::string_view, Settings*> all;
        for (const auto& present : named)
            all.emplace(present->key, &present->node);
        all.emplace(child.key, &child.node);
        index.swap(all);
    }
    named.push_back(std::move(added)); // cannot fail, the room is there: index and list never differ
    return child.node;
}

Settings::Settings() noexcept = default;

Settings::Settings(AbsentTag) noexcept : m_exists(false) {}

Settings::Settings(const Settings& a_other) : Settings()
{
    struct Pair {
        const Settings* from;
        Settings* to;
    };
    const auto copyNode = [](const Settings& a_from, Settings& a_to) {
        a_to.m_version = a_from.m_version;
        a_to.m_value = a_from.m_value;
    };

    copyNode(a_other, *this);
    std::vector<Pair> open{{&a_other, this}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        if (!from->m_children)
            continue;
        Children& children = to->MakeChildren();
        for (const auto& child : from->m_children->named) {
            Settings& added = children.Add(child->key);
            copyNode(child->node, added);
            open.push_back({&child->node, &added});
        }
        children.unnamed.resize(from->m_children->unnamed.size());
        for (std::size_t place = 0; place < children.unnamed.size(); ++place) {
            copyNode(from->m_children->unnamed[place], children.unnamed[place]);
            open.push_back({&from->m_children->unnamed[place], &children.unnamed[place]});
        }
    }
}

Settings::Settings(Settings&& a_other) noexcept : Settings()
{
    swap(a_other);
}

Settings::~Settings()
{
    // One block of children after another, each freed of its grandchildren first: a tree may be deeper than the stack.
    // Takes no memory, since it must not fail.
    Children* open = m_children.release();
    while (open != nullptr) {
        const std::unique_ptr<Children> current(open);
        open = current->nextToDestroy;
        const auto setAside = [&open](Settings& a_child) {
            if (Children* const children = a_child.m_children.release()) {
                children->nextToDestroy = open;
                open = children;
            }
        };
        for (const auto& child : current->named)
            setAside(child->node);
        for (Settings& child : current->unnamed)
            setAside(child);
    }
}

Settings& Settings::operator=(const Settings& a_other)
{
    if (this != &a_other) {
        Settings copy(a_other);
        swap(copy);
    }
    return *this;
}

Settings& Settings::operator=(Settings&& a_other) noexcept
{
    // Through a third node: the other may be a descendant, which dies with what this one held.
    Settings taken(std::move(a_other));
    swap(taken);
    return *this;
}

void Settings::swap(Settings& a_other) noexcept
{
    std::swap(m_version, a_other.m_version);
    m_value.swap(a_other.m_value);
    m_narrow.swap(a_other.m_narrow);
    m_children.swap(a_other.m_children);
}

Settings::Children& Settings::MakeChildren()
{
    if (!m_children)
        m_children = std::make_unique<Children>();
    return *m_children;
}

Settings& Settings::operator[](std::string_view a_key)
{
    Children& children = MakeChildren();
    Settings* const found = children.Find(a_key);
    return found != nullptr ? *found : children.Add(a_key);
}

const Settings& Settings::operator[](std::string_view a_key) const
{
    // Never destroyed: static objects may still read their settings while they die.
    static const Settings* const absent = new Settings(AbsentTag());
    const Settings* const found = m_children ? m_children->Find(a_key) : nullptr;
    return found != nullptr ? *found : *absent;
}

Settings& Settings::Assign(Value a_value) noexcept
{
    m_value = std::move(a_value);
    m_narrow.reset();
    return *this;
}

// Where the kind of the value allows it, the reads below take a shortcut, with the same result as through the text.

std::int64_t Settings::ReadSigned(std::int64_t a_lowest, std::int64_t a_highest) const
{
    const auto inBounds = [&](auto a_number) {
        const bool fits =
            std::cmp_greater_equal(a_number, a_lowest) && std::cmp_less_equal(a_number, a_highest);
        return fits ? static_cast<std::int64_t>(a_number) : 0;
    };
    if (const auto* const number = std::get_if<std::int64_t>(&m_value))
        return inBounds(*number);
    if (const auto* const number = std::get_if<std::uint64_t>(&m_value))
        return inBounds(*number);
    if (const auto* const number = std::get_if<double>(&m_value))
        return ValueText::ToSigned(*number, a_lowest, a_highest);
    return ValueText::ReadSigned(NarrowText(), a_lowest, a_highest);
}

std::uint64_t Settings::ReadUnsigned(std::uint64_t a_highest) const
{
    const auto inBounds = [&](auto a_number) {
        const bool fits = std::cmp_greater_equal(a_number, 0) && std::cmp_less_equal(a_number, a_highest);
        return fits ? static_cast<std::uint64_t>(a_number) : 0;
    };
    if (const auto* const number = std::get_if<std::int64_t>(&m_value))
        return inBounds(*number);
    if (const auto* const number = std::get_if<std::uint64_t>(&m_value))
        return inBounds(*number);
    if (const auto* const number = std::get_if<double>(&m_value))
        return ValueText::ToUnsigned(*number, a_highest);
    return ValueText::ReadUnsigned(NarrowText(), a_highest);
}

double Settings::ReadDouble() const
{
    if (const auto* const number = std::get_if<double>(&m_value))
        return *number;
    if (const auto* const number = std::get_if<std::int64_t>(&m_value))
        return static_cast<double>(*number);
    if (const auto* const number = std::get_if<std::uint64_t>(&m_value))
        return static_cast<double>(*number);
    return ValueText::ReadDouble(NarrowText());
}

bool Settings::ReadBool() const
{
    if (const auto* const flag = std::get_if<bool>(&m_value))
        return *flag;
    const double number = ReadDouble();
    return number != 0.0 && !std::isnan(number);
}

Settings::operator CRect() const
{
    const auto* const rect = std::get_if<CRect>(&m_value);
    return rect != nullptr ? *rect : ValueText::ReadRect(NarrowText());
}

Settings::operator CSize() const
{
    const auto* const size = std::get_if<CSize>(&m_value);
    return size != nullptr ? *size : ValueText::ReadSize(NarrowText());
}

Settings::operator std::wstring() const
{
    if (const auto* const text = std::get_if<std::wstring>(&m_value))
        return *text;
    return CodePage::Cp1250ToWide(NarrowText());
}

Settings::operator const std::string&() const&
{
    return NarrowText();
}

const std::string& Settings::NarrowText() const
{
    if (const auto* const text = std::get_if<std::string>(&m_value))
        return *text;
    // The absent node ends here, untouched: it is read by all threads at once.
    if (std::holds_alternative<std::monostate>(m_value))
        return VeloTools::String::EmptyString();
    if (!m_narrow) {
        m_narrow = std::make_unique<std::string>(
            std::visit(Overloaded{
                           [](std::monostate) { return std::string(); },
                           [](const std::string& a_text) { return a_text; },
                           [](const std::wstring& a_text) { return CodePage::WideToCp1250(a_text); },
                           [](const auto& a_value) { return ValueText::Of(a_value); },
                       },
                       m_value));
    }
    return *m_narrow;
}

Settings& Settings::AddUnnamed()
{
    return MakeChildren().unnamed.emplace_back();
}

std::size_t Settings::GetUnnamedVariablesCount() const noexcept
{
    return m_children ? m_children->unnamed.size() : 0;
}

Settings::const_iterator Settings::begin_unnamed() const noexcept
{
    return m_children ? m_children->unnamed.begin() : const_iterator();
}

Settings::const_iterator Settings::end_unnamed() const noexcept
{
    return m_children ? m_children->unnamed.end() : const_iterator();
}
