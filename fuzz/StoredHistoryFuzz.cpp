// The history that a provider of files keeps beside the index of it: whatever both say, the rows are those promised, or
// they are read from the text again. Input: the index as text, a line "----", and the bytes of its first part.
#include "file_provider/Fingerprint.h"
#include "file_provider/RowCache.h"
#include "platform/WidePath.h"
#include "settings/Settings.h"
#include "velo/Log.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>
#include <string_view>

using namespace kalvento::files;

namespace {

constexpr std::string_view S_border = "\n----\n";

void Write(const std::filesystem::path& a_path, std::string_view a_bytes)
{
    std::ofstream(a_path, std::ios::binary)
        .write(a_bytes.data(), static_cast<std::streamsize>(a_bytes.size()));
}

const std::filesystem::path& Folder()
{
    static const std::filesystem::path folder = [] {
        auto made = std::filesystem::temp_directory_path() / ("kalvento-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(made / "cache");
        Write(made / "a.csv", "time,price,volume\n2024-01-02 09:00:00,1.5,1\n2024-01-02 09:00:01,1.25,2\n");
        VeloTools::Log::Instance().SetLogFolder(made);
        return made;
    }();
    return folder;
}

// An index that the checksums allow, so that what it claims is looked at.
void WriteIndex(std::string_view a_text, std::string_view a_part, const SourceFile& a_source)
{
    Settings content;
    content.ConvertFromString(a_text);
    content["Source"] = WidePath::ToWide(a_source.path);
    content["Size"] = a_source.stamp.size;
    content["Modified"] = a_source.stamp.modified;
    const Settings& symbols = std::as_const(content)["Symbols"];
    if (symbols.begin_unnamed() != symbols.end_unnamed()) {
        Settings first = *symbols.begin_unnamed();
        Settings part;
        const Settings& parts = std::as_const(first)["Parts"];
        if (parts.begin_unnamed() != parts.end_unnamed())
            part = *parts.begin_unnamed();
        part["Bytes"] = static_cast<std::uint64_t>(a_part.size());
        part["Checksum"] = Fingerprint::Of(a_part);
        first["Parts"] = Settings();
        first["Parts"].AddUnnamed() = part;
        content["Symbols"] = Settings();
        content["Symbols"].AddUnnamed() = first;
    }
    Settings file;
    file["Content"] = content;
    file["Checksum"] = Fingerprint::Of(content.ConvertToString());
    file.SaveToFile(WidePath::ToWide(Folder() / "cache" / "Index.xml"), "RowIndex");
    Write(Folder() / "cache" / "Rows-1-0-0.block", a_part);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(a_data), a_size);
    const std::size_t border = bytes.find(S_border);
    SourceFile source;
    source.path = Folder() / "a.csv";
    source.stamp = StampOf(source.path).value();
    source.name = "a";
    WriteIndex(bytes.substr(0, border),
               border == std::string_view::npos ? std::string_view() : bytes.substr(border + S_border.size()),
               source);

    RowCache cache(source, Folder() / "cache", std::make_shared<CacheHost>());
    if (!cache.Load())
        return 0;
    const auto contents = cache.GetContents();
    for (std::size_t symbol = 0; symbol < contents->symbols.size(); ++symbol) {
        try {
            const std::uint64_t rows = contents->symbols[symbol].rows;
            const History read = cache.ReadRows(symbol, 0, rows);
            if (read.GetRecordsCount() > rows)
                std::abort();
            cache.FindRow(symbol, NDateTime(2024, 1, 2));
        } catch (const std::exception&) {
            // What was promised isn't there, nor in the text.
        }
    }
    return 0;
}
