#include "app/singleinstance.h"

#include "app/sclogger.h"
#include "platform/process_life.h"
#include "platform/window_activation.h"

#include <QThread>

namespace {

constexpr int kAttempts = 20;
constexpr unsigned long kAttemptIntervalMs = 50;
/// A visit at the segment takes well under a millisecond.
constexpr unsigned long kGateIntervalMs = 5;
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

SingleInstance::SingleInstance(const QString& key) : m_segment(key), m_lock(key), m_gate(gateName(key))
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
        const Attempt outcome = claimOnce();
        m_gate.release();
        if (outcome != Attempt::Again)
            return conclude(outcome);
        QThread::msleep(kAttemptIntervalMs);
    }
    // Somebody holds the lock and shows no segment, or a segment that nobody may remove.
    return conclude(Attempt::Second);
}

SingleInstance::Role SingleInstance::conclude(Attempt outcome)
{
    if (outcome == Attempt::First) {
        SCLogger::info(QStringLiteral("Created shared memory for single instance"));
        return Role::First;
    }
    m_lock.release();
    if (outcome == Attempt::Second)
        return Role::Second;
    SCLogger::error(QStringLiteral("Unable to create shared memory: %1").arg(m_segment.errorString()));
    return Role::Unguarded;
}

bool SingleInstance::enterGate()
{
    using State = platform::InstanceLock::State;
    for (unsigned long waited = 0; waited < kAttemptIntervalMs; waited += kGateIntervalMs) {
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

SingleInstance::Attempt SingleInstance::claimOnce()
{
    using State = platform::InstanceLock::State;
    const State lock = m_lock.tryLock();
    if (lock == State::HeldByAnother) // by the maker of the segment, or by a copy that has yet to replace it
        return readFirstCopy() && !m_isSegmentStale ? Attempt::Second : Attempt::Again;
    if (lock == State::Acquired)
        return replaceStaleSegment();
    return readFirstCopy() ? Attempt::Second : create();
}

SingleInstance::Attempt SingleInstance::replaceStaleSegment()
{
    // Detaching removes the segment, unless somebody else is attached: for life a first copy without a lock, or a
    // second copy that was stopped while it looked. What is still there after the last attempt is alive.
    if (m_segment.attach())
        m_segment.detach();
    const Attempt attempt = create();
    return attempt == Attempt::Second ? Attempt::Again : attempt;
}

SingleInstance::Attempt SingleInstance::create()
{
    if (m_segment.create(sizeof(Block)))
        return Attempt::First;
    if (m_segment.error() != QSharedMemory::AlreadyExists)
        return Attempt::Unguarded;
    if (readFirstCopy())
        return Attempt::Second;
    return m_segment.error() == QSharedMemory::PermissionDenied ? Attempt::Unguarded : Attempt::Again;
}

bool SingleInstance::readFirstCopy()
{
    if (!m_segment.attach())
        return false;
    Block block{};
    m_segment.read(&block, sizeof(block));
    m_segment.detach();
    m_isSegmentStale = platform::isProcessGone(block.processId);
    // The system may have given the window's handle to another program since.
    m_firstWindow = m_isSegmentStale ? 0 : block.windowHandle;
    return true;
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
