#pragma once

#include "platform/Export.h"
#include "time/EInterval.h"

#include <string>

/// The Polish words for intervals, as the user reads them.
namespace IntervalTranslator {

/// "Minutowy" for minutes; "Pusty" for the empty interval and for values outside EInterval's names. Static life.
KALVENTO_API const wchar_t* ToLabel(EInterval a_interval);

/// One unit reads as its label ("Dzienny"), more of them as a count ("2 dni"); multiplicity 0 and values outside
/// EInterval's names read "Pusty". The count is printed as a signed 32-bit number.
KALVENTO_API std::wstring ToDescription(EInterval a_interval, unsigned int a_multiplicity);

} // namespace IntervalTranslator
