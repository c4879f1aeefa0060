#pragma once

#include "assets/Asset.h"
#include "assets/AssetsGroup.h"
#include "platform/CObject.h"
#include "platform/Export.h"

#include <vector>

/// A selection of assets and groups, as the window that chooses assets gives it to a drag. Not copied: an archive that
/// stores it holds the addresses of its elements.
class KALVENTO_API ChosenAssetsAndAssetsGroups : public CObject {
    DECLARE_SERIAL(ChosenAssetsAndAssetsGroups)

public:
    ChosenAssetsAndAssetsGroups() = default;
    ChosenAssetsAndAssetsGroups(std::vector<Asset>&& a_assets, std::vector<AssetsGroup>&& a_groups);
    ChosenAssetsAndAssetsGroups(const ChosenAssetsAndAssetsGroups&) = delete;
    ChosenAssetsAndAssetsGroups& operator=(const ChosenAssetsAndAssetsGroups&) = delete;
    ~ChosenAssetsAndAssetsGroups() override;

    const std::vector<Asset>& GetAssets() const { return m_assets; }
    const std::vector<AssetsGroup>& GetAssetsGroup() const { return m_groups; }

    /// Passes the selection on within one process; not a form to be kept. Storing writes two counts, of the assets and
    /// of the groups, then the address of each asset and of each group, as 64-bit numbers. Loading drops what is here
    /// and copies what lies at the addresses; an address of 0 is skipped. The object that stored must be alive until
    /// then and unchanged: an address that is no element of such an object raises CArchiveException (badIndex), and so
    /// do bytes from another process. A short archive raises endOfFile. What was copied before a failure stays.
    void Serialize(CArchive& a_archive) override;

private:
    void Store(CArchive& a_archive);
    void Load(CArchive& a_archive);

    std::vector<Asset> m_assets;
    std::vector<AssetsGroup> m_groups;
};
