#pragma once

#include "platform/CRect.h"
#include "platform/CSize.h"
#include "platform/Export.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace kalvento::internal {

class SettingsForm;

/// What a node gives and takes as a number. The character types are left out: otherwise std::string could be assigned
/// from one character as well as from a text, and `text = node["Key"]` would not compile.
template<class Type>
concept SettingsNumber =
    std::is_arithmetic_v<Type> && std::same_as<Type, std::remove_cv_t<Type>> && !std::same_as<Type, bool> &&
    !std::same_as<Type, char> && !std::same_as<Type, wchar_t> && !std::same_as<Type, char8_t> &&
    !std::same_as<Type, char16_t> && !std::same_as<Type, char32_t>;

} // namespace kalvento::internal

/// One node of a tree of variables, through which everything is stored: a value of its own, children reached by key,
/// and a list of children without keys. A node owns all of that; copies are deep and independent.
///
/// A value may be read as any type. Every value has one text (a number in decimal, the shortest that reads back to the
/// same bits; "true" and "false"; "left,top,right,bottom"; "width,height"; a narrow text is CP1250), and reading as
/// another type reads that text. So a tree gives the same answers before it is stored and after. What cannot be read as
/// the type asked for gives zero, false or an empty text, and so does a node without a value:
///  - a whole number out of the range asked for is zero, never wrapped or cut;
///  - a fraction read as a whole number loses what follows the point;
///  - "true" and "false" read as 1 and 0; a number is true unless it is zero or NaN.
///
/// A tree is used by one thread at a time, readers included: reading a value as narrow text may keep that text in the
/// node. The absent node alone is safe from any thread.
class KALVENTO_API Settings {
public:
    using const_iterator = std::vector<Settings>::const_iterator;

    /// An empty node, which exists.
    Settings() noexcept;
    /// Depth costs no stack, here and in the assignments. A copy of the absent node is an empty node, which exists.
    Settings(const Settings& a_other);
    /// References to children stay valid and now belong to the new node; the old one is left empty.
    Settings(Settings&& a_other) noexcept;
    ~Settings();

    /// Children and version are taken over too. A node may be given one of its own descendants.
    Settings& operator=(const Settings& a_other);
    Settings& operator=(Settings&& a_other) noexcept;
    void swap(Settings& a_other) noexcept;
    friend void swap(Settings& a_left, Settings& a_right) noexcept { a_left.swap(a_right); }

    /// The child of that key, created empty if there is none. A key is any run of bytes, compared byte by byte. The
    /// reference is valid until this node is assigned, moved into, loaded or destroyed; further keys don't invalidate
    /// it.
    Settings& operator[](std::string_view a_key);
    /// The child of that key, or the absent node, which is one for the process.
    const Settings& operator[](std::string_view a_key) const;
    // For literals as keys: a node also converts to numbers, and node["Key"] would read as well as number["Key"].
    Settings& operator[](const char* a_key) { return (*this)[std::string_view(a_key)]; }
    const Settings& operator[](const char* a_key) const { return (*this)[std::string_view(a_key)]; }

    /// False only on the absent node.
    bool Exists() const noexcept { return m_exists; }

    /// Stores a value; children and version stay.
    Settings& operator=(int a_value) { return Assign(std::int64_t{a_value}); }
    Settings& operator=(unsigned int a_value) { return Assign(std::uint64_t{a_value}); }
    Settings& operator=(long a_value) { return Assign(std::int64_t{a_value}); }
    Settings& operator=(unsigned long a_value) { return Assign(std::uint64_t{a_value}); }
    Settings& operator=(long long a_value) { return Assign(std::int64_t{a_value}); }
    Settings& operator=(unsigned long long a_value) { return Assign(std::uint64_t{a_value}); }
    /// Kept bit for bit, the kind of a NaN included.
    Settings& operator=(double a_value) { return Assign(a_value); }
    /// Takes a bool and nothing that merely converts to one: a pointer would be true.
    template<std::same_as<bool> Bool>
    Settings& operator=(Bool a_value)
    {
        return Assign(a_value);
    }
    /// Any bytes, zero bytes included; read as wide text they are CP1250.
    Settings& operator=(std::string_view a_value) { return Assign(std::string(a_value)); }
    Settings& operator=(const std::string& a_value) { return Assign(a_value); }
    Settings& operator=(std::string&& a_value) { return Assign(std::move(a_value)); }
    /// A null pointer is an empty text.
    Settings& operator=(const char* a_value)
    {
        return Assign(std::string(a_value != nullptr ? a_value : ""));
    }
    /// Any wide characters, zeros and lone surrogates included.
    Settings& operator=(std::wstring_view a_value) { return Assign(std::wstring(a_value)); }
    Settings& operator=(const std::wstring& a_value) { return Assign(a_value); }
    Settings& operator=(std::wstring&& a_value) { return Assign(std::move(a_value)); }
    Settings& operator=(const wchar_t* a_value)
    {
        return Assign(std::wstring(a_value != nullptr ? a_value : L""));
    }
    Settings& operator=(const CRect& a_value) { return Assign(a_value); }
    Settings& operator=(const CSize& a_value) { return Assign(a_value); }

    /// Every number type, exactly as asked for: none is reached by converting another.
    template<kalvento::internal::SettingsNumber Number>
    operator Number() const // NOLINT(google-explicit-constructor): the callers convert by assignment.
    {
        if constexpr (std::is_floating_point_v<Number>)
            return static_cast<Number>(ReadDouble());
        else if constexpr (std::is_signed_v<Number>)
            return static_cast<Number>(
                ReadSigned(std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()));
        else
            return static_cast<Number>(ReadUnsigned(std::numeric_limits<Number>::max()));
    }
    template<std::same_as<bool> Bool>
    operator Bool() const // NOLINT(google-explicit-constructor)
    {
        return ReadBool();
    }
    operator CRect() const;        // NOLINT(google-explicit-constructor)
    operator CSize() const;        // NOLINT(google-explicit-constructor)
    operator std::wstring() const; // NOLINT(google-explicit-constructor)
    /// The narrow text, valid until this node is assigned, loaded or destroyed. What CP1250 lacks becomes '?'.
    operator const std::string&() const&; // NOLINT(google-explicit-constructor)
    operator const std::string&() const&& = delete;

    /// Appends an empty child without a key. The reference is valid until the next AddUnnamed on this node; what is
    /// below the child keeps its place even then.
    Settings& AddUnnamed();
    std::size_t GetUnnamedVariablesCount() const noexcept;
    /// The children without keys, in the order in which they were added. Random access, contiguous.
    const_iterator begin_unnamed() const noexcept;
    const_iterator end_unnamed() const noexcept;

    /// The whole subtree as one line of ASCII, empty (with a line in the log) where a limit is passed: more than 1000
    /// levels, 2000000 nodes or 64 MiB.
    std::string ConvertToString() const;
    /// Replaces this tree by that of such a text. False, with a line in the log and this node unchanged, where the text
    /// cannot be read.
    bool ConvertFromString(std::string_view a_text);

    /// Replaces this tree by that of an XML file. False, with this node unchanged, where there is no such file, it
    /// cannot be read, or its document element has another name; except for a missing file the log says why, with line
    /// and column.
    bool LoadFromFile(std::wstring_view a_path, std::string_view a_rootName);
    /// The same from the bytes of such a file, which the log calls a_name. Gives what is wrong (CP1250, with line and
    /// column), which the log tells as well; empty where the tree was taken.
    std::string LoadFromBytes(std::string_view a_bytes, std::string_view a_name, std::string_view a_rootName);
    /// Writes the tree into an XML file. Whatever happens, the file is the old one or the new one, whole; true means
    /// that the new one is on the disk. False, with a line in the log, where it cannot be written or passes a limit
    /// (those of ConvertToString).
    bool SaveToFile(std::wstring_view a_path, std::string_view a_rootName) const;
    /// The bytes that SaveToFile writes; empty, with a line in the log, where the tree passes a limit.
    std::string SaveToBytes(std::string_view a_rootName) const;

    /// The version of the node's contents; travels with the node through copies, files and text.
    std::int32_t m_version = 0;

private:
    friend class kalvento::internal::SettingsForm;
    struct Children;
    struct AbsentTag {};
    using Value = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string,
                               std::wstring, CRect, CSize>;

    explicit Settings(AbsentTag) noexcept;

    Settings& Assign(Value a_value) noexcept;
    std::int64_t ReadSigned(std::int64_t a_lowest, std::int64_t a_highest) const;
    std::uint64_t ReadUnsigned(std::uint64_t a_highest) const;
    double ReadDouble() const;
    bool ReadBool() const;
    const std::string& NarrowText() const;
    Children& MakeChildren();

    bool m_exists = true;
    Value m_value;
    mutable std::unique_ptr<std::string> m_narrow; // the value as narrow text, made when first asked for
    std::unique_ptr<Children> m_children;          // null where there are none
};
