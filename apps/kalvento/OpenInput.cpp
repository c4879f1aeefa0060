#include "kalvento/OpenInput.h"

#include "platform/Interruption.h"

#include <iostream>
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

Inputs OpenInputs(const std::vector<std::string>& a_paths, ToolContext& a_context)
{
    Inputs inputs;
    bool known = true;
    for (const std::string& path : a_paths) {
        inputs.sources.push_back(OpenInput(path, a_context));
        inputs.size += inputs.sources.back()->GetSize();
        known = known && inputs.sources.back()->GetSize() > 0;
    }
    inputs.size = known ? inputs.size : 0;
    return inputs;
}

} // namespace kalvento::tool
