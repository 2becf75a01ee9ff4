// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/instance_lock.h"

namespace platform {

InstanceLock::InstanceLock(const QString& name, const QString& ownFolder) : m_name(name), m_ownFolder(ownFolder) {}

InstanceLock::~InstanceLock() = default;

InstanceLock::State InstanceLock::tryLock()
{
    return State::NotNeeded;
}

void InstanceLock::release() {}

} // namespace platform
