#include "text_rows/ByteSource.h"

#include "platform/InputFile.h"
#include "platform/Interruption.h"
#include "text_rows/RowsFault.h"

#include <istream>

namespace kalvento::rows {

namespace {

[[noreturn]] void Fail(const std::string& a_path, std::string a_found)
{
    throw RowsFault({.kind = EFaultNoInput, .found = std::move(a_found), .file = a_path});
}

[[noreturn]] void Fail(const std::string& a_path, const char* a_what, const std::error_code& a_error)
{
    if (a_error == std::errc::interrupted)
        internal::Interruption::Check();
    Fail(a_path, a_what + a_error.message());
}

class FileSource final : public ByteSource {
public:
    FileSource(std::string a_path, internal::InputFile a_file, std::uint64_t a_size)
        : ByteSource(std::move(a_path), a_size), m_file(std::move(a_file))
    {}

    std::size_t Read(char* a_bytes, std::size_t a_size) override
    {
        std::size_t count = 0;
        if (const std::error_code error = m_file.Read(a_bytes, a_size, count))
            Fail(GetName(), "can't be read: ", error);
        return count;
    }

private:
    internal::InputFile m_file;
};

class StreamSource final : public ByteSource {
public:
    StreamSource(std::string a_name, std::istream& a_stream)
        : ByteSource(std::move(a_name), 0), m_stream(a_stream)
    {}

    std::size_t Read(char* a_bytes, std::size_t a_size) override
    {
        m_stream.read(a_bytes, static_cast<std::streamsize>(a_size));
        if (m_stream.bad())
            Fail(GetName(), "can't be read");
        return static_cast<std::size_t>(m_stream.gcount());
    }

private:
    std::istream& m_stream;
};

} // namespace

std::unique_ptr<ByteSource> ByteSource::Open(const std::string& a_path)
{
    internal::InputFile file;
    if (const std::error_code error = file.Open(a_path))
        Fail(a_path, "can't be opened: ", error);
    internal::InputFile::State state;
    file.GetState(state); // what can't be measured may still be read
    if (state.isFolder)
        Fail(a_path, "is a folder; give the files in it");
    if (state.isRegular)
        file.ExpectAllToBeRead();
    return std::make_unique<FileSource>(a_path, std::move(file), state.size);
}

std::unique_ptr<ByteSource> ByteSource::OfProcessInput(std::string a_name)
{
    internal::InputFile file;
    if (const std::error_code error = file.OpenStandardInput())
        Fail(a_name, "can't be read: ", error);
    return std::make_unique<FileSource>(std::move(a_name), std::move(file), 0);
}

std::unique_ptr<ByteSource> ByteSource::FromStream(std::istream& a_stream, std::string a_name)
{
    return std::make_unique<StreamSource>(std::move(a_name), a_stream);
}

} // namespace kalvento::rows
