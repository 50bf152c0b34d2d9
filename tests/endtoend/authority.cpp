#include "authority.h"

#include <QDateTime>
#include <QFile>
#include <QProcess>

namespace
{
constexpr int timeoutMs = 30000;

// What "openssl ca" cannot do without.
const auto configuration = QStringLiteral("[ca]\n"
                                          "default_ca = authority\n"
                                          "[authority]\n"
                                          "database = %1/issued\n"
                                          "new_certs_dir = %1\n"
                                          "default_md = sha256\n"
                                          "rand_serial = yes\n"
                                          "unique_subject = no\n"
                                          "policy = any\n"
                                          "[any]\n"
                                          "commonName = supplied\n");

const QStringList newKey = {QStringLiteral("-newkey"), QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                            QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes")};

QString dayFromNow(int days)
{
    return QDateTime::currentDateTimeUtc().addDays(days).toString(QStringLiteral("yyyyMMddhhmmss")) +
           QLatin1Char('Z');
}
} // namespace

Authority::Authority()
{
    write(QStringLiteral("configuration"), configuration.arg(directory.path()));
    write(QStringLiteral("issued"), QString());
    openssl(QStringList({QStringLiteral("req"), QStringLiteral("-x509")}) + newKey +
            QStringList({QStringLiteral("-subj"), QStringLiteral("/CN=Authority"), QStringLiteral("-addext"),
                         QStringLiteral("keyUsage=critical,keyCertSign"), QStringLiteral("-keyout"),
                         path(QStringLiteral("authority.key")), QStringLiteral("-out"), bundle()}));
}

QString Authority::bundle() const
{
    return path(QStringLiteral("authority.pem"));
}

Authority::Identity Authority::issue(const QString &subject, int fromDay, int toDay)
{
    const QString name = QString::number(++count);
    const QString request = path(name + QStringLiteral(".request"));
    const Identity identity = {path(name + QStringLiteral(".pem")), path(name + QStringLiteral(".key"))};
    write(name + QStringLiteral(".extensions"), QStringLiteral("subjectAltName=") + subject);
    openssl(QStringList(QStringLiteral("req")) + newKey +
            QStringList({QStringLiteral("-subj"), QStringLiteral("/CN=Server"), QStringLiteral("-keyout"),
                         identity.key, QStringLiteral("-out"), request}));
    openssl({QStringLiteral("ca"), QStringLiteral("-batch"), QStringLiteral("-notext"),
             QStringLiteral("-config"), path(QStringLiteral("configuration")), QStringLiteral("-cert"),
             bundle(), QStringLiteral("-keyfile"), path(QStringLiteral("authority.key")),
             QStringLiteral("-startdate"), dayFromNow(fromDay), QStringLiteral("-enddate"), dayFromNow(toDay),
             QStringLiteral("-extfile"), path(name + QStringLiteral(".extensions")), QStringLiteral("-in"),
             request, QStringLiteral("-out"), identity.certificate});
    return identity;
}

Authority::Identity Authority::issueSelfSigned(const QString &subject)
{
    const QString name = QString::number(++count);
    const Identity identity = {path(name + QStringLiteral(".pem")), path(name + QStringLiteral(".key"))};
    openssl(QStringList({QStringLiteral("req"), QStringLiteral("-x509")}) + newKey +
            QStringList({QStringLiteral("-subj"), QStringLiteral("/CN=Server"), QStringLiteral("-addext"),
                         QStringLiteral("subjectAltName=") + subject, QStringLiteral("-keyout"), identity.key,
                         QStringLiteral("-out"), identity.certificate}));
    return identity;
}

QString Authority::path(const QString &name) const
{
    return directory.filePath(name);
}

void Authority::write(const QString &name, const QString &text)
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        qFatal("cannot write %s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
    }
}

void Authority::openssl(const QStringList &arguments) const
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("openssl"), arguments);
    const bool isDone = process.waitForFinished(timeoutMs) && process.exitStatus() == QProcess::NormalExit &&
                        process.exitCode() == 0;
    if (!isDone) {
        qFatal("cannot make a certificate with openssl %s: %s %s",
               qPrintable(arguments.join(QLatin1Char(' '))), qPrintable(process.errorString()),
               process.readAll().constData());
    }
}
