#include "assets/ChosenAssetsAndAssetsGroups.h"

#include "platform/CArchive.h"
#include "platform/CArchiveException.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <utility>

IMPLEMENT_SERIAL(ChosenAssetsAndAssetsGroups, CObject, 1)

namespace {

/// The objects whose addresses may lie in an archive. A drag ends in any window that knows the class, that of another
/// terminal included, and an address from there must not be followed.
class StoredSelections {
public:
    static StoredSelections& Instance()
    {
        // Never destroyed: a selection may outlive the static objects of the library.
        static auto* const S_instance = new StoredSelections;
        return *S_instance;
    }

    void Add(const ChosenAssetsAndAssetsGroups* a_selection)
    {
        const std::lock_guard lock(m_mutex);
        if (std::find(m_selections.begin(), m_selections.end(), a_selection) == m_selections.end())
            m_selections.push_back(a_selection);
    }

    void Remove(const ChosenAssetsAndAssetsGroups* a_selection)
    {
        const std::lock_guard lock(m_mutex);
        std::erase(m_selections, a_selection);
    }

    /// The element at that address, null where no stored selection has one there.
    template<class Element>
    const Element* Find(std::uint64_t a_address,
                        const std::vector<Element>& (ChosenAssetsAndAssetsGroups::*a_list)() const)
    {
        const std::lock_guard lock(m_mutex);
        for (const auto* selection : m_selections) {
            const std::vector<Element>& list = (selection->*a_list)();
            const std::uint64_t distance = a_address - reinterpret_cast<std::uintptr_t>(list.data());
            if (distance < list.size() * sizeof(Element) && distance % sizeof(Element) == 0)
                return &list[distance / sizeof(Element)];
        }
        return nullptr;
    }

private:
    std::mutex m_mutex;
    std::vector<const ChosenAssetsAndAssetsGroups*> m_selections;
};

template<class Element>
void StoreAddresses(CArchive& a_archive, const std::vector<Element>& a_list)
{
    for (const Element& element : a_list)
        a_archive << static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&element));
}

template<class Element>
void LoadElements(CArchive& a_archive, std::uint64_t a_count, std::vector<Element>& a_list,
                  const std::vector<Element>& (ChosenAssetsAndAssetsGroups::*a_source)() const)
{
    for (std::uint64_t place = 0; place < a_count; ++place) {
        std::uint64_t address = 0;
        a_archive >> address;
        if (address == 0)
            continue;
        const Element* const element = StoredSelections::Instance().Find(address, a_source);
        if (element == nullptr)
            throw CArchiveException(
                CArchiveException::badIndex,
                "Archiwum wskazuje element wyboru, którego nie ma w tym procesie; wybór można przenieść tylko w obrębie jednego programu"_cp1250);
        a_list.push_back(*element);
    }
}

} // namespace

ChosenAssetsAndAssetsGroups::ChosenAssetsAndAssetsGroups(std::vector<Asset>&& a_assets,
                                                         std::vector<AssetsGroup>&& a_groups)
    : m_assets(std::move(a_assets)), m_groups(std::move(a_groups))
{}

ChosenAssetsAndAssetsGroups::~ChosenAssetsAndAssetsGroups()
{
    StoredSelections::Instance().Remove(this);
}

void ChosenAssetsAndAssetsGroups::Serialize(CArchive& a_archive)
{
    if (a_archive.IsStoring())
        Store(a_archive);
    else
        Load(a_archive);
}

void ChosenAssetsAndAssetsGroups::Store(CArchive& a_archive)
{
    StoredSelections::Instance().Add(this);
    a_archive << static_cast<std::uint64_t>(m_assets.size()) << static_cast<std::uint64_t>(m_groups.size());
    StoreAddresses(a_archive, m_assets);
    StoreAddresses(a_archive, m_groups);
}

void ChosenAssetsAndAssetsGroups::Load(CArchive& a_archive)
{
    StoredSelections::Instance().Remove(this);
    m_assets.clear();
    m_groups.clear();
    std::uint64_t assetCount = 0;
    std::uint64_t groupCount = 0;
    a_archive >> assetCount >> groupCount;
    LoadElements(a_archive, assetCount, m_assets, &ChosenAssetsAndAssetsGroups::GetAssets);
    LoadElements(a_archive, groupCount, m_groups, &ChosenAssetsAndAssetsGroups::GetAssetsGroup);
}
