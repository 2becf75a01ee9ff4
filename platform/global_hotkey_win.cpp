#include "platform/global_hotkey.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <windows.h>

#include <map>

namespace platform {

namespace {

/// Identifiers below this belong to applications; every hotkey of the process gets its own.
int nextIdentifier()
{
    static int last = 0;
    constexpr int kHighest = 0xBFFF;
    last = last % kHighest + 1;
    return last;
}

UINT modifiersOf(const QKeyCombination& key)
{
    UINT modifiers = MOD_NOREPEAT;
    if (key.keyboardModifiers().testFlag(Qt::ShiftModifier))
        modifiers |= MOD_SHIFT;
    if (key.keyboardModifiers().testFlag(Qt::ControlModifier))
        modifiers |= MOD_CONTROL;
    if (key.keyboardModifiers().testFlag(Qt::AltModifier))
        modifiers |= MOD_ALT;
    if (key.keyboardModifiers().testFlag(Qt::MetaModifier))
        modifiers |= MOD_WIN;
    return modifiers;
}

UINT namedVirtualKey(Qt::Key key)
{
    static const std::map<Qt::Key, UINT> kKeys{
        {Qt::Key_Escape, VK_ESCAPE}, {Qt::Key_Tab, VK_TAB},       {Qt::Key_Backspace, VK_BACK},
        {Qt::Key_Return, VK_RETURN}, {Qt::Key_Enter, VK_RETURN},  {Qt::Key_Insert, VK_INSERT},
        {Qt::Key_Delete, VK_DELETE}, {Qt::Key_Pause, VK_PAUSE},   {Qt::Key_Print, VK_SNAPSHOT},
        {Qt::Key_Home, VK_HOME},     {Qt::Key_End, VK_END},       {Qt::Key_Left, VK_LEFT},
        {Qt::Key_Up, VK_UP},         {Qt::Key_Right, VK_RIGHT},   {Qt::Key_Down, VK_DOWN},
        {Qt::Key_PageUp, VK_PRIOR},  {Qt::Key_PageDown, VK_NEXT}, {Qt::Key_ScrollLock, VK_SCROLL},
        {Qt::Key_Space, VK_SPACE}};
    const auto found = kKeys.find(key);
    return found == kKeys.end() ? 0 : found->second;
}

/// 0 for a key that the keyboard does not have.
UINT virtualKeyOf(Qt::Key key)
{
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return static_cast<UINT>(VK_F1 + (key - Qt::Key_F1));
    if (const UINT named = namedVirtualKey(key); named != 0)
        return named;
    const SHORT scanned = key > 0 && key < 0x10000 ? VkKeyScanW(static_cast<WCHAR>(key)) : SHORT{-1};
    return scanned == -1 ? 0 : static_cast<UINT>(scanned & 0xFF);
}

} // namespace

/// A registration with the system; its message arrives at the thread, not at a window.
class GlobalHotkey::Backend : public QAbstractNativeEventFilter
{
public:
    explicit Backend(GlobalHotkey& owner) : m_owner(owner), m_identifier(nextIdentifier())
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    ~Backend() override { release(); }
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override
    {
        const MSG* const windowsMessage = static_cast<MSG*>(message);
        if (windowsMessage->message != WM_HOTKEY || windowsMessage->wParam != static_cast<WPARAM>(m_identifier))
            return false;
        // Queued: what follows may run events of its own, which must not happen inside the dispatcher's filter.
        QMetaObject::invokeMethod(&m_owner, &GlobalHotkey::activated, Qt::QueuedConnection);
        return true;
    }

    /// Empty on success, else why not.
    QString take(const QKeyCombination& key)
    {
        const UINT virtualKey = virtualKeyOf(key.key());
        if (virtualKey == 0)
            return QStringLiteral("the keyboard has no such key");
        m_registered = RegisterHotKey(nullptr, m_identifier, modifiersOf(key), virtualKey) != 0;
        if (m_registered)
            return {};
        const DWORD error = GetLastError();
        return error == ERROR_HOTKEY_ALREADY_REGISTERED ? QStringLiteral("another program holds it")
                                                        : QStringLiteral("Windows error %1").arg(error);
    }

    void release()
    {
        if (m_registered)
            UnregisterHotKey(nullptr, m_identifier);
        m_registered = false;
    }

private:
    GlobalHotkey& m_owner;
    int m_identifier;
    bool m_registered = false;
};

GlobalHotkey::GlobalHotkey(QObject* parent) : QObject(parent), m_backend(std::make_unique<Backend>(*this)) {}

GlobalHotkey::~GlobalHotkey() = default;

bool GlobalHotkey::registerKey(const QKeySequence& sequence)
{
    m_backend->release();
    m_failureReason.clear();
    if (sequence.isEmpty())
        return true;
    const QString trouble = m_backend->take(sequence[0]);
    if (!trouble.isEmpty())
        m_failureReason = QStringLiteral("The hotkey %1 cannot be used: %2")
                              .arg(sequence.toString(QKeySequence::PortableText), trouble);
    return trouble.isEmpty();
}

} // namespace platform
