#pragma once

#include <QString>
#include <QTemporaryDir>

/// A throw-away certificate authority that keeps its key, and so makes certificates of every kind. All files
/// are PEM files that go with this object. A failure to make one ends the program with the reason.
class Authority
{
public:
    struct Identity {
        QString certificate;
        QString key;
    };

    Authority();

    /// Its own certificate, alone: a bundle for a daemon that trusts nobody else.
    QString bundle() const;
    /// A server's certificate for a name such as "IP:127.0.0.1" or "DNS:other.example", valid from @p fromDay
    /// to
    /// @p toDay, in days from now.
    Identity issue(const QString &subject, int fromDay = -1, int toDay = 1);
    /// The same, signed by nobody but itself.
    Identity issueSelfSigned(const QString &subject);

private:
    QString path(const QString &name) const;
    void write(const QString &name, const QString &text);
    void openssl(const QStringList &arguments) const;

    QTemporaryDir directory;
    int count = 0;
};
