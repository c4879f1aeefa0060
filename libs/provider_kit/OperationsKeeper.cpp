#include "provider_kit/OperationsKeeper.h"

#include "platform/WidePath.h"
#include "provider_kit/IMarketStore.h"
#include "provider_kit/StoreFailure.h"
#include "velo/LogAllExceptions.h"

#include <algorithm>
#include <filesystem>

namespace kalvento::internal {

namespace {

bool LoadIfThere(HistoryOperations& a_operations, const std::wstring& a_path)
{
    std::error_code ignored;
    return std::filesystem::exists(WidePath::ToPath(a_path), ignored) && a_operations.Load(a_path);
}

} // namespace

HistoryOperations OperationsKeeper::Read(const std::string& a_isin, const std::wstring& a_path,
                                         std::wstring& a_fault)
{
    HistoryOperations kept;
    try {
        HistoryOperations current = m_store.ReadOperations(a_isin);
        const std::lock_guard lock(m_mutex);
        // A first empty list isn't worth a file.
        if (!a_path.empty()) {
            const bool hasFile = LoadIfThere(kept, a_path);
            if (!AreEqual(kept, current) || (!hasFile && current.begin() != current.end()))
                current.Save(a_path);
        }
        return current;
    } catch (...) {
        LogAllExceptions("OperationsKeeper::Read", __LINE__);
        a_fault = FailureText() + L"; użyto listy operacji przechowanej wcześniej";
    }
    const std::lock_guard lock(m_mutex);
    kept = HistoryOperations();
    if (!a_path.empty())
        LoadIfThere(kept, a_path);
    return kept;
}

bool OperationsKeeper::AreEqual(const HistoryOperations& a_left, const HistoryOperations& a_right)
{
    return a_left.Version() == a_right.Version() &&
           std::equal(a_left.begin(), a_left.end(), a_right.begin(), a_right.end(),
                      [](const SingleHistoryOperation& a_one, const SingleHistoryOperation& a_other) {
                          return a_one.GetId() == a_other.GetId() && a_one.GetDate() == a_other.GetDate() &&
                                 a_one.GetType() == a_other.GetType() &&
                                 a_one.GetStoredFactor() == a_other.GetStoredFactor();
                      });
}

} // namespace kalvento::internal
