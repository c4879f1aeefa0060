#include "modules/IStatusProvider.h"

IStatusProvider::~IStatusProvider() = default;
