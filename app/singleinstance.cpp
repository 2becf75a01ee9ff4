#include "app/singleinstance.h"

#include "app/sclogger.h"
#include "platform/window_activation.h"

#include <QThread>

#include <cstring>

namespace {

constexpr int kAttempts = 20;
constexpr unsigned long kAttemptIntervalMs = 50;
constexpr int kFlashes = 3;

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

SingleInstance::SingleInstance(const QString& key) : m_memory(key), m_lock(key)
{
    static_assert(sizeof(Block) == 16);
}

SingleInstance::~SingleInstance()
{
    release();
}

SingleInstance::Role SingleInstance::claim()
{
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        switch (claimOnce()) {
        case Attempt::First:
            SCLogger::info(QStringLiteral("Created shared memory for single instance"));
            return Role::First;
        case Attempt::Second:
            m_lock.release();
            return Role::Second;
        case Attempt::Unguarded:
            return giveUpGuard(m_memory.errorString());
        case Attempt::Again:
            QThread::msleep(kAttemptIntervalMs);
        }
    }
    // Somebody holds the lock and shows no segment, or a segment that nobody may remove.
    readFirstCopy();
    m_lock.release();
    return Role::Second;
}

SingleInstance::Attempt SingleInstance::claimOnce()
{
    using State = platform::InstanceLock::State;
    const State lock = m_lock.tryLock();
    if (lock == State::HeldByAnother)
        return readFirstCopy() ? Attempt::Second : Attempt::Again;
    if (lock == State::Acquired)
        return replaceStaleSegment();
    return readFirstCopy() ? Attempt::Second : create();
}

SingleInstance::Attempt SingleInstance::replaceStaleSegment()
{
    // Detaching removes the segment, unless somebody else is attached: for a moment a second copy that looks at it, or
    // for life a first copy without a lock. The moment passes; what is still there after the last attempt is alive.
    if (m_memory.attach())
        m_memory.detach();
    const Attempt attempt = create();
    return attempt == Attempt::Second ? Attempt::Again : attempt;
}

SingleInstance::Attempt SingleInstance::create()
{
    if (m_memory.create(sizeof(Block)))
        return Attempt::First;
    if (m_memory.error() != QSharedMemory::AlreadyExists)
        return Attempt::Unguarded;
    if (readFirstCopy())
        return Attempt::Second;
    return m_memory.error() == QSharedMemory::PermissionDenied ? Attempt::Unguarded : Attempt::Again;
}

bool SingleInstance::readFirstCopy()
{
    if (!m_memory.attach())
        return false;
    Block block{};
    m_memory.lock();
    std::memcpy(&block, m_memory.constData(), sizeof(block));
    m_memory.unlock();
    m_memory.detach();
    m_firstWindow = block.windowHandle;
    return true;
}

SingleInstance::Role SingleInstance::giveUpGuard(const QString& reason)
{
    SCLogger::error(QStringLiteral("Unable to create shared memory: %1").arg(reason));
    m_lock.release();
    return Role::Unguarded;
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
    if (!m_memory.isAttached())
        return;
    const Block block{windowHandle, processId};
    m_memory.lock();
    std::memcpy(m_memory.data(), &block, sizeof(block));
    m_memory.unlock();
    SCLogger::info(QStringLiteral("Stored window handle and process ID in shared memory"));
}

void SingleInstance::release()
{
    if (m_memory.isAttached())
        m_memory.detach();
    m_lock.release();
}
