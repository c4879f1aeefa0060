#include "platform/CurrentMessage.h"

namespace kalvento::internal {

const CurrentMessage* CurrentMessage::Sm_innermost = nullptr;

} // namespace kalvento::internal
