#pragma once

#include "platform/Export.h"
#include "series/ESheetPage.h"

class DataSheetItem;
class DeleteSheetPage;
class OrderData;
struct BrokerAccountInfo;

/// Shows the orders sheet. Implemented by the module with the sheet, called by the module that talks to the broker; the
/// library calls none of this.
///
/// All calls come on the main thread. Each account is a sheet of its own: what comes after OnAccountChanged belongs to
/// that account, and nothing comes before the first one. Within a page the order's key names an entry. Changes may come
/// between OnUpdateBegin and OnUpdateEnd, which aren't nested; the receiver then repaints once. Arguments are lent for
/// the call: copy what is kept. The receiver outlives its place with the sender, and doesn't throw.
class KALVENTO_API IOrdersSheetReceiver {
public:
    virtual ~IOrdersSheetReceiver();

    /// The sheet of another account follows; all pages are empty now.
    virtual void OnAccountChanged(const BrokerAccountInfo& a_account) = 0;
    /// Several changes follow.
    virtual void OnUpdateBegin() = 0;
    /// Enters the order on its page, or replaces the entry of the same key there.
    virtual void OnItemChanged(const DataSheetItem& a_item) = 0;
    /// Takes the order's entry from its page; a key that the page lacks is no error.
    virtual void OnItemDeleted(const DeleteSheetPage& a_item) = 0;
    /// Removes all entries of the page.
    virtual void OnPageCleared(ESheetPage a_page) = 0;
    /// The changes are complete.
    virtual void OnUpdateEnd() = 0;
    /// The user put an order together elsewhere: the receiver offers it for sending, and doesn't send it by itself.
    virtual void OnOrderPrepared(const OrderData& a_order) = 0;
};
