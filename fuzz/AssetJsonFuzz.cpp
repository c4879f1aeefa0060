#include "assets/Asset.h"
#include "contract_kit/TestMediator.h"
#include "contract_kit/TestProvider.h"

#include <boost/json.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace {

/// The provider that the seeds name. Neither is ever destroyed: the fuzzer leaves in its own way.
TestProvider& Provider()
{
    static auto* const S_provider = new TestProvider(L"Giełda");
    return *S_provider;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    static auto* const S_mediator = new TestMediator;
    S_mediator->providers = {&Provider()};
    return 0;
}

// A text either gives an asset, which then reads back as itself, or ends in an exception of the JSON library.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    boost::json::error_code error;
    const auto json =
        boost::json::parse(std::string_view(reinterpret_cast<const char*>(a_data), a_size), error);
    if (error)
        return 0;
    try {
        const Asset asset(json);
        const auto form = asset.Serialize();
        const Asset again(boost::json::parse(boost::json::serialize(form)));
        if (again != asset || again.GetShortName() != asset.GetShortName() ||
            again.GetLongName() != asset.GetLongName() || again.Serialize() != form)
            std::abort();
        if (asset.IsProviderSet() && form.at("Provider") != json.at("Provider"))
            std::abort();
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
    }
    return 0;
}
