// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/singleinstance.h"

#include "app/appidentity.h"
#include "app/sclogger.h"
#include "platform/windowing/window_activation.h"

#include <QThread>

namespace {

constexpr int kAttempts = 20;
/// A visit at the segment takes well under a millisecond.
constexpr unsigned long kGateIntervalMs = 5;
constexpr int kFlashes = 3;

using State = platform::InstanceLock::State;

void bringToFront(quint64 window)
{
    if (platform::isMinimized(window))
        platform::restoreWindow(window);
    platform::raiseWindow(window);
    platform::activateWindow(window);
    platform::demandAttention(window, kFlashes);
}

} // namespace

/// The segment's layout.
struct SingleInstance::Block
{
    quint64 windowHandle;
    qint64 processId;
};

SingleInstance::SingleInstance(const QString& key, std::chrono::milliseconds attemptInterval)
    : m_attemptIntervalMs(static_cast<unsigned long>(attemptInterval.count()))
    , m_segment(key, appidentity::dataFolder())
    , m_lock(key, appidentity::dataFolder())
    , m_gate(gateName(key), appidentity::dataFolder())
{
    static_assert(sizeof(Block) == 16);
}

QString SingleInstance::gateName(const QString& key)
{
    return key + QLatin1String("-gate");
}

SingleInstance::~SingleInstance()
{
    release();
}

SingleInstance::Role SingleInstance::claim()
{
    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        // Whoever keeps the gate shut for so long is stopped and does nothing behind it.
        if (!enterGate() && attempt < kAttempts)
            continue;
        const std::optional<Role> role = claimOnce();
        m_gate.release();
        if (role)
            return conclude(*role);
        QThread::msleep(m_attemptIntervalMs);
    }
    return conclude(roleAfterAllAttempts());
}

std::optional<SingleInstance::Role> SingleInstance::claimOnce()
{
    m_lockState = m_lock.tryLock();
    if (m_lockState == State::Unavailable)
        SCLogger::debug(QStringLiteral("The single instance has no lock; its shared memory alone decides"));
    // Where this instance has the lock, looking removes the segment of one that was killed: detaching is what does.
    const bool isThere = findFirstWindow();
    if (m_lockState == State::HeldByAnother)
        return isThere ? std::optional(Role::Second) : std::nullopt;
    if (isThere && m_lockState != State::Acquired)
        return Role::Second; // without a lock the segment alone decides
    if (!isThere && m_segment.error() == QSharedMemory::PermissionDenied)
        return Role::Unguarded; // another user's
    if (m_segment.create(sizeof(Block)))
        return Role::First;
    return m_segment.error() == QSharedMemory::AlreadyExists ? std::nullopt : std::optional(Role::Unguarded);
}

SingleInstance::Role SingleInstance::roleAfterAllAttempts() const
{
    // The other one is stopped between taking the lock and making the segment.
    if (m_lockState == State::HeldByAnother)
        return Role::Second;
    // A segment that somebody else keeps though the lock is free: of an instance whose lock file was removed, or a
    // stranger's of the same System V key.
    return platform::isWindow(m_firstWindow) ? Role::Second : Role::Unguarded;
}

SingleInstance::Role SingleInstance::conclude(Role role)
{
    if (role == Role::First)
        SCLogger::info(QStringLiteral("Created shared memory for single instance"));
    else
        m_lock.release();
    if (role == Role::Unguarded)
        SCLogger::error(QStringLiteral("Unable to create shared memory: %1").arg(m_segment.errorString()));
    return role;
}

bool SingleInstance::findFirstWindow()
{
    m_firstWindow = 0;
    if (!m_segment.attach())
        return false;
    Block block{};
    if (m_segment.read(&block, sizeof(block)))
        m_firstWindow = block.windowHandle;
    m_segment.detach();
    return true;
}

bool SingleInstance::enterGate()
{
    for (unsigned long waited = 0; waited < m_attemptIntervalMs; waited += kGateIntervalMs) {
        if (m_gate.tryLock() != State::HeldByAnother)
            return true;
        QThread::msleep(kGateIntervalMs);
    }
    return false;
}

void SingleInstance::enterGateOrWaitItOut()
{
    for (int attempt = 0; attempt < kAttempts && !enterGate(); ++attempt) {
    }
}

void SingleInstance::handOver() const
{
    if (platform::isWindow(m_firstWindow))
        bringToFront(m_firstWindow);
    else
        SCLogger::error(QStringLiteral("Stored window handle is invalid"));
}

void SingleInstance::publish(quint64 windowHandle, qint64 processId)
{
    if (!m_segment.isAttached())
        return;
    const Block block{windowHandle, processId};
    enterGateOrWaitItOut();
    m_segment.write(&block, sizeof(block));
    m_gate.release();
    SCLogger::info(QStringLiteral("Stored window handle and process ID in shared memory"));
    if (m_lock.isInOwnFolder() || m_gate.isInOwnFolder() || m_segment.isOfOwnFolder())
        SCLogger::warning(QStringLiteral("Another user has the single instance's names in the folder for temporary "
                                         "files; those in the user's own folder are used"));
}

void SingleInstance::release()
{
    if (m_segment.isAttached()) {
        enterGateOrWaitItOut();
        m_segment.detach();
    }
    m_lock.release();
    m_gate.release();
}
