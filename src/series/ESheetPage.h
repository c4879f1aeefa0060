#pragma once

#include <cstdint>

/// A page of the orders sheet. Modules exchange the numbers: append, never renumber. The library only carries them, so
/// a module may have pages of its own, from 1000 upward.
enum ESheetPage : std::uint32_t {
    ESheetPageNone = 0,
    ESheetPageActive = 1,    ///< Orders on the market.
    ESheetPageExecuted = 2,  ///< Orders executed in full.
    ESheetPageCancelled = 3, ///< Orders that were cancelled, refused or have expired.
    ESheetPagePrepared = 4   ///< Orders that the user prepared and has not sent yet.
};
