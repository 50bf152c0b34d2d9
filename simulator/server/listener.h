#pragma once

#include <QSslConfiguration>
#include <QTcpServer>

#include <optional>

class QTcpSocket;

/// Takes connections on 127.0.0.1, plain ones or with TLS.
class Listener : public QTcpServer
{
    Q_OBJECT
public:
    /// The connections that follow are plain.
    void usePlainConnections();
    /// The connections that follow begin with a TLS handshake. Returns what is wrong with the two PEM files;
    /// empty when nothing is.
    QString useTls(const QString &certificatePath, const QString &keyPath);
    bool isTls() const;

Q_SIGNALS:
    /// A client is there. The socket is the receiver's.
    void accepted(QTcpSocket *socket);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    std::optional<QSslConfiguration> tls;
};
