#include "connectproxy.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QUrl>

ConnectProxy::ConnectProxy()
{
    connect(&server, &QTcpServer::newConnection, this, &ConnectProxy::accept);
    if (!server.listen(QHostAddress::LocalHost)) {
        qFatal("the proxy cannot listen: %s", qPrintable(server.errorString()));
    }
}

QString ConnectProxy::url() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(server.serverPort());
}

QByteArray ConnectProxy::received() const
{
    return bytes;
}

void ConnectProxy::accept()
{
    QTcpSocket *const client = server.nextPendingConnection();
    connect(client, &QTcpSocket::readyRead, this, [this, client] { readRequest(client); });
    connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
}

// "CONNECT host:port HTTP/1.1" and headers, up to an empty line; the client waits for the answer then.
void ConnectProxy::readRequest(QTcpSocket *client)
{
    if (!client->peek(client->bytesAvailable()).endsWith("\r\n\r\n")) {
        return;
    }
    const QByteArray request = client->readAll();
    bytes += request;
    const QList<QByteArray> words = request.left(request.indexOf('\r')).split(' ');
    const QUrl target(QStringLiteral("https://") + QString::fromLatin1(words.value(1)));
    disconnect(client, &QTcpSocket::readyRead, this, nullptr);
    if (words.value(0) == "CONNECT" && target.port() > 0) {
        connectTo(target.host(), static_cast<quint16>(target.port()), client);
    } else {
        client->write("HTTP/1.1 405 Method Not Allowed\r\nContent-Length: 0\r\n\r\n");
        client->disconnectFromHost();
    }
}

void ConnectProxy::connectTo(const QString &host, quint16 port, QTcpSocket *client)
{
    auto *const target = new QTcpSocket(client); // goes with the client
    connect(target, &QTcpSocket::connected, client,
            [client] { client->write("HTTP/1.1 200 Connection established\r\n\r\n"); });
    connect(target, &QTcpSocket::readyRead, client, [=] { client->write(target->readAll()); });
    connect(target, &QTcpSocket::disconnected, client, &QTcpSocket::disconnectFromHost);
    connect(client, &QTcpSocket::readyRead, this, [=] {
        const QByteArray sent = client->readAll();
        bytes += sent;
        target->write(sent);
    });
    target->connectToHost(host, port);
}
