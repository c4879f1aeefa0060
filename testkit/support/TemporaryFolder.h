#pragma once

#include "support/Testing.h"

/// A fresh folder that goes away with the object.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "kalvento-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("No temporary folder: " + name);
        m_path = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& GetPath() const { return m_path; }
    std::filesystem::path operator/(const std::filesystem::path& a_name) const { return m_path / a_name; }
    std::string Path(const std::string& a_name) const { return (m_path / a_name).string(); }
    std::string Write(const std::string& a_name, const std::string& a_bytes) const
    {
        std::ofstream(Path(a_name), std::ios::binary) << a_bytes;
        return Path(a_name);
    }
    void Append(const std::string& a_name, const std::string& a_bytes) const
    {
        std::ofstream(Path(a_name), std::ios::binary | std::ios::app) << a_bytes;
    }
    std::string Read(const std::string& a_name) const { return ReadFile(Path(a_name)); }
    static std::string ReadFile(const std::string& a_path)
    {
        std::ifstream file(a_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    std::size_t CountFiles() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_path), {}));
    }

private:
    std::filesystem::path m_path;
};
