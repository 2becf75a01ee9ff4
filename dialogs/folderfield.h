// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/savefolder.h"

#include <QFutureWatcher>
#include <QObject>
#include <QString>

#include <functional>

class QLabel;
class QLineEdit;
class QThreadPool;

/// A field for a folder, with a note below: the space there, or why no file can be saved in what was typed. Escape
/// restores the stored folder. The disk is asked on another thread. Child of the field. User-interface thread.
class FolderField : public QObject
{
    Q_OBJECT

public:
    FolderField(QLineEdit* edit, QLabel& note);

    /// The stored folder, whatever it is.
    void setFolder(const QString& folder);

    /// What is typed, as a setting stores it.
    QString folder() const;

    /// Whether a folder can be stored.
    using Answer = std::function<void(bool isUsable)>;

    /// Marks what the user has typed, and tells why, where it cannot be stored. Answers at once where nothing was
    /// typed, otherwise when the disk has; not at all where the field changes before.
    void check(const Answer& answer);

    /// With all of the text selected.
    void takeFocus();

    /// A disk may keep them for ever; the program ends without them. Looks at stored folders have threads of their own:
    /// Save waits for those at typed ones.
    static QThreadPool& threads(bool isTyped);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// What the disk says of a folder.
    struct State
    {
        /// Of what was typed.
        SaveFolderFault fault = SaveFolderFault::None;
        bool isThere = false;
        /// -1 where nobody can tell.
        qint64 freeBytes = -1;
    };

    static State stateOf(const QString& folder, bool isTyped);
    bool isChanged() const;
    void look();
    void stopLooking();
    void onLooked();
    void tell(const QString& note, bool isWrong);
    void tellSpace(const State& state);

    QLineEdit& m_edit;
    QLabel& m_note;
    QString m_stored;
    QFutureWatcher<State> m_disk;
    bool m_isLooking = false;
    Answer m_answer;
};
