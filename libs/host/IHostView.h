#pragma once

#include <string_view>

class ProviderBase;

namespace kalvento::host {

/// What the program around the host shows. Called on the main thread only, between the host's construction and the end
/// of its Stop, so it may touch windows. Each operation is empty where the program has nothing to show.
class IHostView {
public:
    virtual ~IHostView() = default;

    /// A text for the user, Polish.
    virtual void ShowText(std::wstring_view /*a_text*/) {}
    /// A question, as IAppMediator::ShowMessage; the answer is that of the platform's message box. By default 0: none.
    virtual int Ask(std::wstring_view /*a_caption*/, std::wstring_view /*a_text*/, unsigned int /*a_flags*/)
    {
        return 0;
    }
    /// A passing notification that doesn't stop the user.
    virtual void ShowNotification(std::wstring_view /*a_text*/) {}
    /// The provider's list of assets or groups changed. Only for providers that run: what one announces during its Init
    /// is dropped, since the program asks for the assets after Start anyway.
    virtual void AssetsChanged(ProviderBase& /*a_provider*/) {}
    /// Some provider's connection status changed; several changes may come as one call.
    virtual void ConnectionStatusChanged() {}
    /// The progress of all providers together, in operations. Several changes may come as one call; after a_done has
    /// reached a_total both start again.
    virtual void Progress(unsigned int /*a_done*/, unsigned int /*a_total*/) {}

    IHostView(const IHostView&) = delete;
    IHostView& operator=(const IHostView&) = delete;

protected:
    IHostView() = default;
};

} // namespace kalvento::host
