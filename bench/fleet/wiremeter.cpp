#include "wiremeter.h"

#include "measures.h"

#include <QTcpSocket>

WireMeter::WireMeter(quint16 serverPort_)
    : serverPort(serverPort_)
{
    require(listener.listen(QHostAddress::LocalHost), QStringLiteral("no port for the meter"));
    connect(&listener, &QTcpServer::newConnection, this, &WireMeter::accept);
}

QString WireMeter::host() const
{
    return QStringLiteral("127.0.0.1:%1").arg(listener.serverPort());
}

WireMeter::Count WireMeter::take()
{
    const Count taken = count;
    count = Count();
    return taken;
}

void WireMeter::accept()
{
    while (QTcpSocket *const client = listener.nextPendingConnection()) {
        auto *const server = new QTcpSocket(client); // goes with the client
        server->connectToHost(QStringLiteral("127.0.0.1"), serverPort);
        const auto bytes = std::make_shared<qint64>(0);
        pass(client, server, bytes);
        pass(server, client, bytes);
        connect(client, &QTcpSocket::disconnected, this, [this, bytes] {
            ++count.connections;
            count.bytes += *bytes;
        });
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    }
}

void WireMeter::pass(QTcpSocket *from, QTcpSocket *to, const std::shared_ptr<qint64> &bytes)
{
    connect(from, &QTcpSocket::readyRead, this, [from, to, bytes] {
        const QByteArray chunk = from->readAll();
        *bytes += chunk.size();
        to->write(chunk);
    });
    connect(from, &QTcpSocket::disconnected, to, &QTcpSocket::disconnectFromHost);
}
