#include "alerts/AlertReceiver.h"

// Defined here so that the interface has one type information for all modules.
AlertReceiver::~AlertReceiver() = default;
