#include "alerts/AlertArgumentDescription.h"
#include "platform/CArchive.h"
#include "platform/CMemFile.h"
#include "velo/Log.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <span>
#include <vector>

namespace {

std::vector<std::byte> Store(const AlertArgumentDescription& a_argument)
{
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    a_argument.SerializeToArchive(archive);
    archive.Close();
    return file.Detach();
}

AlertArgumentDescription Load(std::span<const std::byte> a_bytes)
{
    CMemFile file(a_bytes);
    CArchive archive(&file, CArchive::load);
    AlertArgumentDescription argument;
    argument.UnserializeFromArchive(archive);
    return argument;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*a_count*/, char*** /*a_arguments*/)
{
    // Every refusal of a tree is a line of the log; the terminal is no place for millions of them.
    VeloTools::Log::Instance().SetLogFolder(std::filesystem::temp_directory_path() / "kalvento_fuzz_log");
    return 0;
}

// Bytes are an argument or one of the documented refusals; an argument's own bytes give the same bytes again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    std::vector<std::byte> stored;
    try {
        stored = Store(Load({reinterpret_cast<const std::byte*>(a_data), a_size}));
    } catch (const std::exception&) {
        return 0;
    }
    if (Store(Load(stored)) != stored)
        std::abort();
    return 0;
}
