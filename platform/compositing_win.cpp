#include "platform/compositing.h"

namespace platform {

bool isCompositing()
{
    return true;
}

} // namespace platform
