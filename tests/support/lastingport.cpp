#include "lastingport.h"

#include <QRandomGenerator>
#include <QTcpServer>

namespace
{
// Below those that the kernel gives to clients.
constexpr int lowest = 20000;
constexpr int highest = 32000;
} // namespace

quint16 LastingPort::find()
{
    QTcpServer probe;
    for (;;) {
        const auto port = static_cast<quint16>(QRandomGenerator::system()->bounded(lowest, highest));
        if (probe.listen(QHostAddress::LocalHost, port)) {
            return port;
        }
    }
}
