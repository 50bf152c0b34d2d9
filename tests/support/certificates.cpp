#include "certificates.h"

#include <cstdlib>

const Certificates &Certificates::shared()
{
    static const Certificates instance;
    return instance;
}

// Not by QProcess, which cannot start a program where the processor is emulated (qemu-user).
Certificates::Certificates()
{
    const QByteArray command = "'" QWIXTD_CERTIFICATES_SCRIPT "' '" + directory.path().toLocal8Bit() + '\'';
    if (std::system(command.constData()) != 0) {
        qFatal("cannot make certificates with %s", QWIXTD_CERTIFICATES_SCRIPT);
    }
}

QString Certificates::authority() const
{
    return directory.filePath(QStringLiteral("authority.pem"));
}

QString Certificates::bundle() const
{
    return directory.filePath(QStringLiteral("bundle.pem"));
}

QString Certificates::serverCertificate() const
{
    return directory.filePath(QStringLiteral("server.pem"));
}

QString Certificates::serverKey() const
{
    return directory.filePath(QStringLiteral("server.key"));
}
