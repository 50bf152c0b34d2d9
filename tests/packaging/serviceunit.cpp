#include "serviceunit.h"

#include <QFile>

ServiceUnit::ServiceUnit(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("cannot read %s: %s", qPrintable(path), qPrintable(file.errorString()));
    }
    QString section;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.startsWith(QLatin1Char('['))) {
            section = line.mid(1, line.indexOf(QLatin1Char(']')) - 1);
        } else if (!line.startsWith(QLatin1Char('#')) && line.contains(QLatin1Char('='))) {
            const auto equals = line.indexOf(QLatin1Char('='));
            const QString value = line.mid(equals + 1).simplified();
            settings[section + QLatin1Char('/') + line.left(equals)] +=
                value.isEmpty() ? QStringList() : value.split(QLatin1Char(' '));
        }
    }
}

QStringList ServiceUnit::words(const QString &key) const
{
    return settings.value(key);
}

bool ServiceUnit::has(const QString &key) const
{
    return settings.contains(key);
}
