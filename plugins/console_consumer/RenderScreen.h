#pragma once

#include "console_consumer/ScreenCells.h"
#include "console_consumer/ScreenModel.h"

/// Lays the screen out for its size: 80 columns and 24 rows show everything, less show less, down to one cell. Whatever
/// colours say, a sign or a shape says too.
ScreenCells RenderScreen(const ScreenModel& a_model, int a_width, int a_height);
