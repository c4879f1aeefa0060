#include "platform/HResultCategory.h"

#include <fmt/format.h>

#include <string>

namespace {

class HResultCategory final : public std::error_category {
public:
    const char* name() const noexcept override { return "hresult"; }

    std::string message(int a_code) const override
    {
        switch (static_cast<std::uint32_t>(a_code)) {
        case HResult::S_fail:
            return "E_FAIL";
        case HResult::S_invalidArg:
            return "E_INVALIDARG";
        default:
            return fmt::format("HRESULT 0x{:08X}", static_cast<std::uint32_t>(a_code));
        }
    }
};

} // namespace

namespace HResult {

const std::error_category& Category()
{
    static const HResultCategory category;
    return category;
}

} // namespace HResult
