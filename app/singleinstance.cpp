#include "app/singleinstance.h"

#include "app/sclogger.h"
#include "platform/process_life.h"
#include "platform/window_activation.h"

#include <QThread>

namespace {

constexpr int kAttempts = 20;
/// A visit at the segment takes well under a millisecond.
constexpr unsigned long kGateIntervalMs = 5;
/// One new number of 65536 is as good as certain to be free.
constexpr int kRenumberings = 5;
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

SingleInstance::SingleInstance(const QString& key, std::chrono::milliseconds attemptInterval)
    : m_attemptIntervalMs(static_cast<unsigned long>(attemptInterval.count()))
    , m_segment(key)
    , m_lock(key)
    , m_gate(gateName(key))
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
    Attempt last;
    for (int count = 1; count <= kAttempts; ++count) {
        // Whoever keeps the gate shut for so long is stopped and does nothing behind it.
        if (!enterGate() && count < kAttempts)
            continue;
        last = claimOnce();
        m_gate.release();
        if (last.result != Result::Again)
            return conclude(last);
        QThread::msleep(m_attemptIntervalMs);
    }
    // Somebody holds the lock and shows no segment, or a segment that nobody may remove.
    last.result = Result::Second;
    return conclude(last);
}

SingleInstance::Role SingleInstance::conclude(const Attempt& attempt)
{
    if (attempt.result == Result::First) {
        SCLogger::info(QStringLiteral("Created shared memory for single instance"));
        return Role::First;
    }
    m_lock.release();
    if (attempt.result == Result::Second) {
        // The system may have given the window of a copy that is gone to another program since.
        m_firstWindow = attempt.met.isGone ? 0 : attempt.met.window;
        return Role::Second;
    }
    SCLogger::error(QStringLiteral("Unable to create shared memory: %1").arg(m_segment.errorString()));
    return Role::Unguarded;
}

bool SingleInstance::enterGate()
{
    using State = platform::InstanceLock::State;
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

SingleInstance::Attempt SingleInstance::claimOnce()
{
    using State = platform::InstanceLock::State;
    const State lock = m_lock.tryLock();
    if (lock == State::HeldByAnother)
        return secondOnceItLives();
    if (lock == State::Acquired)
        return replaceStaleSegment();
    if (lock == State::Unavailable)
        SCLogger::debug(QStringLiteral("The single instance has no lock; its shared memory alone decides"));
    if (const std::optional<OtherCopy> first = lookAtOtherCopy())
        return {Result::Second, *first};
    const Attempt made = create();
    return made.result == Result::Exists ? meetItsMaker() : made;
}

SingleInstance::Attempt SingleInstance::secondOnceItLives()
{
    // The lock is held by the maker of the segment, or by a copy that has yet to replace it.
    const OtherCopy first = lookAtOtherCopy().value_or(OtherCopy{0, true});
    return {first.isGone ? Result::Again : Result::Second, first};
}

SingleInstance::Attempt SingleInstance::replaceStaleSegment()
{
    // Detaching removes the segment, unless somebody else is attached: for life a first copy without a lock or a
    // stranger, or a second copy that was stopped while it looked.
    if (m_segment.attach())
        m_segment.detach();
    const bool wasKeyUnused = m_segment.isKeyUnused();
    const Attempt made = create();
    if (made.result != Result::Exists)
        return made;
    Attempt attempt = meetItsMaker();
    // A running copy's files may have been cleared away, and the number of the old key file given to the new one.
    if (attempt.met.isGone || (wasKeyUnused && !platform::isWindow(attempt.met.window)))
        return createUnderAnotherNumber();
    // What is still there after the last attempt is alive.
    if (attempt.result == Result::Second)
        attempt.result = Result::Again;
    return attempt;
}

SingleInstance::Attempt SingleInstance::createUnderAnotherNumber()
{
    for (int count = 0; count < kRenumberings; ++count) {
        const Attempt made = m_segment.renumber() ? create() : Attempt{Result::Exists, {}};
        if (made.result != Result::Exists)
            return made;
    }
    return {Result::Unguarded, {}};
}

SingleInstance::Attempt SingleInstance::create()
{
    if (m_segment.create(sizeof(Block)))
        return {Result::First, {}};
    return {m_segment.error() == QSharedMemory::AlreadyExists ? Result::Exists : Result::Unguarded, {}};
}

SingleInstance::Attempt SingleInstance::meetItsMaker()
{
    if (const std::optional<OtherCopy> maker = lookAtOtherCopy())
        return {Result::Second, *maker};
    return {m_segment.error() == QSharedMemory::PermissionDenied ? Result::Unguarded : Result::Again, {}};
}

std::optional<SingleInstance::OtherCopy> SingleInstance::lookAtOtherCopy()
{
    if (!m_segment.attach())
        return std::nullopt;
    Block block{};
    const bool isBlock = m_segment.read(&block, sizeof(block));
    m_segment.detach();
    return OtherCopy{block.windowHandle, !isBlock || platform::isProcessGone(block.processId)};
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
