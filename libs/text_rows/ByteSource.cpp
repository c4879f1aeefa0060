#include "text_rows/ByteSource.h"

#include "text_rows/ToolContext.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <istream>
#include <sys/stat.h>
#include <unistd.h>

namespace kalvento::tool {

namespace {

class FileSource final : public ByteSource {
public:
    FileSource(std::string a_path, int a_file, std::uint64_t a_size)
        : ByteSource(std::move(a_path), a_size), m_file(a_file)
    {}
    ~FileSource() override { close(m_file); }
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    std::size_t Read(char* a_bytes, std::size_t a_size) override
    {
        for (;;) {
            const ssize_t count = read(m_file, a_bytes, a_size);
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR)
                throw ToolError(EExitNoInput, GetName() + ": can't be read: " + std::strerror(errno));
        }
    }

private:
    int m_file;
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
            throw ToolError(EExitNoInput, GetName() + ": can't be read");
        return static_cast<std::size_t>(m_stream.gcount());
    }

private:
    std::istream& m_stream;
};

} // namespace

std::unique_ptr<ByteSource> ByteSource::Open(const std::string& a_path, ToolContext& a_context)
{
    if (a_path == "-")
        return FromStream(a_context.in, "standard input");

    const int file = open(a_path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        throw ToolError(EExitNoInput, a_path + ": can't be opened: " + std::strerror(errno));
    struct stat status {};
    const bool known = fstat(file, &status) == 0;
    if (known && S_ISDIR(status.st_mode)) {
        close(file);
        throw ToolError(EExitNoInput, a_path + ": is a folder; give the files in it");
    }
    const bool regular = known && S_ISREG(status.st_mode);
    if (regular)
        posix_fadvise(file, 0, 0, POSIX_FADV_SEQUENTIAL);
    return std::make_unique<FileSource>(a_path, file,
                                        regular ? static_cast<std::uint64_t>(status.st_size) : 0);
}

std::unique_ptr<ByteSource> ByteSource::FromStream(std::istream& a_stream, std::string a_name)
{
    return std::make_unique<StreamSource>(std::move(a_name), a_stream);
}

} // namespace kalvento::tool
