#pragma once

#include <QObject>
#include <QString>
#include <QTcpServer>

#include <memory>

class QTcpSocket;

/// Stands before a server on loopback, passes bytes both ways and counts those of connections that ended. On
/// the event loop of the thread that made it.
class WireMeter : public QObject
{
    Q_OBJECT
public:
    struct Count {
        int connections = 0;
        qint64 bytes = 0; ///< both ways, without the headers of TCP and IP
    };

    /// Passes on to 127.0.0.1:@p serverPort. Throws CannotMeasure.
    explicit WireMeter(quint16 serverPort);

    /// "127.0.0.1:PORT"
    QString host() const;
    /// The connections that ended since the last call.
    Count take();

private:
    void accept();
    void pass(QTcpSocket *from, QTcpSocket *to, const std::shared_ptr<qint64> &bytes);

    const quint16 serverPort;
    QTcpServer listener;
    Count count;
};
