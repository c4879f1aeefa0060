#pragma once

#include <cstdint>
#include <string_view>

namespace kalvento::files {

/// FNV-1a, 64 bits: tells damage and change, not malice. Source: RFC 9923, "The FNV Non-Cryptographic Hash Algorithm".
class Fingerprint {
public:
    static std::uint64_t Of(std::string_view a_bytes)
    {
        Fingerprint fingerprint;
        fingerprint.Add(a_bytes);
        return fingerprint.Get();
    }
    void Add(std::string_view a_bytes)
    {
        for (const char byte : a_bytes)
            m_value = (m_value ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    std::uint64_t Get() const { return m_value; }

private:
    std::uint64_t m_value = 0xcbf29ce484222325U;
};

} // namespace kalvento::files
