// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

class QLabel;
class QLineEdit;

/// A field for a folder, with a note below: the space there, or why no file can be saved in what was typed. Escape
/// restores the stored folder. Child of the field. User-interface thread.
class FolderField : public QObject
{
    Q_OBJECT

public:
    FolderField(QLineEdit* edit, QLabel& note);

    /// The stored folder, whatever it is.
    void setFolder(const QString& folder);

    /// What is typed, as a setting stores it.
    QString folder() const;

    /// Whether what the user has typed, if anything, can be stored. Marks what cannot, and tells why. Waits for the
    /// disk.
    bool isUsable();

    /// With all of the text selected.
    void takeFocus();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isChanged() const;
    bool check();
    void tell(const QString& note, bool isWrong);
    void tellSpace();

    QLineEdit& m_edit;
    QLabel& m_note;
    QString m_stored;
};
