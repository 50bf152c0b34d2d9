#include "listener.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>

namespace
{
QSslKey readKey(const QString &path)
{
    QFile file(path);
    const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    for (const QSsl::KeyAlgorithm algorithm : {QSsl::Ec, QSsl::Rsa}) {
        const QSslKey key(text, algorithm);
        if (!key.isNull()) {
            return key;
        }
    }
    return {};
}
} // namespace

void Listener::usePlainConnections()
{
    tls.reset();
}

QString Listener::useTls(const QString &certificatePath, const QString &keyPath)
{
    if (!QSslSocket::supportsSsl()) {
        return QStringLiteral("Qt has no TLS: it was built for %1, and that is not installed")
            .arg(QSslSocket::sslLibraryBuildVersionString());
    }
    const QList<QSslCertificate> chain = QSslCertificate::fromPath(certificatePath);
    const QSslKey key = readKey(keyPath);
    if (chain.isEmpty()) {
        return QStringLiteral("cannot read the certificate %1").arg(certificatePath);
    }
    if (key.isNull()) {
        return QStringLiteral("cannot use the key %1").arg(keyPath);
    }
    QSslConfiguration configuration;
    configuration.setLocalCertificateChain(chain);
    configuration.setPrivateKey(key);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    tls = configuration;
    return {};
}

bool Listener::isTls() const
{
    return tls.has_value();
}

void Listener::incomingConnection(qintptr descriptor)
{
    auto *const encrypted = tls ? new QSslSocket : nullptr;
    QTcpSocket *const socket = tls ? encrypted : new QTcpSocket;
    socket->setSocketDescriptor(descriptor);
    // The parts of an answer do not wait for each other's receipt.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    Q_EMIT accepted(socket);
    if (encrypted != nullptr) {
        encrypted->setSslConfiguration(*tls);
        encrypted->startServerEncryption();
    }
}
