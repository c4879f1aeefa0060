#pragma once

#include "series/SettableVariables.h"

/// The current state of an instrument: its last price, reference price and whatever else a window asked for. Beside it
/// travel the Offers.
class KALVENTO_API CurrentState : public SettableVariables {
public:
    using SettableVariables::SettableVariables;
};
