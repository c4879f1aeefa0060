#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

namespace kalvento::rows {

/// Bytes of one input, read forward in large pieces. One thread at a time.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    /// Reads up to a_size bytes and returns how many; 0 only at the end. Raises RowsFault (EFaultNoInput) on a failure,
    /// and Interrupted where a signal ends the wait.
    virtual std::size_t Read(char* a_bytes, std::size_t a_size) = 0;

    /// The name to show: a path, or "standard input".
    const std::string& GetName() const { return m_name; }
    /// Size in bytes where it is known beforehand, else 0.
    std::uint64_t GetSize() const { return m_size; }

    /// A file. Raises RowsFault (EFaultNoInput) when it can't be opened.
    static std::unique_ptr<ByteSource> Open(const std::string& a_path);
    /// The process's own input. Raises RowsFault (EFaultNoInput) when there is none.
    static std::unique_ptr<ByteSource> OfProcessInput(std::string a_name);
    /// Any stream, which must outlive the source.
    static std::unique_ptr<ByteSource> FromStream(std::istream& a_stream, std::string a_name);

protected:
    ByteSource(std::string a_name, std::uint64_t a_size) : m_name(std::move(a_name)), m_size(a_size) {}

private:
    std::string m_name;
    std::uint64_t m_size;
};

} // namespace kalvento::rows
