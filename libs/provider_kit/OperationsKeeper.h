#pragma once

#include "history_operations/HistoryOperations.h"

#include <mutex>
#include <string>

class IMarketStore;

namespace kalvento::internal {

/// Corporate operations of a store, each list also kept in a file beside the instrument's history, so that they are
/// there while the store can't be read. Any thread.
class OperationsKeeper {
public:
    explicit OperationsKeeper(IMarketStore& a_store) : m_store(a_store) {}

    /// The store's list; the file's where the store can't be read, and a_fault then says why. a_path: the file, empty
    /// for none.
    HistoryOperations Read(const std::string& a_isin, const std::wstring& a_path, std::wstring& a_fault);

    /// The same version and the same operations in the same order.
    static bool AreEqual(const HistoryOperations& a_left, const HistoryOperations& a_right);

private:
    IMarketStore& m_store;
    std::mutex m_mutex; // of the files
};

} // namespace kalvento::internal
