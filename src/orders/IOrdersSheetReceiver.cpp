#include "orders/IOrdersSheetReceiver.h"

// Defined here so that the interface has one type information for all modules.
IOrdersSheetReceiver::~IOrdersSheetReceiver() = default;
