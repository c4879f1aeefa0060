#include "kalvento/OpenInput.h"

#include "kalvento/Note.h"
#include "platform/InputFile.h"
#include "platform/Interruption.h"

#include <iostream>
#include <optional>
#include <set>
#include <utility>

namespace kalvento::tool {

namespace {

constexpr const char* S_standardInput = "standard input";

/// Raises Interrupted before it reads on after a signal.
class EndableSource final : public ByteSource {
public:
    explicit EndableSource(std::unique_ptr<ByteSource> a_source)
        : ByteSource(a_source->GetName(), a_source->GetSize()), m_source(std::move(a_source))
    {}

    std::size_t Read(char* a_bytes, std::size_t a_size) override
    {
        internal::Interruption::Check();
        return m_source->Read(a_bytes, a_size);
    }

private:
    std::unique_ptr<ByteSource> m_source;
};

std::unique_ptr<ByteSource> OpenSource(const std::string& a_path, ToolContext& a_context)
{
    if (a_path != "-")
        return ByteSource::Open(a_path);
    return &a_context.in == &std::cin ? ByteSource::OfProcessInput(S_standardInput)
                                      : ByteSource::FromStream(a_context.in, S_standardInput);
}

} // namespace

std::unique_ptr<ByteSource> OpenInput(const std::string& a_path, ToolContext& a_context)
{
    return std::make_unique<EndableSource>(OpenSource(a_path, a_context));
}

std::unique_ptr<GrowingSource> OpenGrowingInput(const std::string& a_path, ToolContext& a_context)
{
    if (a_path != "-")
        return GrowingSource::Open(a_path);
    return &a_context.in == &std::cin ? GrowingSource::OfProcessInput(S_standardInput)
                                      : GrowingSource::FromStream(a_context.in, S_standardInput);
}

Inputs FindInputs(const std::vector<std::string>& a_paths, bool a_dropRepeated, ToolContext& a_context)
{
    Inputs inputs;
    std::set<std::pair<std::uint64_t, std::uint64_t>> known;
    bool isSizeKnown = true;
    for (const std::string& path : a_paths) {
        // A pipe would lose what another one who opened it was sent.
        const auto state = path == "-" ? std::nullopt : internal::InputFile::LookAt(path);
        const bool isPipe = path == "-" || (state && !state->isRegular && !state->isFolder);
        const std::uint64_t size = isPipe ? 0 : ByteSource::Open(path)->GetSize();
        const bool isNew = !state || isPipe || known.emplace(state->device, state->number).second;
        if (!isNew && !a_context.quiet)
            Note(a_context, path + ": is given twice" + (a_dropRepeated ? " and read once" : ""));
        if (!isNew && a_dropRepeated)
            continue;
        inputs.paths.push_back(path);
        inputs.size += size;
        isSizeKnown = isSizeKnown && size > 0;
    }
    inputs.size = isSizeKnown ? inputs.size : 0;
    return inputs;
}

} // namespace kalvento::tool
