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
        ++count.connections;
        auto *const server = new QTcpSocket(client); // goes with the client
        server->connectToHost(QStringLiteral("127.0.0.1"), serverPort);
        pass(client, server);
        pass(server, client);
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    }
}

void WireMeter::pass(QTcpSocket *from, QTcpSocket *to)
{
    connect(from, &QTcpSocket::readyRead, this, [this, from, to] {
        const QByteArray bytes = from->readAll();
        count.bytes += bytes.size();
        to->write(bytes);
    });
    connect(from, &QTcpSocket::disconnected, to, &QTcpSocket::disconnectFromHost);
}
