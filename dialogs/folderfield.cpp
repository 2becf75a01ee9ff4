// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/folderfield.h"

#include "widgets/shownsize.h"
#include "widgets/stylesheet.h"

#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPromise>
#include <QThreadPool>

#include <utility>

#include <chrono>
#include <memory>
#include <mutex>

namespace {

QThreadPool* newPool(int mostThreads)
{
    auto* const pool = new QThreadPool;
    pool->setMaxThreadCount(mostThreads);
    return pool;
}

SaveFolderFault faultOfTyped(const QString& folder)
{
    // Two at a time would remove the folders that the other one makes; but a disk may never answer.
    static std::timed_mutex mutex;
    constexpr std::chrono::seconds kLongest{3};
    const std::unique_lock lock(mutex, kLongest);
    return saveFolderFault(folder);
}

const char* faultText(SaveFolderFault fault)
{
    switch (fault) {
    case SaveFolderFault::NotAbsolute:
        return QT_TRANSLATE_NOOP("FolderField", "Type the whole path of a folder.");
    case SaveFolderFault::Root:
        return QT_TRANSLATE_NOOP("FolderField", "Files cannot be saved there: choose a folder below it.");
    case SaveFolderFault::CannotBeMade:
        return QT_TRANSLATE_NOOP("FolderField", "This folder cannot be created.");
    case SaveFolderFault::CannotBeWritten:
        return QT_TRANSLATE_NOOP("FolderField", "Files cannot be saved in this folder.");
    case SaveFolderFault::None:
        break;
    }
    return "";
}

} // namespace

QThreadPool& FolderField::threads(bool isTyped)
{
    static auto* const ofTyped = newPool(8);
    static auto* const ofStored = newPool(2);
    return isTyped ? *ofTyped : *ofStored;
}

FolderField::FolderField(QLineEdit* edit, QLabel& note) : QObject(edit), m_edit(*edit), m_note(note)
{
    edit->installEventFilter(this);
    connect(edit, &QLineEdit::textEdited, this, [this] {
        stopLooking();
        tell({}, false);
    });
    connect(edit, &QLineEdit::editingFinished, this, [this] {
        if (!m_isLooking)
            look();
    });
    connect(&m_disk, &QFutureWatcherBase::finished, this, &FolderField::onLooked);
}

void FolderField::setFolder(const QString& folder)
{
    m_stored = folder;
    m_edit.setText(folder);
    stopLooking();
    look();
}

bool FolderField::isChanged() const
{
    return m_edit.text() != m_stored;
}

QString FolderField::folder() const
{
    return isChanged() ? typedSaveFolder(m_edit.text()) : m_stored;
}

void FolderField::takeFocus()
{
    m_edit.setFocus();
    m_edit.selectAll();
}

void FolderField::check(const Answer& answer)
{
    if (!isChanged()) {
        answer(true);
        return;
    }
    m_answer = answer;
    if (!m_isLooking)
        look();
}

void FolderField::stopLooking()
{
    m_isLooking = false;
    m_answer = {};
}

/// A look that is under way is forgotten.
void FolderField::look()
{
    const auto promise = std::make_shared<QPromise<State>>();
    m_isLooking = true;
    m_disk.setFuture(promise->future());
    tell(isChanged() ? tr("Checking the folder...") : QString(), false);
    threads(isChanged()).start([promise, folder = folder(), isTyped = isChanged()] {
        promise->start();
        promise->addResult(stateOf(folder, isTyped));
        promise->finish();
    });
}

FolderField::State FolderField::stateOf(const QString& folder, bool isTyped)
{
    if (!isTyped && !QDir::isAbsolutePath(folder))
        return {};
    const SaveFolderFault fault = isTyped ? faultOfTyped(folder) : SaveFolderFault::None;
    return {fault, QFileInfo::exists(folder), freeBytesIn(existingPartOf(folder))};
}

void FolderField::onLooked()
{
    if (!std::exchange(m_isLooking, false))
        return;
    const State state = m_disk.result();
    const bool isUsable = state.fault == SaveFolderFault::None;
    if (isUsable) {
        if (m_edit.text() != folder())
            m_edit.setText(folder());
        tellSpace(state);
    } else {
        tell(tr(faultText(state.fault)), true);
    }
    if (const Answer answer = std::exchange(m_answer, {}))
        answer(isUsable);
}

void FolderField::tellSpace(const State& state)
{
    if (!QDir::isAbsolutePath(folder())) {
        tell({}, false);
        return;
    }
    QStringList note;
    if (!state.isThere)
        note.append(tr("The folder will be created."));
    if (state.freeBytes >= 0)
        note.append(tr("Free space: %1").arg(shownSize(state.freeBytes)));
    tell(note.join(u' '), false);
}

void FolderField::tell(const QString& note, bool isWrong)
{
    m_note.setText(note);
    // Who does not see the note is told as well.
    m_edit.setAccessibleDescription(note);
    for (QWidget* const part : std::initializer_list<QWidget*>{&m_edit, &m_note}) {
        part->setProperty("wrong", isWrong);
        restyle(*part);
    }
}

bool FolderField::eventFilter(QObject* watched, QEvent* event)
{
    const bool isKey = event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress;
    if (watched != &m_edit || !isKey || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape || !isChanged())
        return false;
    // Else it closes the window.
    event->accept();
    if (event->type() == QEvent::KeyPress)
        setFolder(m_stored);
    return true;
}
