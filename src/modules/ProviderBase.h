#pragma once

#include "history_operations/HistoryPathManager.h"
#include "modules/AssetsGroupProvider.h"
#include "modules/EConnectionStatus.h"
#include "modules/IStatusProvider.h"
#include "modules/PluginBase.h"
#include "platform/Export.h"
#include "series/DSProp.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class Asset;
class AssetParams;
class HistoryOperations;
class IStatisticsSessionReceiver;
class NDateTime;
struct AssetAdditProp;

namespace Subscribe {
class StartParams;
class StopParams;
} // namespace Subscribe

/// A plug-in that connects the terminal to one source of market data: what is the same for all of them. The feed itself
/// and its threads are the deriving class's own business; see IConsumer for what it must deliver and in what order.
///
/// Who calls what: the host calls Init once after construction, then SwitchConnection,
/// ProviderCommand and the login operations, on the main thread. Subscriptions and questions about assets come from any
/// thread, after Init, also while there is no connection; they answer from what the provider holds and don't wait for
/// the source. OnStopWork ends all subscriptions: when it returns, no callback runs or comes. After that they are
/// refused, and the notifications below are dropped.
///
/// Operations that only a host and its providers would agree on are not here until something needs them.
class KALVENTO_API ProviderBase : public PluginBase, public AssetsGroupProvider, public IStatusProvider {
public:
    /// Without state files.
    ProviderBase(EGenericModule a_moduleKind, std::wstring a_name);

    // A provider has no windows, so there are none to save.
    bool SaveObjectAvailable() const override { return false; }
    bool SaveWindowToFile(HWND /*a_window*/, const wchar_t* /*a_path*/, int /*a_mode*/) override
    {
        return true;
    }
    void SerialiseState(Settings& /*a_settings*/) const override {}
    void UnserialiseState(const Settings& /*a_settings*/) override {}
    void PostUnserialisePanelState(const Settings& /*a_settings*/, CWnd* /*a_panel*/) override {}
    void EmptySessionNotification(CWnd* /*a_panel*/) override {}
    HICON GetTitleBarIconHandle() override { return nullptr; }

    /// Empty; a provider with groups overrides it.
    std::optional<AssetsGroup> GetAssetsGroupForAssetsGroupId(const AssetsGroupId& a_groupId) override;

    /// Any thread. NotifyChangeConnectionStatus announces a change once this gives the new status.
    virtual EConnectionStatus GetConnectionStatus() const = 0;
    /// The provider's own command in its menu on the status bar, such as its options.
    virtual void ProviderCommand() = 0;
    /// The user asks to connect or to disconnect. Returns at once; NotifyChangeConnectionStatus reports each step on
    /// the way.
    virtual void SwitchConnection(bool a_connect) = 0;

    /// Starts a subscription: checks it by ProvidersHelper::ValidateSubscribeParameters and books the pair by
    /// ProvidersHelper::AddPairToContainer. False refuses: nothing is booked, and no callback comes or came. True: data
    /// comes through the consumer as IConsumer describes, at once or when there is a connection. A pair that is already
    /// booked is accepted and changes nothing: to get other data, stop it first. Any thread.
    virtual bool StartSubscription(const Subscribe::StartParams& a_params) = 0;
    /// Ends a subscription, or some kinds of its data (StopParams::GetRequestParams); when no kind is left, all of it.
    /// When this returns, no callback for the number (or of those kinds) runs or comes any more, except that a call
    /// from inside a callback doesn't wait for that one. Finds it by StopParams::Suit and removes it by
    /// ProvidersHelper::RemovePairToContainer. Where nothing is booked there is nothing to end, but it still waits for
    /// a RequestEnded or RequestRefused that runs: the consumer may be about to die. Any thread, and also after
    /// StopWork.
    virtual void StopSubscription(const Subscribe::StopParams& a_params) = 0;
    /// All assets that can be subscribed to, each once, in the order of Asset::operator<. Any thread.
    virtual std::vector<std::shared_ptr<Asset>> GetAssets() const = 0;
    /// All groups, in the order in which they are shown. Any thread.
    virtual std::vector<AssetsGroup> GetAssetsGroups() const = 0;

    /// The series that this provider delivers live for the asset; empty for an asset that it does not know. Any thread.
    virtual std::set<DSProp> GetAssetSeries(const Asset& a_asset) = 0;
    /// The same in the asset's other shape: the series of its history where they differ from the live ones.
    virtual std::set<DSProp> GetAssetSeriesAlternative(const Asset& a_asset) = 0;

    /// Further properties of the asset; empty for an unknown asset. Any thread.
    virtual std::optional<AssetAdditProp> GetAssetAdditProp(const Asset& a_asset) = 0;
    /// Corporate operations of the asset, for histories that did not come by a subscription; none for an unknown asset.
    /// May read a file. Any thread.
    virtual HistoryOperations GetHistoryOperations(const Asset& a_asset) = 0;
    /// From now on the receiver gets the statistics of the session. Not owned. False where the provider has none. A
    /// receiver added twice is there once. Main thread.
    virtual bool StartSessionStatistics(IStatisticsSessionReceiver* a_receiver) = 0;
    /// When this returns, the receiver is no longer called, as with StopSubscription. Main thread.
    virtual void StopSessionStatistics(IStatisticsSessionReceiver* a_receiver) = 0;

    /// The provider's object for the asset, empty if it does not know it (any more). Any thread.
    virtual std::shared_ptr<Asset> GetAssetByIsin(const std::string& a_isin) = 0;
    /// What can be delivered for the asset; an empty mask for an unknown one. Any thread.
    virtual AssetParams GetAssetParams(const std::string& a_isin) = 0;
    /// The date of the asset's current session, empty if there is none. Any thread.
    virtual std::optional<NDateTime> GetAssetSessionDate(const Asset& a_asset) = 0;

    /// Second stage of construction, called by the host once on the main thread: sets up the provider's folder of
    /// histories. False: the provider can't work, and the host drops its plug-in. An override calls this one first.
    virtual bool Init();

    /// A login from outside, before or instead of ShowLoginDlg. The provider decides what the two texts are; UTF-8.
    virtual void SetAuthorizationData(std::string_view /*a_login*/, std::string_view /*a_password*/) {}
    virtual void SetAuthorizationToken(std::string_view /*a_token*/) {}
    /// Asks the user to log on. True: done, or not needed; false: given up. Main thread.
    virtual bool ShowLoginDlg(CWnd* /*a_parent*/) { return true; }
    /// Ends the connection without asking the user. a_forget: forget the login too.
    virtual void Disconnect(bool /*a_forget*/) {}

    /// Path of the file of corporate operations of a symbol; its folder is created.
    std::wstring GetOperationFilePath(const std::string& a_symbol) const
    {
        return m_pathManager.GetOperationFilePath(a_symbol);
    }
    /// Folder of the stored history of a symbol, which is created.
    std::wstring GetHistorySymbolPath(const std::string& a_symbol) const
    {
        return m_pathManager.GetHistorySymbolPath(a_symbol);
    }

    // What a provider tells the host. On the caller's thread, any thread: the host hops to the main one.

    /// The list of assets or groups changed. Dropped after StopWork. The provider itself tells the consumers concerned
    /// (IConsumer::UpdateAssets).
    void AssetsChanged();
    /// Dropped after StopWork.
    void NotifyChangeConnectionStatus();
    /// Shows a message in the provider's name, with a full stop at its end. Dropped after StopWork, or empty.
    void ShowAdditionalInfo(std::wstring_view a_text);
    /// More work is ahead. Passed on after StopWork too: a shutdown has work of its own.
    void AddOperationsToDoToProgress(unsigned int a_count);
    /// How much of it is done. Dropped after StopWork.
    void SetOperationsDidToProgress(unsigned int a_count);

private:
    HistoryPathManager m_pathManager; // empty until Init
};
