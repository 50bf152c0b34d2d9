#include "certificates.h"

#include <QProcess>

namespace
{
constexpr int timeoutMs = 30000;
}

const Certificates &Certificates::shared()
{
    static const Certificates instance;
    return instance;
}

Certificates::Certificates()
{
    QProcess script;
    script.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    script.start(QStringLiteral(QWIXTD_CERTIFICATES_SCRIPT), {directory.path()});
    const bool isDone = script.waitForFinished(timeoutMs) && script.exitStatus() == QProcess::NormalExit &&
                        script.exitCode() == 0;
    if (!isDone) {
        qFatal("cannot make certificates with %s: %s", QWIXTD_CERTIFICATES_SCRIPT,
               qPrintable(script.errorString()));
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
