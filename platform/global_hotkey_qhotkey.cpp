#include "platform/global_hotkey.h"

#include <QHotkey>

namespace platform {

class GlobalHotkey::Backend
{
public:
    explicit Backend(GlobalHotkey& owner)
    {
        QObject::connect(&hotkey, &QHotkey::activated, &owner, &GlobalHotkey::activated, Qt::QueuedConnection);
    }

    QHotkey hotkey;
};

GlobalHotkey::GlobalHotkey(QObject* parent) : QObject(parent), m_backend(std::make_unique<Backend>(*this)) {}

GlobalHotkey::~GlobalHotkey() = default;

bool GlobalHotkey::registerKey(const QKeySequence& sequence)
{
    m_backend->hotkey.resetShortcut();
    m_failureReason.clear();
    if (sequence.isEmpty() || m_backend->hotkey.setShortcut(sequence, true))
        return true;
    m_failureReason =
        QStringLiteral("The hotkey %1 cannot be used: another program holds it, or the keyboard does not have it")
            .arg(sequence.toString(QKeySequence::PortableText));
    return false;
}

} // namespace platform
