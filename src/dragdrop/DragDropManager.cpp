#include "dragdrop/DragDropManager.h"

DragDropManager::DragDropManager() = default;
DragDropManager::~DragDropManager() = default;
