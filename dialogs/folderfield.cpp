// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/folderfield.h"

#include "app/savefolder.h"
#include "widgets/stylesheet.h"

#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>

namespace {

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

FolderField::FolderField(QLineEdit* edit, QLabel& note) : QObject(edit), m_edit(*edit), m_note(note)
{
    edit->installEventFilter(this);
    connect(edit, &QLineEdit::textEdited, this, [this] { tell({}, false); });
    connect(edit, &QLineEdit::editingFinished, this, [this] {
        if (isChanged())
            check();
        else
            tellSpace();
    });
}

void FolderField::setFolder(const QString& folder)
{
    m_stored = folder;
    m_edit.setText(folder);
    tellSpace();
}

bool FolderField::isChanged() const
{
    return m_edit.text() != m_stored;
}

QString FolderField::folder() const
{
    return isChanged() ? typedSaveFolder(m_edit.text()) : m_stored;
}

bool FolderField::isUsable()
{
    return !isChanged() || check();
}

void FolderField::takeFocus()
{
    m_edit.setFocus();
    m_edit.selectAll();
}

bool FolderField::check()
{
    const SaveFolderFault fault = saveFolderFault(folder());
    if (fault != SaveFolderFault::None) {
        tell(tr(faultText(fault)), true);
        return false;
    }
    m_edit.setText(folder());
    tellSpace();
    return true;
}

void FolderField::tellSpace()
{
    const QString shown = folder();
    if (!QDir::isAbsolutePath(shown)) {
        tell({}, false);
        return;
    }
    QStringList note;
    if (!QFileInfo::exists(shown))
        note.append(tr("The folder will be created."));
    const qint64 bytes = freeBytesIn(existingPartOf(shown));
    if (bytes >= 0)
        note.append(tr("Free space: %1").arg(QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat)));
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
