#include "velo/Keyboard.h"

#include <atomic>

namespace VeloTools::Keyboard {

namespace {

std::atomic<ShiftState> S_shiftState = nullptr;

} // namespace

bool IsShiftPressed()
{
    const ShiftState state = S_shiftState;
    return state != nullptr && state();
}

void SetShiftState(ShiftState a_state)
{
    S_shiftState = a_state;
}

} // namespace VeloTools::Keyboard
