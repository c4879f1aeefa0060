#include "series/LatestRecords.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"

namespace {

/// Places of a transaction in its batch.
enum ERecordType : unsigned long { EWithinBatch = 0, EFirstOfBatch = 1, ELastOfBatch = 2, EWholeBatch = 3 };

} // namespace

void LatestRecords::SetTransaction(unsigned long a_recordType, const NDateTime& a_time, double a_price,
                                   double a_volume)
{
    if (a_recordType > EWholeBatch)
        throw KalventoException("LatestRecords::SetTransaction", __LINE__, "Niepoprawny typ rekordu."_cp1250);

    if (a_recordType == EFirstOfBatch || a_recordType == EWholeBatch)
        Clear();
    m_records.emplace_back(a_time, a_price, a_volume);
    if (a_recordType == ELastOfBatch || a_recordType == EWholeBatch)
        MarkAsReceived();
}

void LatestRecords::AddTransaction(const NDateTime& a_time, double a_price, double a_volume)
{
    // The test comes before the insert, so the list settles at one above the limit, and the windows that show it rely
    // on that row. A longer list, left by a batch, keeps its length.
    if (m_records.size() > RecordsLimit)
        m_records.pop_back();
    m_records.emplace(m_records.begin(), a_time, a_price, a_volume);
}

void LatestRecords::Clear()
{
    m_records.clear();
    m_receivedAll = false;
}
