#pragma once

#include <QByteArray>
#include <QObject>
#include <QTcpServer>

class QTcpSocket;

/// A web proxy on 127.0.0.1 that knows CONNECT alone: it connects to where it is asked to and passes bytes
/// both ways, and keeps all that it is sent. On the event loop of the thread that made it.
class ConnectProxy : public QObject
{
    Q_OBJECT
public:
    /// Listens on any free port; a failure ends the test program with the reason.
    ConnectProxy();

    /// "http://127.0.0.1:PORT"
    QString url() const;
    /// All bytes of all clients so far: requests to the proxy, then what is meant for the other end.
    QByteArray received() const;

private:
    void accept();
    void readRequest(QTcpSocket *client);
    void connectTo(const QString &host, quint16 port, QTcpSocket *client);

    QTcpServer server;
    QByteArray bytes;
};
