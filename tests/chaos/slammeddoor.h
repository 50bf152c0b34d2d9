#pragma once

#include <QTcpServer>

/// A port on loopback that takes connections only to reset them.
class SlammedDoor : public QTcpServer
{
    Q_OBJECT
protected:
    void incomingConnection(qintptr descriptor) override;
};
