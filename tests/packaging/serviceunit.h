#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// What a service unit says.
class ServiceUnit
{
public:
    /// A file that cannot be read ends the test program with the reason.
    explicit ServiceUnit(const QString &path);

    /// The words of all assignments of a key, in order, such as of "Service/SystemCallFilter".
    QStringList words(const QString &key) const;
    /// Whether the key is assigned at all, be it to nothing.
    bool has(const QString &key) const;

private:
    QMap<QString, QStringList> settings;
};
