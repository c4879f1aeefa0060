#include "modules/AssetsGroupProvider.h"

AssetsGroupProvider::~AssetsGroupProvider() = default;
