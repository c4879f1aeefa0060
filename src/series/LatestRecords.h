#pragma once

#include "platform/Export.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <vector>

/// The short list of an instrument's latest transactions, for a window that shows them beside the price. A provider
/// first sends a batch, then single transactions from the live feed, the newest in front.
///
/// A value type: copies are independent, one thread at a time; a moved-from list is empty.
class KALVENTO_API LatestRecords {
public:
    /// One transaction: its time, price and volume. The numbers are stored as they came.
    struct LastRecord {
        LastRecord(const NDateTime& a_time, double a_price, double a_volume)
            : time(a_time), price(a_price), volume(a_volume)
        {}

        NDateTime time;
        double price;
        double volume;
    };
    using const_iterator = std::vector<LastRecord>::const_iterator;
    using const_reverse_iterator = std::vector<LastRecord>::const_reverse_iterator;

    /// AddTransaction drops from a list that is longer than this.
    static constexpr std::size_t RecordsLimit = 10;

    const_iterator begin() const { return m_records.begin(); }
    const_iterator end() const { return m_records.end(); }
    const_reverse_iterator rbegin() const { return m_records.rbegin(); }
    const_reverse_iterator rend() const { return m_records.rend(); }
    std::size_t GetTransactionCount() const { return m_records.size(); }

    /// Appends a transaction of a batch; a batch keeps all that it contains. a_recordType is its place in the batch: 0
    /// within, 1 first (empties the list before), 2 last (all are received after it), 3 the only one (both). Any other
    /// raises KalventoException and changes nothing.
    void SetTransaction(unsigned long a_recordType, const NDateTime& a_time, double a_price, double a_volume);
    /// Puts a new transaction in front. One is dropped from the end first where the list is longer than RecordsLimit,
    /// so that it settles at RecordsLimit + 1.
    void AddTransaction(const NDateTime& a_time, double a_price, double a_volume);

    /// The full batch has arrived.
    bool ReceivedAllRecords() const { return m_receivedAll; }
    void MarkAsReceived() { m_receivedAll = true; }
    /// No transactions, nothing received.
    void Clear();

private:
    std::vector<LastRecord> m_records;
    bool m_receivedAll = false;
};
