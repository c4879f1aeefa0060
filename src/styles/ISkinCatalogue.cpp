#include "styles/ISkinCatalogue.h"

ISkinCatalogue::~ISkinCatalogue() = default;
