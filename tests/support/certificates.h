#pragma once

#include <QString>
#include <QTemporaryDir>

/// A throw-away authority and a server certificate for 127.0.0.1 and localhost, made once per test program.
class Certificates
{
public:
    /// The program's own, made on first use. A failure to make them ends the program with the reason.
    static const Certificates &shared();

    /// The authority's certificate alone.
    QString authority() const;
    /// The system's certificate bundle with the authority.
    QString bundle() const;
    QString serverCertificate() const;
    QString serverKey() const;

private:
    Certificates();

    QTemporaryDir directory;
};
