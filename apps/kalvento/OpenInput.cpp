#include "kalvento/OpenInput.h"

#include <iostream>

namespace kalvento::tool {

namespace {

constexpr const char* S_standardInput = "standard input";

} // namespace

std::unique_ptr<ByteSource> OpenInput(const std::string& a_path, ToolContext& a_context)
{
    return a_path == "-" ? ByteSource::FromStream(a_context.in, S_standardInput) : ByteSource::Open(a_path);
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
