// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sctranslator.h"

#include <QDebug>
#include <QFile>
#include <QLocale>
#include <QSettings>

namespace {

QLocale localeOf(const QString& code)
{
    // The file of French has the code of Occitan.
    const QLocale locale(code == QLatin1String("oc_FR") ? QStringLiteral("fr_FR") : code);
    const QLocale system = QLocale::system();
    const bool isSystems = system.language() == locale.language() && system.script() == locale.script();
    return isSystems ? system : locale;
}

} // namespace

SCTranslator::SCTranslator(QObject* parent) : QTranslator(parent) {}

bool SCTranslator::loadLanguage(const QString& code)
{
    const QString path = QStringLiteral(":/locales/%1.ini").arg(code);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug().noquote() << "Translation file not found:" << path;
        return false;
    }
    file.close();

    const QSettings reader(path, QSettings::IniFormat);
    // A key such as "Start/Stop" counts as a group with a key in it: only the list of all keys has it whole. The reader
    // parses when it is first asked for keys, so its status means nothing before.
    const QStringList keys = reader.allKeys();
    if (reader.status() != QSettings::NoError) {
        qDebug().noquote() << "Error reading translation file:" << path;
        return false;
    }
    m_translations.clear();
    for (const QString& key : keys)
        m_translations.insert(key, reader.value(key).toString());
    QLocale::setDefault(localeOf(code));
    return true;
}

QString SCTranslator::translate(const char* /*context*/, const char* sourceText, const char* /*disambiguation*/,
                                int /*n*/) const
{
    const QString text = QString::fromUtf8(sourceText);
    return m_translations.value(text, text);
}

bool SCTranslator::isEmpty() const
{
    return m_translations.isEmpty();
}
